#pragma once

#include "tools/companion/CommandLineFwd.h"
#include "tools/eqrecord/Arguments.h"

namespace eqrecord {

/// Adds the verb `stats`: figures of a record's vectors, and their outliers. Given on the command
/// line, it sets `work`.
void addStats(CLI::App& app, Work& work);

}  // namespace eqrecord
