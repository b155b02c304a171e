#pragma once

#include <array>
#include <cstddef>
#include <string_view>

#include "converter/MessageSink.h"
#include "record/Sink.h"

/// Where the results of a run go: two descriptors, one for the record and one for the messages.
///
/// The record is buffered; a message is handed to the system whole and at once, before anything
/// that comes behind it can be. So what a run has told of when it is killed it has done, but
/// part of the record may be missing.
class Output : public record::Sink, public MessageSink {
  public:
    /// The descriptors are not owned and stay open. Signals of failing writes (SIGPIPE, SIGXFSZ)
    /// have to be ignored.
    Output(int record, int messages) : record_(record), messages_(messages) {}

    /// Takes the next bytes of the record. Throws vek::StdError, with the message "cannot write the
    /// record" and the system's error number, when the descriptor takes no more; what was written
    /// before stays.
    void write(std::string_view bytes) override;
    /// Hands everything that is buffered to the system; throws as `write` does. What is not flushed
    /// is lost with the object.
    void flush();

    /// Writes a message, in one system call if that takes it whole. A descriptor that is full for
    /// now is waited for; what can't be written at all is dropped: there is nobody left to tell.
    void say(std::string_view message) override;

  private:
    void writeRecord(std::string_view bytes) const;

    int record_;
    int messages_;
    std::size_t used_ = 0;
    /// Part of the object, so that there is no memory to run out of.
    std::array<char, std::size_t{1} << 16> buffer_;
};
