#include "converter/Converter.h"

#include "base/FileUtils.h"
#include "converter/DataSection.h"
#include "converter/FileQueue.h"

int Converter::run(int fileCount, const char* const* paths) {
    FileQueue files(fileCount, paths, table_);
    const bool isWhole = files.run([this, fileCount](const char* path, PreparedFile& file) {
        return convertFile(fileCount, path, file);
    });
    return isWhole ? 0 : stopped;
}

bool Converter::convertFile(int fileCount, const char* path, PreparedFile& file) {
    diagnostics_.endThread();  // that the file before may have needed
    header_.init(path, fileCount, file.document(), fileType_);
    const DataSection data(file.document());
    if (!checkNucTable(data.nucTableId(), path)) {
        return false;
    }
    record_.raw(data.bandId());  // 9
    const vek::String name = vek::FileUtils::baseName(path, false);
    record_.setFill('0');
    record_.number(static_cast<std::size_t>(name.length()));  // 10
    record_.text(name.view());                                // 11
    const bool isConverted = file.isPrepared() ? file.replay(record_, diagnostics_)
                                               : data.convert(record_, diagnostics_, table_);
    if (isConverted && !file.document().x_IsTextIntact()) {
        diagnostics_.say("file ", path, " was changed while it was in use\n");
        return false;
    }
    return isConverted;
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
