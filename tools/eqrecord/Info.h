#pragma once

#include "tools/companion/CommandLineFwd.h"
#include "tools/eqrecord/Arguments.h"

namespace eqrecord {

/// Adds the verb `info`: what records consist of. Given on the command line, it sets `work`.
void addInfo(CLI::App& app, Work& work);

}  // namespace eqrecord
