// Reading documents and texts from files, and writing them.

#include <cerrno>
#include <climits>
#include <new>

#include "markup/DeclaredEncoding.h"
#include "markup/FileReading.h"
#include "markup/FileWriting.h"
#include "markup/Markup.h"
#include "markup/ResultLog.h"

namespace {

/// Reads the whole of an open file into `text` and closes it.
bool readOpenFile(FileReading& file, TextBuffer& text) {
    bool isRead = false;
    if (file.remaining() > INT_MAX) {
        file.ioResult.clear();
        file.FileErrorAddResult(EFBIG);
    } else {
        file.opByteLength = static_cast<int>(file.remaining());
        isRead = file.FileReadText(text);
    }
    file.FileClose();
    return isRead;
}

/// Lets a caller's encoding override that of a byte file; else tells the caller the file's.
void settleEncoding(FilePos& file, std::string& encoding) {
    if (file.charUnitSize == 1 && !encoding.empty()) {
        file.encoding = encoding;
    } else {
        encoding = file.encoding;
    }
}

/// Opens, reads and closes `path`. `results` is replaced by the log of these steps; `flags` are the
/// document flags, in and out; `encoding` may be null.
bool readFile(TextArg path, TextBuffer& text, std::string& results, int& flags,
              std::string* encoding) {
    try {
        FileReading file(flags);
        const bool isOpen = file.FileOpen(path);
        results = file.ioResult;
        text.truncate(0);
        if (!isOpen) {
            return false;
        }
        if (encoding != nullptr) {
            settleEncoding(file, *encoding);
        }
        const bool isRead = readOpenFile(file, text);
        results += file.ioResult;
        flags = file.docFlags;
        return isRead;
    } catch (const std::bad_alloc&) {
        text.clear();
        markup::addOutOfMemory(results);
        return false;
    }
}

/// Writes `text` to `path`; the other arguments are as for readFile. What was not written to the
/// last byte is a failure, also when only closing tells.
bool writeFile(TextArg path, std::string_view text, std::string& results, int& flags,
               std::string* encoding) {
    try {
        FileWriting file(flags);
        const bool isOpen = file.FileOpen(path);
        results = file.ioResult;
        if (!isOpen) {
            return false;
        }
        file.chooseEncoding(text);
        if (encoding != nullptr) {
            settleEncoding(file, *encoding);
        }
        const bool isWritten = file.FileWriteText(text);
        const bool isClosed = file.FileClose();
        results += file.ioResult;
        flags = file.docFlags;
        return isWritten && isClosed;
    } catch (const std::bad_alloc&) {
        markup::addOutOfMemory(results);
        return false;
    }
}

}  // namespace

bool MarkupDocument::Load(TextArg path) {
    if (inFileMode()) {
        return false;
    }
    // First of all: a load that fails must not leave records of the text that it replaces.
    forgetRecords();
    if (!readFile(path, docText_, resultText_, docFlags_, nullptr)) {
        return false;
    }
    try {
        return x_ParseDoc();
    } catch (const std::bad_alloc&) {
        forgetRecords();
        docText_.clear();
        markup::addOutOfMemory(resultText_);
        return false;
    }
}

bool MarkupDocument::ReadTextFile(TextArg path, std::string& text, std::string* results, int* flags,
                                  std::string* encoding) {
    std::string ownResults;
    int ownFlags = 0;
    std::string& log = results != nullptr ? *results : ownResults;
    TextBuffer buffer;
    const bool isRead = readFile(path, buffer, log, flags != nullptr ? *flags : ownFlags, encoding);
    try {
        text = buffer.view();
        return isRead;
    } catch (const std::bad_alloc&) {
        std::string().swap(text);
        markup::addOutOfMemory(log);
        return false;
    }
}

bool MarkupDocument::Save(TextArg path) {
    if (inFileMode()) {
        return false;
    }
    int flags = docFlags_;  // the document keeps its own
    return writeFile(path, docText_.view(), resultText_, flags, nullptr);
}

bool MarkupDocument::WriteTextFile(TextArg path, const std::string& text, std::string* results,
                                   int* flags, std::string* encoding) {
    std::string ownResults;
    int ownFlags = 0;
    return writeFile(path, text, results != nullptr ? *results : ownResults,
                     flags != nullptr ? *flags : ownFlags, encoding);
}

std::string MarkupDocument::GetDeclaredEncoding(TextArg text) {
    return markup::declaredEncoding(text.view());
}
