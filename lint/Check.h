#pragma once

#include <span>

#include "lint/CheckOptions.h"
#include "lint/Finding.h"

namespace lint {

/// Finds out what the converter would do with the files of a set, in their order, by running it,
/// and tells the report. The report's `end` is left to the caller. Throws std::bad_alloc, and
/// whatever the report throws.
Conversion check(std::span<const char* const> paths, const CheckOptions& options, Report& report);

}  // namespace lint
