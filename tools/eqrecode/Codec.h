#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "tools/eqrecode/Form.h"

namespace eqrecode {

/// What bytes are as text.
struct Decoding {
    std::string text;                  ///< UTF-8, up to the fault
    std::optional<std::size_t> fault;  ///< the first byte that is none of the encoding's
};

/// Decodes a file by the system's converter alone, which replaces nothing: the document layer is
/// held against this. The form has to be known. Throws std::system_error.
Decoding decode(std::string_view bytes, const Form& form);

/// The bytes of a file of this text as the document layer writes it, with "?" for what the encoding
/// can't hold, and unconverted where that is unknown. Throws std::runtime_error.
std::string encode(std::string_view text, const Form& form);

}  // namespace eqrecode
