#include "converter/Diagnostics.h"

#include <unistd.h>

#include <cerrno>

void Diagnostics::write() {
    std::string_view rest(message_.data(), used_);
    if (!longMessage_.empty()) {
        spill();
        rest = longMessage_;
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
