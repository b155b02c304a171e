#pragma once

#include <vector>

#include "tools/eqrecord/JsonInput.h"

namespace eqrecord {

/// Appends the reals of a JSON array to `values`: what stands behind its bracket, up to that which
/// ends it, which is left. Throws Refusal, with the place in the array, when there is something
/// else, or are more than `most`.
void readRealArray(JsonInput& input, std::size_t most, std::vector<double>& values);

}  // namespace eqrecord
