// Any bytes as parameter files: the run ends as it may, and what it writes has the record's layout.

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

#include "converter/Converter.h"
#include "converter/Output.h"
#include "fuzz/Check.h"
#include "fuzz/FuzzInput.h"
#include "fuzz/MemoryFile.h"
#include "fuzz/RecordReader.h"

namespace {

constexpr int aborted = -1;  ///< a root element whose name is too short

int convert(const std::vector<const char*>& paths, MemoryFile& record, MemoryFile& messages) {
    record.put("");
    messages.put("");
    Output output(record.descriptor(), messages.descriptor());
    Messages lines(output, paths.front() == nullptr ? 0 : std::string(paths.front()).size());
    try {
        const int status = Converter(output, lines).run(paths);
        output.flush();
        return status;
    } catch (const std::out_of_range&) {
        return aborted;
    }
}

}  // namespace

/// Up to three files, each ended by a byte 0xFF, which no UTF-8 has.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static MemoryFile files[3];
    static MemoryFile record;
    static MemoryFile messages;
    std::string_view text = FuzzInput(data, size).rest();
    std::vector<const char*> paths;
    std::vector<std::string> names;
    for (MemoryFile& file : files) {
        const std::size_t end = text.find('\xFF');
        file.put(text.substr(0, end));
        paths.push_back(file.path().c_str());
        names.push_back(file.path().substr(file.path().rfind('/') + 1));
        if (end == std::string_view::npos) {
            break;
        }
        text.remove_prefix(end + 1);
    }
    const int status = convert(paths, record, messages);
    check(status != aborted || record.bytes().empty(), "an aborted run writes nothing");
    check(status != Converter::stopped || messages.bytes().ends_with('\n'),
          "a stopped run says why");
    RecordReader reader(record.bytes(), names, status == 0, false);
    check(reader.read(), "the record has its layout:", record.bytes());
    return 0;
}
