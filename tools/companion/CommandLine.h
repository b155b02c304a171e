#pragma once

#include <functional>
#include <string>

#include "tools/companion/CommandLineFwd.h"

namespace companion {

/// Prepares an empty command line: of an option that is given twice the last one counts, and the
/// help begins with `usage`, the arguments behind the program's name.
void prepare(CLI::App& app, const std::string& usage);

/// Adds --help and --version, which prints `version`, parses the command line, does what these ask
/// for, and otherwise returns the exit status of `work`. Throws UsageError for a command line that
/// is wrong, and what `work` throws.
int parseAndRun(CLI::App& app, const std::string& version, int argc, char** argv,
                const std::function<int()>& work);

}  // namespace companion
