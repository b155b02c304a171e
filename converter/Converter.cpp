#include "converter/Converter.h"

#include <cstdlib>

#include "base/FileUtils.h"
#include "converter/ElementText.h"
#include "converter/TdiConfiguration.h"

int Converter::run(int fileCount, const char* const* paths) {
    for (int i = 0; i < fileCount; ++i) {
        if (!convertFile(fileCount, paths[i])) {
            return stopped;
        }
    }
    return 0;
}

// Elements are found forward only, and whether they are there is not asked: a missing one reads as
// 0, and the moves that follow are made all the same. That some damaged files then read as other
// parts of themselves is required.
bool Converter::convertFile(int fileCount, const char* path) {
    MarkupDocument document;
    header_.init(path, fileCount, document, fileType_);
    document.FindElem("DATA");
    document.IntoElem();
    const auto bandId = static_cast<std::uint8_t>(toInteger(findElementText(document, "BAND_ID")));
    const double epsilon = std::strtod(findElementText(document, "EPSILON").c_str(), nullptr);
    const auto nucTableId =
        static_cast<std::int16_t>(toInteger(findElementText(document, "NUC_TABLE_ID")));
    if (!checkNucTable(nucTableId, path)) {
        return false;
    }
    record_.raw(bandId);  // 9
    const vek::String name = vek::FileUtils::baseName(path, false);
    record_.setFill('0');
    record_.number(static_cast<std::size_t>(name.length()));  // 10
    record_.text(name.view());                                // 11
    return convertConfigurations(document, bandId, epsilon);
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

bool Converter::convertConfigurations(MarkupDocument& document, std::uint8_t bandId,
                                      double epsilon) {
    std::uint8_t count = 0;  // modulo 256, as the record's field
    document.SavePos("");
    while (document.FindElem("COEFFICIENTS_LIST")) {
        ++count;
    }
    document.RestorePos("");
    diagnostics_.say("num_tdi_configs=", count, "\n");
    record_.raw(count);  // 12
    while (document.FindElem("COEFFICIENTS_LIST")) {
        TdiConfiguration configuration(document, record_, diagnostics_, table_);
        if (!configuration.convert(bandId, epsilon)) {
            return false;
        }
    }
    return true;
}
