#pragma once

#include <string>
#include <string_view>

#include "lint/Teller.h"
#include "markup/Markup.h"

namespace lint {

/// Tells of elements that are not there, or there more than once.
class FieldCheck {
  public:
    FieldCheck(Teller& teller, const MarkupDocument& document)
        : teller_(teller), document_(document) {}

    /// An element of which there should be one was sought; `elem` is 0 when it was not found, which
    /// rule `id` tells then.
    void checkSection(std::string_view id, std::string_view name, int elem) const;

    /// Tells by rule `id` that an element was not found where the converter is.
    void tellMissing(std::string_view id, std::string_view name, std::string_view effect) const;

    /// Tells when the element that is read is not the only one of its name.
    void checkOnce(std::string_view name, int elem) const;

  private:
    Teller& teller_;
    const MarkupDocument& document_;
};

}  // namespace lint
