#include "converter/VORN.h"

#include <cerrno>
#include <new>
#include <string_view>

#include "converter/ElementText.h"

namespace {

/// True when the result log tells that loading ran out of memory. Such a file must not be taken
/// for one that is missing or empty.
bool ranOutOfMemory(const MarkupDocument& document) {
    MarkupDocument log;
    log.SetDoc(document.GetResult());
    while (log.FindElem("file_error")) {
        if (toInteger(log.GetAttrib("n")) == ENOMEM) {
            return true;
        }
    }
    return false;
}

}  // namespace

void VORN::init(const char* path, int fileCount, MarkupDocument& document, std::string& fileType) {
    if (!document.Load(path) && ranOutOfMemory(document)) {
        throw std::bad_alloc();
    }
    document.FindElem();
    const std::string name = document.GetTagName();
    document.IntoElem();
    if (!fileType.empty()) {
        if (name != fileType) {
            diagnostics_.say("file type table mismatch (", name, ") in file ", path, "\n");
        }
        return;
    }
    fileType = name;
    const std::string kind = fileType.substr(4);

    record_.text("ZEDA");                 // 1
    record_.number(fileType.size() + 1);  // 2
    record_.text("VORN/");                // 3
    record_.text(kind);                   // 3
    vek::JulianDate date;
    document.FindElem("HEADER");
    document.IntoElem();
    writeDate(document, date, "PRODUCTION_DATE", "creation time is invalid: ");  // 4
    document.OutOfElem();
    document.FindElem("SPECIFIC_HEADER");
    document.IntoElem();
    writeDate(document, date, "APPLICABILITY_DATE", "application start time is invalid: ");     // 5
    writeDate(document, date, "APPLICABILITY_END_DATE", "application stop time is invalid: ");  // 6
    document.OutOfElem();
    record_.number(static_cast<std::size_t>(fileCount));  // 7
}

/// Writes the date in `element`. Text that is no date is reported, without a line end (required),
/// and leaves what `date` held before: the prologue always has its three dates.
void VORN::writeDate(MarkupDocument& document, vek::JulianDate& date, const char* element,
                     const char* complaint) {
    const std::string text = findElementText(document, element);
    if (!date.init(text.c_str())) {
        diagnostics_.say(complaint, text);
    }
    record_.text(date.strIso(0, false).view());
}
