#include "converter/Converter.h"

#include "base/FileUtils.h"
#include "converter/DataSection.h"

int Converter::run(int fileCount, const char* const* paths) {
    for (int i = 0; i < fileCount; ++i) {
        if (!convertFile(fileCount, paths[i])) {
            return stopped;
        }
    }
    return 0;
}

bool Converter::convertFile(int fileCount, const char* path) {
    MarkupDocument document;
    header_.init(path, fileCount, document, fileType_);
    const DataSection data(document);
    if (!checkNucTable(data.nucTableId(), path)) {
        return false;
    }
    record_.raw(data.bandId());  // 9
    const vek::String name = vek::FileUtils::baseName(path, false);
    record_.setFill('0');
    record_.number(static_cast<std::size_t>(name.length()));  // 10
    record_.text(name.view());                                // 11
    return data.convert(record_, diagnostics_, table_);
}

/// Compares a file's NUC table identifier with the first file's. "None known" is encoded as a
/// negative value, so after an identifier with bit 15 set the next file counts as the first again:
/// its identifier is written as well and nothing is compared. Consumers rely on it.
bool Converter::checkNucTable(std::int16_t id, const char* path) {
    if (nucTableId_ < 0) {
        nucTableId_ = id;
        record_.raw(id);  // 8
        return true;
    }
    if (id != nucTableId_) {
        diagnostics_.say("NUC table mismatch (", id, ") in file ", path, "\n");
        return false;
    }
    return true;
}
