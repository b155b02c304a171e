// Files are opened, read or written, and closed within one call; what is known of one meanwhile
// lives in a FilePos, and what the caller is to know of it in a FileReport.

#include <cerrno>
#include <climits>
#include <new>

#include "markup/DeclaredEncoding.h"
#include "markup/FileReading.h"
#include "markup/FileWriting.h"
#include "markup/Markup.h"
#include "markup/ResultLog.h"

namespace {

/// What a caller learns of a file beside its text, in places of its own; the results and the flags
/// that it does not ask for are kept here.
struct FileReport {
    FileReport(std::string* callersResults, int* callersFlags, std::string* callersEncoding)
        : results(callersResults != nullptr ? callersResults : &ownResults),
          flags(callersFlags != nullptr ? callersFlags : &ownFlags),
          encoding(callersEncoding) {}

    std::string* results;   ///< replaced by the log of all steps
    int* flags;             ///< document flags, in and out
    std::string* encoding;  ///< see settleEncoding; may be null
    int error = 0;          ///< errno of the first call that failed, 0 for none
    std::string ownResults;
    int ownFlags = 0;
};

/// Runs `work`, which reports; where memory runs out it has failed, and the report says so.
template <class Work>
bool withinMemory(FileReport& report, Work work) {
    try {
        return work();
    } catch (const std::bad_alloc&) {
        markup::addOutOfMemory(*report.results);
        report.error = ENOMEM;
        return false;
    }
}

/// Lets a caller's encoding override that of a byte file; else tells the caller the file's.
void settleEncoding(FilePos& file, std::string* encoding) {
    if (encoding == nullptr) {
        return;
    }
    if (file.charUnitSize == 1 && !encoding->empty()) {
        file.encoding = *encoding;
    } else {
        *encoding = file.encoding;
    }
}

/// Opens the file; from here on the report tells of it.
template <class File>
bool openFile(File& file, TextArg path, FileReport& report) {
    const bool isOpen = file.FileOpen(path);
    *report.results = file.ioResult;
    report.error = file.fileError();
    return isOpen;
}

/// Closes the file, and completes the report on it.
bool closeFile(FilePos& file, FileReport& report) {
    const bool isClosed = file.FileClose();
    *report.results += file.ioResult;
    report.error = file.fileError();
    *report.flags = file.docFlags;
    return isClosed;
}

/// Reads the whole of a file; when it can't be opened, `text` is empty.
bool readFile(TextArg path, TextBuffer& text, FileReport& report) {
    FileReading file(*report.flags);
    text.truncate(0);
    if (!openFile(file, path, report)) {
        return false;
    }
    settleEncoding(file, report.encoding);
    file.ioResult.clear();
    const bool fits = file.remaining() <= INT_MAX || file.FileErrorAddResult(EFBIG);
    file.opByteLength = static_cast<int>(file.remaining());
    const bool isRead = fits && file.FileReadText(text);
    closeFile(file, report);  // what was read is whole, even when closing fails
    return isRead;
}

/// What was not written to the last byte is a failure, also when only closing tells.
bool writeFile(TextArg path, std::string_view text, FileReport& report) {
    return withinMemory(report, [&] {
        FileWriting file(*report.flags);
        if (!openFile(file, path, report)) {
            return false;
        }
        file.chooseEncoding(text);
        settleEncoding(file, report.encoding);
        const bool isWritten = file.FileWriteText(text);
        return closeFile(file, report) && isWritten;
    });
}

}  // namespace

bool MarkupDocument::Load(TextArg path) {
    if (inFileMode()) {
        return false;
    }
    // First of all, before there is anything that can fail: a load that fails must not leave
    // records of the text that it replaces.
    forgetRecords();
    FileReport report(&resultText_, &docFlags_, nullptr);
    const bool isLoaded =
        withinMemory(report, [&] { return readFile(path, docText_, report) && x_ParseDoc(); });
    fileError_ = report.error;
    if (!isLoaded && fileError_ == ENOMEM) {
        forgetRecords();
        docText_.clear();
    }
    return isLoaded;
}

bool MarkupDocument::ReadTextFile(TextArg path, std::string& text, std::string* results, int* flags,
                                  std::string* encoding) {
    FileReport report(results, flags, encoding);
    text.clear();
    return withinMemory(report, [&] {
        TextBuffer buffer;
        const bool isRead = readFile(path, buffer, report);
        text = buffer.view();
        return isRead;
    });
}

bool MarkupDocument::Save(TextArg path) {
    if (inFileMode()) {
        return false;
    }
    int flags = docFlags_;  // the document keeps its own
    FileReport report(&resultText_, &flags, nullptr);
    const bool isSaved = writeFile(path, docText_.view(), report);
    fileError_ = report.error;
    return isSaved;
}

bool MarkupDocument::WriteTextFile(TextArg path, const std::string& text, std::string* results,
                                   int* flags, std::string* encoding) {
    FileReport report(results, flags, encoding);
    return writeFile(path, text, report);
}

std::string MarkupDocument::GetDeclaredEncoding(TextArg text) {
    return markup::declaredEncoding(text.view());
}
