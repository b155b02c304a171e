#pragma once

#include <optional>

#include "lint/Finding.h"

namespace lint {

/// From which severity on a finding makes a run fail.
struct Threshold {
    std::optional<Severity> lowest = Severity::warning;  ///< none: nothing does

    /// The exit status of a run with these findings: 1 when one of them is that severe, else 0.
    int statusFor(const Counts& counts) const {
        if (!lowest) {
            return 0;
        }
        const long found = counts.errors + (*lowest <= Severity::warning ? counts.warnings : 0) +
                           (*lowest <= Severity::note ? counts.notes : 0);
        return found > 0 ? 1 : 0;
    }
};

}  // namespace lint
