#pragma once

#include <string_view>

namespace record {

/// Takes the bytes of a record one piece after another: a file, a buffer, a count.
class Sink {
  public:
    Sink() = default;
    Sink(const Sink&) = delete;
    Sink& operator=(const Sink&) = delete;
    virtual ~Sink() = default;

    /// Takes the next bytes, which may be gone after the call. What is thrown when it can't is up
    /// to the sink, and passes through the writer.
    virtual void write(std::string_view bytes) = 0;
};

}  // namespace record
