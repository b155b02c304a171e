// How a run ends. An inconsistency of the files comes back from the converter as a status. Writing
// that fails and memory that runs out can come from anywhere, so they arrive here as exceptions and
// end the run in the same way, with a message and 255; what telling them takes, the output's buffer
// and room for the message, is there before the first file. Nothing else is caught: that
// too short a name of the first root element ends the process by a signal is required.

#include <malloc.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstring>
#include <new>
#include <span>

#include "base/Exception.h"
#include "converter/Converter.h"
#include "converter/Messages.h"
#include "converter/Output.h"

namespace {

using Paths = std::span<const char* const>;

/// Makes malloc keep the memory that a file or a configuration gives back for the next one: to
/// have the system clear it anew costs more than what is then done with it.
void keepFreedMemory() {
    ::mallopt(M_MMAP_THRESHOLD, 32 << 20);  // the largest that malloc accepts
    ::mallopt(M_TRIM_THRESHOLD, -1);
}

std::size_t longestOf(Paths paths) {
    std::size_t longest = 0;
    for (const char* const path : paths) {
        longest = std::max(longest, std::strlen(path));
    }
    return longest;
}

/// Runs the converter. Running out of memory stops the run like an inconsistency; any other
/// exception but that of the output is a fault that ends the process.
int convert(Paths paths, Output& output, Messages& messages) {
    try {
        return Converter(output, messages).run(paths);
    } catch (const std::bad_alloc&) {
        messages.outOfMemory();
        return Converter::stopped;
    }
}

/// Converts to the output and returns the exit status.
int run(Paths paths, Output& output) {
    Messages messages(output, longestOf(paths));
    try {
        const int status = convert(paths, output, messages);
        output.flush();
        return status;
    } catch (const vek::StdError& error) {
        messages.cannotWrite(error.title());
        return Converter::stopped;
    }
}

}  // namespace

/// Every argument is the path of a parameter file.
int main(int argc, char** argv) {
    // A closed pipe and a file that grows too large are to be reported as failed writes.
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    keepFreedMemory();
    static Output output(STDOUT_FILENO, STDERR_FILENO);  // too large for a small stack
    try {
        const auto count = static_cast<std::size_t>(std::max(argc - 1, 0));
        return run(Paths(argv + 1, count), output);
    } catch (const std::bad_alloc&) {  // none for a message, nor to tell that writing failed
        output.say("out of memory\n");
        return Converter::stopped;
    }
}
