#pragma once

#include <functional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace companion {

/// How these programs end.
enum ExitStatus : int {
    nothingFound = 0,
    somethingFound = 1,
    trouble = 2,  ///< usage, an input or output that fails, no memory
};

/// A command line that is wrong. The message is one line without a full stop.
class UsageError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// Tells `text` and `more` on standard error as "NAME: TEXT", in one piece, as others may write
/// there too, and without taking memory.
void say(std::string_view name, std::string_view text, std::string_view more = {});

/// Writes `text` to standard output and returns `nothingFound`. Throws std::system_error.
int print(std::string_view text);

/// Runs the whole of a program and returns its exit status. What it throws is told on standard
/// error as "NAME: TEXT", made printable, and gives `trouble`; a pipe whose reader has gone ends
/// the process by its signal, or without a word.
int runProgram(const char* name, const std::function<int()>& program);

}  // namespace companion
