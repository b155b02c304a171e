// Of a run the first file gives the prologue, and whether a file is the first is told by the file
// type, which is still empty then. The three dates share one value, so that a text that is no date
// leaves the date before it in its place: the prologue has its three dates whatever the file says.

#include "converter/VORN.h"

#include <cerrno>
#include <new>
#include <string_view>

void VORN::init(const char* path, int fileCount, MarkupDocument& document, std::string& fileType) {
    if (!document.Load(path) && document.GetFileError() == ENOMEM) {
        throw std::bad_alloc();  // not to be taken for a file that is missing or empty
    }
    ElementFinder finder(document, listener_);
    finder.find(Sought::FileType);
    const std::string name = document.GetTagName();
    document.IntoElem();
    if (fileType.empty()) {
        fileType = name;
        // In the record its prefix stands for the first 4 characters. Of fewer substr throws,
        // before anything is written, and nothing catches it: required.
        writePrologue(fileCount, finder, fileType.substr(4));
    } else if (name != fileType) {
        messages_.fileTypeMismatch(name);
    }
}

/// Elements are found forward only, and whether they are there is not asked: the text of a missing
/// one is empty, which reads as 2000-01-01.
void VORN::writePrologue(int fileCount, ElementFinder& finder, std::string_view type) {
    record_.begin(type);  // 1 to 3
    MarkupDocument& document = finder.document();
    vek::JulianDate date;
    finder.find(Sought::Header);
    document.IntoElem();
    writeDate(finder, date, Sought::ProductionDate, &Messages::creationTimeInvalid);  // 4
    document.OutOfElem();
    finder.find(Sought::SpecificHeader);
    document.IntoElem();
    writeDate(finder, date, Sought::ApplicabilityStart, &Messages::startTimeInvalid);  // 5
    writeDate(finder, date, Sought::ApplicabilityEnd, &Messages::stopTimeInvalid);     // 6
    document.OutOfElem();
    record_.fileCount(static_cast<std::size_t>(fileCount));  // 7
}

/// Writes the date in the element that is sought. Text that is no date is reported and leaves what
/// `date` held before.
void VORN::writeDate(ElementFinder& finder, vek::JulianDate& date, Sought what,
                     Complaint complaint) {
    const std::string text = finder.text(what);
    if (!date.init(text.c_str())) {
        (messages_.*complaint)(text);
    }
    record_.date(date.strIso(0, false).view());
}
