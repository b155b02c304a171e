#include <unistd.h>

#include <csignal>
#include <new>

#include "base/Exception.h"
#include "converter/Converter.h"
#include "converter/Diagnostics.h"
#include "converter/HeapTuning.h"
#include "converter/RecordWriter.h"

namespace {

/// Runs the converter. Running out of memory stops the run like an inconsistency; any other
/// exception is a fault that ends the process.
int convert(int fileCount, const char* const* paths, RecordWriter& record,
            Diagnostics& diagnostics) {
    try {
        return Converter(record, diagnostics).run(fileCount, paths);
    } catch (const std::bad_alloc&) {
        diagnostics.say("out of memory\n");
        return Converter::stopped;
    }
}

}  // namespace

/// Every argument is the path of a parameter file.
int main(int argc, char** argv) {
    // A closed pipe is to be reported as a failed write, not to kill the process.
    std::signal(SIGPIPE, SIG_IGN);
    heap::keepFreedMemory();
    Diagnostics diagnostics(STDERR_FILENO);
    try {
        RecordWriter record(STDOUT_FILENO);
        const int status = convert(argc - 1, argv + 1, record, diagnostics);
        record.flush();
        return status;
    } catch (const vek::StdError& error) {
        diagnostics.say("cannot write the record: ", error.title(), "\n");
        return Converter::stopped;
    }
}
