#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "converter/MessageSink.h"

/// Every line that a run can say, one function each, in the order of the README's table.
class Messages {
  public:
    /// The sink is not owned and must outlive the object. `longestPath` is the length of the
    /// longest path that `setFile` will be given: with room for that, running out of memory can
    /// be told when there is none left. Throws std::bad_alloc.
    Messages(MessageSink& sink, std::size_t longestPath);

    /// The file that messages tell of from now on, as on the command line; not owned.
    void setFile(const char* path) { path_ = path; }

    /// Progress: a file's configurations, modulo 256.
    void configurations(std::uint8_t count);
    /// Progress: a vector was read.
    void vector(std::uint8_t band, int detector, std::int16_t pixels, std::string_view name);

    /// A later file has another root element than the first.
    void fileTypeMismatch(std::string_view name);
    /// A date of the first file's header can't be read. These three have no line end: required.
    void creationTimeInvalid(std::string_view text);
    void startTimeInvalid(std::string_view text);
    void stopTimeInvalid(std::string_view text);

    // These end the run; they return what the sink returns, whether it goes on all the same.

    /// A later file belongs to another NUC table.
    bool nucTableMismatch(std::int16_t id);
    /// A vector has not as many values as its detector pixels.
    bool vectorLength(long count, std::string_view name, std::int16_t pixels, int detector);
    /// A vector belongs to a detector that the record has no place for.
    bool detectorOutside(int detector);
    /// A pixel count that the record can't hold.
    bool pixelsOutside(long pixels, int detector);

    /// The run ends: the output takes no more, for the reason that the system tells.
    void cannotWrite(std::string_view reason);
    /// The run ends: there is no memory for a file or its vectors. Takes none itself.
    void outOfMemory();

  private:
    template <class... Parts>
    std::string_view line(const Parts&... parts);
    template <class... Parts>
    void say(const Parts&... parts);
    template <class... Parts>
    bool end(const Parts&... parts);

    MessageSink& sink_;
    const char* path_ = "";
    std::string line_;  ///< the message that is being put together; its memory is kept
};
