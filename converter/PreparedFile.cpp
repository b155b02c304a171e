#include "converter/PreparedFile.h"

#include "base/Exception.h"
#include "converter/DataSection.h"

namespace {

// Files of a few hundred bytes may ask for megabytes of missing values.
constexpr std::size_t mostKept = std::size_t{1} << 18;

}  // namespace

void PreparedFile::prepare(const char* path, CoefficientTable& table) {
    try {
        isPrepared_ = convert(path, table);
    } catch (const vek::StdError&) {  // its part of the record is too long, or not to be buffered
    }
    if (!isPrepared_) {
        document_.emplace();
    }
}

/// Loads and converts; false when the file can't be loaded well.
bool PreparedFile::convert(const char* path, CoefficientTable& table) {
    constexpr const char* start = "start";
    if (!document_->Load(path)) {
        return false;
    }
    constexpr std::size_t usualSize = std::size_t{1} << 14;
    constexpr std::size_t usualCount = 1 << 6;
    record_.reserve(usualSize);
    messages_.reserve(usualCount);
    RecordWriter record(record_, mostKept);
    record.setFill('0');  // as from field 10 on
    Diagnostics diagnostics(messages_, record);
    document_->SavePos(start);
    document_->FindElem();
    document_->IntoElem();
    result_ = DataSection(*document_).convert(record, diagnostics, table);
    document_->RestorePos(start);
    return true;
}

bool PreparedFile::replay(RecordWriter& record, Diagnostics& diagnostics) const {
    std::size_t size = 0;
    for (std::size_t n = 0; n < messages_.count(); ++n) {
        writeRecord(record, size, messages_.recordSizeAt(n));
        size = messages_.recordSizeAt(n);
        diagnostics.put(messages_.at(n));
    }
    writeRecord(record, size, record_.size());
    return result_;
}

/// Writes bytes `start` to `end`, in pieces that are not too long to be buffered.
void PreparedFile::writeRecord(RecordWriter& record, std::size_t start, std::size_t end) const {
    constexpr std::size_t mostBytes = 4096;
    const std::string_view bytes = std::string_view(record_).substr(0, end);
    for (; start < end; start += mostBytes) {
        record.text(bytes.substr(start, mostBytes));
    }
}
