#pragma once

#include <string>

#include "tools/eqrecord/NetcdfFile.h"
#include "tools/eqrecord/OpenRecord.h"
#include "tools/eqrecord/Selection.h"

namespace eqrecord {

/// Writes what is selected of a record to a netCDF file, in the layout that docs/netcdf.md tells.
/// `history` is the command that does so. Takes memory for a quarter of a configuration, beside
/// that of the library. Throws companion::UsageError when nothing is selected, and what the file
/// throws; the file is complete when it returns.
void exportNetcdf(OpenRecord& record, const Selection& selection, const std::string& history,
                  NetcdfFile& file);

}  // namespace eqrecord
