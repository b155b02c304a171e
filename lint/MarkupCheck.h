#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "lint/Teller.h"
#include "markup/Markup.h"

namespace lint {

/// Looks at a file as a text: its encoding, and the markup that the tolerant parser has read on
/// over.
class MarkupCheck {
  public:
    /// With `strictXml` a file that is no well-formed XML is told as such in any case.
    MarkupCheck(Teller& teller, bool strictXml) : teller_(teller), strictXml_(strictXml) {}

    /// Looks at a file that has just been loaded. `path` is where its bytes are read again when
    /// they are in another encoding. The document must live until `end`.
    void begin(const char* path, const MarkupDocument& document);
    /// This piece of the text, in an element, holds no markup and need not be looked at.
    void skip(Range markupFree);
    /// Whether the document type declares tdi_config as something else than text, so that other
    /// programs take spaces out of it.
    bool labelsAreTokens();
    /// Looks at the rest of the file.
    void end();

  private:
    void readResults();
    bool isUtf8() const;
    bool isUsualText() const;
    void checkEncoding(const char* path);
    void tellEncoding(bool isHarmless, long lost);
    void tellContradicted(const std::string& message);
    void checkTolerated();
    void tellIllFormed(const std::string& reason, std::size_t offset);
    void tellNamespace();
    int root() const { return document_->record(0).child; }

    Teller& teller_;
    bool strictXml_;
    const MarkupDocument* document_ = nullptr;
    std::vector<Range> skipped_;  ///< in order
    std::optional<bool> labelsAreTokens_;
    bool isTold_ = false;  ///< that the markup is not what it should be

    // What the load said.
    bool hasMark_ = false;
    bool isConverted_ = false;
    bool isLossy_ = false;
    std::size_t firstLost_ = 0;  ///< where, if it is known
    std::string encoding_;
    std::string length_;  ///< of the file
    std::string nulls_;   ///< how many were removed
};

}  // namespace lint
