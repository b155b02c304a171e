#pragma once

#include "tools/companion/CommandLineFwd.h"
#include "tools/eqrecord/Arguments.h"

namespace eqrecord {

/// Adds the verb `check`: what is wrong with records. Given on the command line, it sets `work`.
void addCheck(CLI::App& app, Work& work);

}  // namespace eqrecord
