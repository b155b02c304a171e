#pragma once

#include <span>

#include "tools/companion/CommandLineFwd.h"
#include "tools/eqrecord/Arguments.h"

namespace eqrecord {

/// Adds the verb `export`: records in other formats. Given on the command line, it sets `work`.
/// `given` is the command line behind the verb; it goes on to the program for netCDF.
void addExport(CLI::App& app, Work& work, std::span<char* const> given);

}  // namespace eqrecord
