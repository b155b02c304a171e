// Any bytes as parameter files: the run ends as it may, and what it writes has the record's layout.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "fuzz/ParameterFiles.h"
#include "fuzz/RecordReader.h"
#include "markup/Markup.h"
#include "tests/Require.h"

namespace {

/// Whether each detector of a file has its pixels: behind one without, the converter goes on
/// elsewhere in the file.
bool isWhole(const char* path) {
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

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static ParameterFiles files;
    const std::vector<const char*> paths = files.put(data, size);
    std::vector<std::string> names;
    for (const std::string path : paths) {
        names.push_back(path.substr(path.rfind('/') + 1));
    }
    const Run run(paths);
    require(run.status != Run::aborted || run.record.empty(), "an aborted run writes nothing");
    require(run.status != Converter::stopped || run.messages.ends_with('\n'),
            "a stopped run says why");
    const bool areWhole = std::all_of(paths.begin(), paths.end(), isWhole);
    require(RecordReader(run.record, names, run.status == 0, areWhole).read(),
            "the record has its layout:", run.record);
    return 0;
}
