// The loop over the files. All that a file has to do with another one goes through here: the file
// type, which the header reader compares, and the identifier of the NUC table. A file's document
// lives for one turn of the loop; the coefficient table lives for all, for its memory.

#include "converter/Converter.h"

#include "base/FileUtils.h"
#include "converter/DataSection.h"
#include "converter/ElementFinder.h"
#include "converter/VORN.h"
#include "markup/Markup.h"

int Converter::run(std::span<const char* const> paths) {
    for (const char* const path : paths) {
        messages_.setFile(path);
        if (!convertFile(path, static_cast<int>(paths.size()))) {
            return stopped;
        }
    }
    return 0;
}

bool Converter::convertFile(const char* path, int fileCount) {
    MarkupDocument document;
    VORN(record_, messages_, listener_).init(path, fileCount, document, fileType_);
    ElementFinder finder(document, listener_);
    DataSection data(finder, record_, messages_);
    data.readFields();
    // Before anything of the file is written: one that is refused leaves nothing in the record.
    if (!checkNucTable(data.nucTableId())) {
        return false;
    }
    record_.file(data.bandId(), vek::FileUtils::baseName(path, false).view());  // 9 to 11
    return data.convertConfigurations(table_);
}

/// Compares a file's NUC table identifier with the first file's. "None known" is encoded as a
/// negative value, so after an identifier with bit 15 set the next file counts as the first again:
/// its identifier is written as well and nothing is compared. Consumers rely on it.
bool Converter::checkNucTable(std::int16_t id) {
    if (nucTableId_ < 0) {
        nucTableId_ = id;
        record_.nucTableId(id);  // 8
        return true;
    }
    if (id != nucTableId_) {
        return messages_.nucTableMismatch(id);
    }
    return true;
}
