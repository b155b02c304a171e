#pragma once

#include "tools/companion/CommandLineFwd.h"
#include "tools/eqrecord/Arguments.h"

namespace eqrecord {

/// Adds the verb `build`: a record out of the JSON of one. Given on the command line, it sets
/// `work`.
void addBuild(CLI::App& app, Work& work);

}  // namespace eqrecord
