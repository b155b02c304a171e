#pragma once

#include <string_view>

/// Takes what a run says, one message after another.
class MessageSink {
  public:
    MessageSink() = default;
    MessageSink(const MessageSink&) = delete;
    MessageSink& operator=(const MessageSink&) = delete;
    virtual ~MessageSink() = default;

    /// Takes a message, which may be gone after the call.
    virtual void say(std::string_view message) = 0;

    /// Takes the message of an inconsistency, for which the run ends. Returns whether it is to go
    /// on all the same, with the next element: so that one who only checks files meets those
    /// behind it as well. What is written to the record from then on has no meaning.
    virtual bool end(std::string_view message) {
        say(message);
        return false;
    }
};
