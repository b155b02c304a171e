#pragma once

#include <CLI/CLI.hpp>

#include "tools/eqrecord/Arguments.h"

namespace eqrecord {

/// Adds the verb `export`: records in other formats. Given on the command line, it sets `work`.
void addExport(CLI::App& app, Work& work);

}  // namespace eqrecord
