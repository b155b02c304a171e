#pragma once

#include <string_view>

#include "markup/text/TextArg.h"

/// What kind of element path an argument is.
enum PathType : int {
    PathInvalid = -1,
    PathAny = 0,       ///< no name: any element
    PathRelative = 1,  ///< begins with a name
    PathAbsolute = 2,  ///< begins with "/"
    PathAnywhere = 3,  ///< begins with "//"
};

/// A parsed element path. Its whole syntax is checked, but only its first name is used for
/// finding; predicates have no effect. The text is not owned and must outlive the object.
///
///     path      := [ "/" | "//" ] segment { "/" segment } [ "/@" name ]
///     segment   := name { "[" predicate "]" }
///     predicate := digits, the first from 1 to 9 | "@" name [ "=" value ] | name
///
/// A name runs to the first of space, "/", "=", "[" or "]"; a value is quoted, or bare up to "]".
/// A path that begins with "//" has one segment.
class PathPos {
  public:
    explicit PathPos(TextArg path) : text_(path.view()) {}
    /// The path, parsed: for one that is sought often.
    static PathPos parsed(TextArg path) {
        PathPos result(path);
        result.ParsePath();
        return result;
    }

    /// Parses the path and returns whether it is valid; sets `type` in either case.
    bool ParsePath();

    /// The first name of the path, empty unless the path is valid and has one.
    std::string_view firstName() const { return firstName_; }

    /// Whether every byte of the first name belongs to names of elements too, so that a tag may be
    /// called by it.
    bool mayNameTag() const { return mayNameTag_; }

    /// Reads a value, quoted or bare up to "]", at the scan offset and moves behind it. Returns
    /// false when a quote is not closed or a bare value is empty.
    bool GetValAndInc(std::string_view& value);

    PathType type = PathAny;
    std::size_t offset = 0;           ///< scan offset; after a valid parse, that of the first name
    std::size_t attributeOffset = 0;  ///< of the name in a trailing "/@name", else 0
    std::size_t nameStart = 0;        ///< behind the leading "/" or "//"

  private:
    bool at(char c) const { return offset < text_.size() && text_[offset] == c; }
    bool isDigitNext() const {
        return offset < text_.size() && text_[offset] >= '0' && text_[offset] <= '9';
    }
    bool take(char c);
    bool skipName();
    bool parseSegments();
    bool parseSegment();
    bool parsePredicate();

    std::string_view text_;
    std::string_view firstName_;
    bool mayNameTag_ = false;
};
