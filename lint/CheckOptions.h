#pragma once

#include <optional>

#include "lint/Expectation.h"

namespace lint {

/// What is checked, and what is told of it.
struct CheckOptions {
    /// Findings of one rule that are told of one vector before the rest is counted.
    long maxPerVector = 3;
    /// Whether a file that is no well-formed XML is told as such in any case.
    bool strictXml = false;
    /// Whether findings come with the line that they lie in.
    bool withExcerpts = true;
    /// Whether findings come with the path of their element.
    bool withPaths = true;
    /// Whether the messages of the conversion are kept.
    bool keepsMessages = false;
    /// What the set has to be, if anything.
    std::optional<Expectation> expectation;
};

}  // namespace lint
