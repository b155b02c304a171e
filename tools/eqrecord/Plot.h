#pragma once

#include "tools/companion/CommandLineFwd.h"
#include "tools/eqrecord/Arguments.h"

namespace eqrecord {

/// Adds the verb `plot`: pictures of coefficients. Given on the command line, it sets `work`.
void addPlot(CLI::App& app, Work& work);

}  // namespace eqrecord
