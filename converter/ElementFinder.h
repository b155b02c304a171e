#pragma once

#include <cstdint>
#include <string>

#include "converter/ReadListener.h"
#include "markup/Markup.h"
#include "markup/PathPos.h"

/// Finds by its name what the converter reads, with the cursor of a document, and tells a listener.
class ElementFinder {
  public:
    /// Nothing is owned; both must outlive the object. The listener may be null.
    ElementFinder(MarkupDocument& document, ReadListener* listener)
        : document_(document), listener_(listener) {}

    /// Moves to the next sibling element with the name of `what`. Returns false when there is none,
    /// with the cursor where it was.
    bool find(Sought what);
    /// The same; returns the element's text, "" when there is none, although another element is
    /// still the current one then.
    std::string text(Sought what);
    /// How many siblings from the current element on have the name of `what`, modulo 256. Moves
    /// nothing and tells nobody.
    std::uint8_t count(Sought what);

    MarkupDocument& document() const { return document_; }

  private:
    MarkupDocument& document_;
    ReadListener* listener_;
};

/// The number at the start of a text: white space before it is skipped, what follows is ignored,
/// none is 0, and one out of range is the nearest limit.
long toInteger(const std::string& text);
