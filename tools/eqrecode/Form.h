#pragma once

#include <string>
#include <string_view>

namespace eqrecode {

/// How a text lies in a file.
struct Form {
    std::string encoding;  ///< the name of its encoding
    int mark = 0;          ///< the `DocFlag` of its byte-order mark, 0 for none

    bool operator==(const Form&) const = default;
};

/// The form in which the document layer reads a file of these bytes.
Form formOf(std::string_view bytes);

/// The form of a file that is to be written in `encoding`; UTF-16 is under a mark, in the order
/// that the name says or else little-endian.
Form formFor(const std::string& encoding);

/// The encoding that a file of these bytes declares where the document layer looks for it, near the
/// start; "" for none.
std::string declaredEncoding(std::string_view bytes);

/// The mark of a form as bytes, "" for none.
std::string_view markOf(const Form& form);

/// Whether there is a converter for the encoding. Throws std::system_error when that can't be told
/// now.
bool isKnown(const Form& form);

/// Makes the XML declaration of `text` name `encoding`: rewrites the name, adds it behind the
/// version, or adds a declaration.
void declareEncoding(std::string& text, const std::string& encoding);

}  // namespace eqrecode
