// Any bytes as parameter files: the run ends as it may, and what it writes has the record's layout.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

#include "converter/Converter.h"
#include "converter/Output.h"
#include "fuzz/FuzzInput.h"
#include "fuzz/MemoryFile.h"
#include "fuzz/RecordReader.h"
#include "markup/Markup.h"

namespace {

constexpr int aborted = -1;  ///< a root element whose name is too short

int convert(const std::vector<const char*>& paths, MemoryFile& record, MemoryFile& messages) {
    record.put("");
    messages.put("");
    Output output(record.descriptor(), messages.descriptor());
    Messages lines(output, std::strlen(paths.front()));
    try {
        const int status = Converter(output, lines).run(paths);
        output.flush();
        return status;
    } catch (const std::out_of_range&) {
        return aborted;
    }
}

/// Whether each detector of a file has its pixels: behind one without, the converter goes on
/// elsewhere in the file.
bool isWhole(const std::string& path) {
    MarkupDocument file;
    file.Load(path);
    bool isWhole = true;
    for (int pos = 1; pos < file.recordCount(); ++pos) {
        isWhole = isWhole && (file.x_GetTagName(pos) != "COEFFICIENTS" ||
                              file.x_FindElem(pos, 0, PathPos::parsed("NB_OF_PIXELS")) != 0);
    }
    return isWhole;
}

}  // namespace

/// Up to three files, each ended by a byte 0xFF, which no UTF-8 has.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static MemoryFile files[3], record, messages;
    std::string_view text = FuzzInput(data, size).rest();
    std::vector<const char*> paths;
    std::vector<std::string> names;
    bool areWhole = true;
    do {
        MemoryFile& file = files[paths.size()];
        const std::size_t end = std::min(text.find('\xFF'), text.size());
        file.put(text.substr(0, end));
        paths.push_back(file.path().c_str());
        names.push_back(std::to_string(file.descriptor()));
        areWhole = areWhole && isWhole(file.path());
        text.remove_prefix(std::min(end + 1, text.size()));
    } while (!text.empty() && paths.size() < std::size(files));
    const int status = convert(paths, record, messages);
    require(status != aborted || record.bytes().empty(), "an aborted run writes nothing");
    require(status != Converter::stopped || messages.bytes().ends_with('\n'),
            "a stopped run says why");
    const std::string bytes = record.bytes();
    require(RecordReader(bytes, names, status == 0, areWhole).read(),
            "the record has its layout:", bytes);
    return 0;
}
