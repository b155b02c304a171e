#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

namespace lint {

/// JSON with its keys in the order in which they are set. Only for the sources of reports: the
/// header is large, and nobody above needs it.
using Json = nlohmann::ordered_json;

/// On one line and in ASCII, which no terminal and no reader takes amiss; a byte that is no UTF-8
/// becomes U+FFFD.
inline std::string dumped(const Json& json) {
    return json.dump(-1, ' ', true, Json::error_handler_t::replace);
}

}  // namespace lint
