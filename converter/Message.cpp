#include "converter/Message.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>

/// Adds a text for which there is no room left.
void Message::addLong(std::string_view text) {
    longStart_.append(text_.data(), used_).append(text);
    used_ = 0;
}

void writeMessage(int descriptor, std::string_view message) {
    while (!message.empty()) {
        const ssize_t written = ::write(descriptor, message.data(), message.size());
        if (written < 0 && errno != EINTR) {
            return;
        }
        message.remove_prefix(static_cast<std::size_t>(std::max<ssize_t>(written, 0)));
    }
}
