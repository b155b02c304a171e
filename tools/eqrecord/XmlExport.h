#pragma once

#include <string>

#include "tools/eqrecord/ExportedPart.h"
#include "tools/eqrecord/OpenRecord.h"

namespace eqrecord {

/// Makes a folder of parameter files, NNN/NAME for each file of the part with NNN counted from
/// 001, of which the converter makes the part again. The folder is there when that has been
/// proved; else nothing is left. Throws Inexpressible when the part can't be had from any
/// parameter files, and what keeps the folder from being made. Unless `takesShort`, a file with
/// other configurations than it counts is refused.
void exportXml(OpenRecord& record, const ExportedPart& part, bool takesShort,
               const std::string& folder);

}  // namespace eqrecord
