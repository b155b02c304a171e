#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "tools/eqrecode/Form.h"

namespace eqrecode {

/// The first thing that a file loses on its way.
struct Loss {
    std::string place;  ///< ":LINE:COLUMN" in the file that is read, "" for all of it
    std::string what;
};

/// What reading has lost of a file: `text` is what the document layer has made of `bytes`, and
/// `again` what it makes of that in the same form. Throws std::system_error.
std::optional<Loss> lossOnReading(std::string_view bytes, const Form& form, std::string_view text,
                                  std::string_view again);

/// What would be lost in a file of `bytes` that is `text`, which was `source` before it declared
/// another encoding, written in `form`. Throws std::runtime_error.
std::optional<Loss> lossOnWriting(std::string_view source, std::string_view text, const Form& form,
                                  std::string_view bytes);

}  // namespace eqrecode
