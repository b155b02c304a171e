#pragma once

#include <functional>
#include <ostream>
#include <string>

namespace eqrecord {

/// Runs gnuplot on the script that `writeScript` writes, and returns what gnuplot writes to its
/// standard output. What it tells on the way is told on standard error. Throws std::runtime_error
/// when there is no gnuplot, or it fails or writes nothing.
std::string runGnuplot(const std::function<void(std::ostream&)>& writeScript);

}  // namespace eqrecord
