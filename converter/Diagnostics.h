#pragma once

#include <string_view>

#include "converter/Message.h"

/// Writes progress and diagnostic messages to a file descriptor, in their order and each in one
/// system call, so that they appear at once and whole.
class Diagnostics {
  public:
    /// The descriptor is not owned and stays open.
    explicit Diagnostics(int descriptor) : descriptor_(descriptor) {}

    /// Writes the parts, texts and decimal integers, one after another; a line end is a part too.
    template <class... Parts>
    void say(const Parts&... parts) {
        Message message;
        message.add(parts...);
        writeMessage(descriptor_, message.view());
    }

  private:
    int descriptor_;
};
