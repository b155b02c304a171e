#pragma once

#include "tools/companion/CommandLineFwd.h"
#include "tools/eqrecord/Arguments.h"

namespace eqrecord {

/// Adds the verb `diff`: what two records differ in. Given on the command line, it sets `work`.
void addDiff(CLI::App& app, Work& work);

}  // namespace eqrecord
