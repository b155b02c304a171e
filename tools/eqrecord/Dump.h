#pragma once

#include "tools/companion/CommandLineFwd.h"
#include "tools/eqrecord/Arguments.h"

namespace eqrecord {

/// Adds the verb `dump`: all that stands in a record. Given on the command line, it sets `work`.
void addDump(CLI::App& app, Work& work);

}  // namespace eqrecord
