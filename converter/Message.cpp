#include "converter/Message.h"

#include <algorithm>

/// Adds a text for which there is no room left.
void Message::addLong(std::string_view text) {
    longStart_.append(text_.data(), used_).append(text);
    used_ = 0;
}

void writeRest(int descriptor, std::string_view message, long written) {
    while (written > 0 || written == -EINTR) {
        message.remove_prefix(static_cast<std::size_t>(std::max(written, 0L)));
        if (message.empty()) {
            return;
        }
        written = writeDirectly(descriptor, message.data(), message.size());
    }
}
