#pragma once

#include <span>

namespace eqrecord {

/// Lets eqrecord-netcdf, with these arguments, take the place of this process, so that its status
/// is this one's: the program beside this one, or else that of PATH. Throws std::runtime_error
/// when there is none.
[[noreturn]] void becomeNetcdfProgram(std::span<char* const> arguments);

}  // namespace eqrecord
