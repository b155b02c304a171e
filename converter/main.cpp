#include <unistd.h>

#include <csignal>
#include <new>
#include <string_view>

#include "base/Exception.h"
#include "converter/Converter.h"
#include "converter/Diagnostics.h"
#include "converter/HeapTuning.h"
#include "converter/RecordWriter.h"

namespace {

/// What is said when memory runs out: too short to need any.
constexpr std::string_view outOfMemory = "out of memory\n";

/// Runs the converter. Running out of memory stops the run like an inconsistency; any other
/// exception is a fault that ends the process.
int convert(int fileCount, const char* const* paths, RecordWriter& record,
            Diagnostics& diagnostics) {
    try {
        return Converter(record, diagnostics).run(fileCount, paths);
    } catch (const std::bad_alloc&) {
        diagnostics.say(outOfMemory);
        return Converter::stopped;
    }
}

/// Converts to standard output and returns the exit status.
int run(int fileCount, const char* const* paths, Diagnostics& diagnostics) {
    try {
        RecordWriter record(STDOUT_FILENO);
        const int status = convert(fileCount, paths, record, diagnostics);
        record.flush();
        return status;
    } catch (const vek::StdError& error) {
        diagnostics.say("cannot write the record: ", error.title(), "\n");
        return Converter::stopped;
    }
}

}  // namespace

/// Every argument is the path of a parameter file.
int main(int argc, char** argv) {
    // A closed pipe and a file that grows too large are to be reported as failed writes.
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    heap::keepFreedMemory();
    Diagnostics diagnostics(STDERR_FILENO);
    try {
        return run(argc - 1, argv + 1, diagnostics);
    } catch (const std::bad_alloc&) {  // nor is there any to tell that writing failed
        diagnostics.say(outOfMemory);
        return Converter::stopped;
    }
}
