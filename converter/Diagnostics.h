#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "converter/Message.h"
#include "converter/MessageThread.h"
#include "converter/RecordWriter.h"

/// Messages in the order in which they were said, to be written later, each with how long the
/// record was then.
class KeptMessages {
  public:
    /// Makes room for so many messages of usual length.
    void reserve(std::size_t count) {
        constexpr std::size_t usualSize = 32;
        text_.reserve(count * usualSize);
        ends_.reserve(count);
    }
    void add(std::string_view message, std::size_t recordSize) {
        text_ += message;
        ends_.push_back({text_.size(), recordSize});
    }
    std::size_t count() const { return ends_.size(); }
    /// Message number `n`, from 0. Requires: n < count().
    std::string_view at(std::size_t n) const {
        const std::size_t start = n == 0 ? 0 : ends_[n - 1].text;
        return std::string_view(text_).substr(start, ends_[n].text - start);
    }
    /// The record's size when it was said.
    std::size_t recordSizeAt(std::size_t n) const { return ends_[n].record; }

  private:
    struct End {
        std::size_t text;
        std::size_t record;
    };

    std::string text_;
    std::vector<End> ends_;
};

/// Writes progress and diagnostic messages to a file descriptor, in their order and each in one
/// system call, so that they appear at once and whole.
class Diagnostics {
  public:
    /// The descriptor is not owned and stays open.
    explicit Diagnostics(int descriptor) : descriptor_(descriptor) {}
    /// Keeps the messages. Both are not owned and must outlive the object.
    Diagnostics(KeptMessages& kept, const RecordWriter& record) : kept_(&kept), record_(&record) {}

    /// Writes the parts, texts and decimal integers, one after another; a line end is a part too.
    template <class... Parts>
    void say(const Parts&... parts) {
        Message message;
        message.add(parts...);
        put(message.view());
    }

    /// Writes a message that is put together.
    void put(std::string_view message) {
        if (kept_ == nullptr && thread_ == nullptr) {
            writeMessage(descriptor_, message);
        } else {
            putElsewhere(message);
        }
    }

    /// Has messages written by a thread from here on: for when they come faster than the system
    /// takes them. Does nothing where that is not possible, or where the order of messages and
    /// record could be seen because both go to the same file.
    void useThread();
    /// Waits until the thread has written the last; so does the destructor.
    void endThread() { thread_.reset(); }

  private:
    void putElsewhere(std::string_view message);

    int descriptor_ = -1;
    KeptMessages* kept_ = nullptr;          ///< in place of the descriptor
    const RecordWriter* record_ = nullptr;  ///< whose size is kept with each message
    std::unique_ptr<MessageThread> thread_;
};
