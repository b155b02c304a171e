#include "converter/Diagnostics.h"

#include <unistd.h>

#include <cerrno>

/// Adds a text for which there is no room left.
void Diagnostics::addLong(std::string_view text) {
    longStart_.append(message_.data(), used_).append(text);
    used_ = 0;
}

void Diagnostics::write() {
    std::string_view rest(message_.data(), used_);
    if (!longStart_.empty()) {
        rest = longStart_.append(rest);
    }
    while (!rest.empty()) {
        const ssize_t written = ::write(descriptor_, rest.data(), rest.size());
        if (written > 0) {
            rest.remove_prefix(static_cast<std::size_t>(written));
        } else if (written == 0 || errno != EINTR) {
            return;
        }
    }
}
