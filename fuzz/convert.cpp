// Whole conversions: of parameter files built from the input, whose record is foretold, and of
// damaged ones, whose record must still have the layout.

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "converter/Converter.h"
#include "fuzz/Check.h"
#include "fuzz/MemoryFile.h"
#include "fuzz/ParameterFile.h"
#include "fuzz/RecordReader.h"

namespace {

constexpr int aborted = -1;  ///< a root element whose name is too short

template <class Number>
std::string bytesOf(Number value) {
    return {reinterpret_cast<const char*>(&value), sizeof value};
}

long integer(const std::string& text) {
    return std::strtol(text.c_str(), nullptr, 10);
}

/// The fields of the record that files must give, as RecordReader tells them.
class Foretelling {
  public:
    explicit Foretelling(const std::vector<ParameterFile>& files) {
        const ParameterFile& first = files.front();
        if (first.type.size() < 4) {
            status = aborted;
            return;
        }
        fields.push_back("VORN/" + first.type.substr(4));
        std::string date = "2000-01-01T00:00:00";
        for (const std::string& text : first.dates) {
            date = text.empty() ? "2000-01-01T00:00:00" : text == "soon" ? date : text;
            fields.push_back(date);
        }
        for (std::size_t i = 0; i < files.size() && status == 0; ++i) {
            status = addFile(files[i]) ? 0 : Converter::stopped;
        }
    }

    std::vector<std::string> fields;
    int status = 0;

  private:
    bool addFile(const ParameterFile& file) {
        const auto nucTable = static_cast<std::int16_t>(integer(file.nucTable));
        if (nucTable_ < 0) {
            fields.push_back(bytesOf(nucTable_ = nucTable));
        } else if (nucTable_ != nucTable) {
            return false;
        }
        fields.push_back(bytesOf(static_cast<std::uint8_t>(integer(file.band))));
        fields.push_back(bytesOf(static_cast<std::uint8_t>(file.configurations.size())));
        for (const ParameterFile::Configuration& configuration : file.configurations) {
            fields.push_back(configuration.label);
            fields.push_back(bytesOf(std::strtod(file.epsilon.c_str(), nullptr)));
            if (!addVectors(configuration)) {
                return false;
            }
        }
        return true;
    }

    bool addVectors(const ParameterFile::Configuration& configuration) {
        std::map<std::pair<std::string, long>, std::string> vectors;
        std::int16_t most = 0;
        for (const ParameterFile::Detector& detector : configuration.detectors) {
            const long id = static_cast<int>(integer(detector.id));
            const auto pixels = static_cast<std::int16_t>(integer(detector.pixels));
            if (integer(detector.pixels) > INT16_MAX) {
                return false;
            }
            most = std::max(most, pixels);
            for (const auto& [name, values] : detector.vectors) {
                std::string& vector = vectors[{name, id}];
                for (std::size_t at = 0, end; at < values.size(); at = end + 1) {
                    end = std::min(values.find(' ', at), values.size());
                    vector += bytesOf(std::strtod(values.substr(at, end - at).c_str(), nullptr));
                }
                const bool isWhole =
                    pixels >= 0 &&
                    vector.size() == static_cast<std::size_t>(pixels) * sizeof(double);
                if (id < 1 || id > 12 || !isWhole) {
                    return false;
                }
            }
        }
        fields.push_back(bytesOf(most));
        std::string all;
        for (const char* const name : {"COEFF_A1", "COEFF_A2", "COEFF_ZS", "COEFF_D"}) {
            for (long id = 1; id <= 12; ++id) {
                std::string& vector = vectors[{name, id}];
                while (vector.size() < static_cast<std::size_t>(most) * sizeof(double)) {
                    vector += bytesOf(std::uint64_t{0x7FF8000000000000});
                }
                all += vector;
            }
        }
        fields.push_back(all);
        return true;
    }

    std::int16_t nucTable_ = -1;
};

/// What a run left behind.
struct Outcome {
    int status;
    std::string record;
    std::string messages;
};

Outcome convert(const std::vector<const char*>& paths) {
    static MemoryFile record;
    static MemoryFile messages;
    record.put("");
    messages.put("");
    RecordWriter writer(record.descriptor());
    Diagnostics diagnostics(messages.descriptor());
    int status = aborted;
    try {
        status = Converter(writer, diagnostics).run(static_cast<int>(paths.size()), paths.data());
        writer.flush();
    } catch (const std::out_of_range&) {
    }
    return {status, record.bytes(), messages.bytes()};
}

/// Spoils some bytes of a file; false when it leaves all as it was.
bool damage(std::string& text, FuzzInput& in) {
    const unsigned places = in.oneIn(2) ? in.upTo(4) : 0;
    for (unsigned i = 0; i < places; ++i) {
        const std::size_t at = in.raw<std::uint16_t>() % (text.size() + 1);
        const std::size_t length = in.oneIn(2) ? in.upTo(200) : in.upTo(3);
        text.replace(at, length, in.bytes(in.upTo(4)));
    }
    return places != 0;
}

/// The text behind a byte-order mark, when it is all ASCII in units of two bytes.
std::string marked(const std::string& text, FuzzInput& in) {
    const bool isAscii = std::all_of(text.begin(), text.end(), [](char c) { return c > 0; });
    const unsigned way = in.upTo(isAscii ? 7 : 1);
    if (way != 2 && way != 3) {
        return way == 1 ? "\xEF\xBB\xBF" + text : text;
    }
    std::string wide = way == 2 ? "\xFF\xFE" : "\xFE\xFF";
    for (const char c : text) {
        wide += way == 2 ? c : '\0';
        wide += way == 2 ? '\0' : c;
    }
    return wide;
}

}  // namespace

/// 1 and a file; or 0 and choices, of which a run of zeros makes one plain file.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static MemoryFile places[3];
    FuzzInput in(data, size);
    const bool isBuilt = in.byte() % 2 == 0;
    bool isPlain = isBuilt;
    std::vector<ParameterFile> files(isBuilt ? in.upTo(2) + 1 : 1);
    std::vector<const char*> paths;
    std::vector<std::string> names;
    for (std::size_t i = 0; i < files.size(); ++i) {
        std::string text;
        if (isBuilt) {
            files[i] = pickFile(in);
            text = writeXml(files[i], in);
            isPlain = !damage(text, in) && isPlain;
            text = marked(text, in);
        } else {
            text = in.rest();
        }
        places[i].put(text);
        paths.push_back(places[i].path().c_str());
        names.push_back(places[i].path().substr(places[i].path().rfind('/') + 1));
    }
    const Outcome outcome = convert(paths);
    check(outcome.status != aborted || outcome.record.empty(), "an aborted run writes nothing");
    check(outcome.status != Converter::stopped || outcome.messages.ends_with('\n'),
          "a stopped run says why");
    RecordReader reader(outcome.record, names, outcome.status == 0, isPlain);
    check(reader.read(), "the record has its layout:", outcome.record);
    if (isPlain) {
        const Foretelling wanted(files);
        check(outcome.status == wanted.status, "the run ends as it must:", outcome.messages);
        for (std::size_t i = 0; i < wanted.fields.size() && i < reader.fields.size(); ++i) {
            checkSame(reader.fields[i], wanted.fields[i], "a field is as it must be:");
        }
        check(reader.fields.size() == wanted.fields.size(), "the record has all fields");
    }
    return 0;
}
