#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "markup/Markup.h"

namespace lint {

/// A text as the converter reads it, an element's data or an attribute's value, and where it comes
/// from.
class SourceText {
  public:
    /// The data of element `elem` of the document. The text may lie in the document, which must
    /// outlive the object.
    static SourceText ofElement(const MarkupDocument& document, int elem);
    /// The value of the element's attribute of that name, empty when there is none.
    static SourceText ofAttribute(const MarkupDocument& document, int elem, std::string_view name);

    /// What the converter reads.
    std::string_view text() const { return isDirect_ ? raw_ : std::string_view(storage_); }
    /// As it stands in the document, between the tags or the quotes.
    std::string_view raw() const { return raw_; }
    /// Where that begins in the document.
    std::size_t rawOffset() const { return rawOffset_; }
    bool isAttribute() const { return isAttribute_; }
    /// Whether the attribute is there at all.
    bool isThere() const { return isThere_; }

    /// Where in the document byte `index` of the text comes from; of one of a reference, where that
    /// begins.
    std::size_t offsetOf(std::size_t index) const;

    /// Whether the text has references or CDATA sections.
    bool hasReferences() const { return hasReferences_; }
    /// Whether XML gives the element or attribute another text: white space that is dropped between
    /// comments, a reference that XML does not know, a line end in an attribute.
    bool differsFromXml() const { return differsFromXml_; }
    /// Whether elements stand in the text, so that none of it is read.
    bool hasChildren() const { return hasChildren_; }

  private:
    /// A piece of the text that comes from one place.
    struct Segment {
        std::size_t textStart;
        std::size_t rawStart;  ///< in the document
        std::size_t rawEnd;
    };

    void addLiteral(std::string_view piece, std::size_t offset);
    void addEscaped(std::string_view piece, std::size_t offset);
    void addNodes();

    std::string_view raw_;
    std::size_t rawOffset_ = 0;
    std::string storage_;
    std::vector<Segment> segments_;  ///< none when the text is the raw one
    bool isDirect_ = true;
    bool isAttribute_ = false;
    bool isThere_ = false;
    bool hasReferences_ = false;
    bool differsFromXml_ = false;
    bool hasChildren_ = false;
};

}  // namespace lint
