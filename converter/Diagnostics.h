#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "converter/Message.h"
#include "converter/MessageThread.h"

/// Messages in the order in which they were said, to be written later.
class KeptMessages {
  public:
    void add(std::string_view message) {
        text_ += message;
        ends_.push_back(text_.size());
    }
    std::size_t count() const { return ends_.size(); }
    /// Message number `n`, from 0. Requires: n < count().
    std::string_view at(std::size_t n) const {
        const std::size_t start = n == 0 ? 0 : ends_[n - 1];
        return std::string_view(text_).substr(start, ends_[n] - start);
    }

  private:
    std::string text_;
    std::vector<std::size_t> ends_;
};

/// Writes progress and diagnostic messages to a file descriptor, in their order and each in one
/// system call, so that they appear at once and whole.
class Diagnostics {
  public:
    /// The descriptor is not owned and stays open.
    explicit Diagnostics(int descriptor) : descriptor_(descriptor) {}
    /// Keeps the messages. `kept` is not owned and must outlive the object.
    explicit Diagnostics(KeptMessages& kept) : kept_(&kept) {}

    /// Writes the parts, texts and decimal integers, one after another; a line end is a part too.
    template <class... Parts>
    void say(const Parts&... parts) {
        Message message;
        message.add(parts...);
        put(message.view());
    }
    /// Writes all of these messages.
    void sayAll(const KeptMessages& messages);

    /// Has messages written by a thread from here on, where that is possible: for when they come
    /// faster than the system takes them. The destructor waits for the last.
    void useThread();

  private:
    void put(std::string_view message);

    int descriptor_ = -1;
    KeptMessages* kept_ = nullptr;  ///< in place of the descriptor
    std::unique_ptr<MessageThread> thread_;
};
