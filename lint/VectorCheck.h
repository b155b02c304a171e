#pragma once

#include <string>
#include <string_view>

#include "lint/SourceText.h"
#include "lint/Teller.h"

namespace lint {

/// Looks at the values of vectors: at each piece of the text that is no plain number.
class VectorCheck {
  public:
    explicit VectorCheck(Teller& teller) : teller_(teller) {}

    /// Looks at the vector `elem`, called `name` ("COEFF_A1 of detector 3"). Tells in the teller's
    /// group, which is left open, and returns how many values the vector adds. Throws
    /// std::logic_error when the checker and the converter cut the text into different pieces.
    long check(const MarkupDocument& document, int elem, const std::string& name);

    /// The text of the last vector if it surely holds no markup, else empty.
    Range markupFree() const { return markupFree_; }

  private:
    void checkPieces(const SourceText& source);
    void checkPiece(const SourceText& source, std::size_t start, std::size_t end, long number,
                    double value);

    Teller& teller_;
    int elem_ = 0;
    std::string name_;
    Range markupFree_;
};

}  // namespace lint
