// Of a run the first file gives the prologue, and whether a file is the first is told by the file
// type, which is still empty then. The three dates share one value, so that a text that is no date
// leaves the date before it in its place: the prologue has its three dates whatever the file says.

#include "converter/VORN.h"

#include <cerrno>
#include <new>
#include <string_view>

#include "converter/ElementText.h"

void VORN::init(const char* path, int fileCount, MarkupDocument& document, std::string& fileType) {
    if (!document.Load(path) && document.GetFileError() == ENOMEM) {
        throw std::bad_alloc();  // not to be taken for a file that is missing or empty
    }
    document.FindElem();
    const std::string name = document.GetTagName();
    document.IntoElem();
    if (fileType.empty()) {
        fileType = name;
        // In the record its prefix stands for the first 4 characters. Of fewer substr throws,
        // before anything is written, and nothing catches it: required.
        writePrologue(fileCount, document, fileType.substr(4));
    } else if (name != fileType) {
        messages_.fileTypeMismatch(name);
    }
}

/// Elements are found forward only, and whether they are there is not asked: the text of a missing
/// one is empty, which reads as 2000-01-01.
void VORN::writePrologue(int fileCount, MarkupDocument& document, std::string_view type) {
    record_.begin(type);  // 1 to 3
    vek::JulianDate date;
    document.FindElem("HEADER");
    document.IntoElem();
    writeDate(document, date, "PRODUCTION_DATE", &Messages::creationTimeInvalid);  // 4
    document.OutOfElem();
    document.FindElem("SPECIFIC_HEADER");
    document.IntoElem();
    writeDate(document, date, "APPLICABILITY_DATE", &Messages::startTimeInvalid);     // 5
    writeDate(document, date, "APPLICABILITY_END_DATE", &Messages::stopTimeInvalid);  // 6
    document.OutOfElem();
    record_.fileCount(static_cast<std::size_t>(fileCount));  // 7
}

/// Writes the date in `element`. Text that is no date is reported and leaves what `date` held
/// before.
void VORN::writeDate(MarkupDocument& document, vek::JulianDate& date, const char* element,
                     Complaint complaint) {
    const std::string text = findElementText(document, element);
    if (!date.init(text.c_str())) {
        (messages_.*complaint)(text);
    }
    record_.date(date.strIso(0, false).view());
}
