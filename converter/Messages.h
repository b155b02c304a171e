#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "converter/Output.h"

/// Every line that a run can say, one function each, in the order of the README's table.
class Messages {
  public:
    /// The output is not owned and must outlive the object. `longestPath` is the length of the
    /// longest path that `setFile` will be given: with room for that, running out of memory can
    /// be told when there is none left. Throws std::bad_alloc.
    Messages(Output& output, std::size_t longestPath);

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

    /// The run ends: a later file belongs to another NUC table.
    void nucTableMismatch(std::int16_t id);
    /// The run ends: a vector has not as many values as its detector pixels.
    void vectorLength(long count, std::string_view name, std::int16_t pixels, int detector);
    /// The run ends: a vector belongs to a detector that the record has no place for.
    void detectorOutside(int detector);
    /// The run ends: a pixel count that the record can't hold.
    void pixelsOutside(long pixels, int detector);
    /// The run ends: the output takes no more, for the reason that the system tells.
    void cannotWrite(std::string_view reason);
    /// The run ends: there is no memory for a file or its vectors. Takes none itself.
    void outOfMemory();

  private:
    template <class... Parts>
    void say(const Parts&... parts);

    Output& output_;
    const char* path_ = "";
    std::string line_;  ///< the message that is being put together; its memory is kept
};
