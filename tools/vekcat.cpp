// Writes named streams to standard output, one after another:
//
//     vekcat NAME[::DRIVER[:OPTIONS]]...
//
// "-" is standard input. The others are written although one fails. Shows how the stream library is
// called: the input server opens a name, and the change of the offset tells how much a read has
// brought.

#include <array>
#include <cstdio>
#include <memory>
#include <new>
#include <ostream>
#include <string>

#include "base/Exception.h"
#include "base/InputServer.h"
#include "lint/Printable.h"
#include "tools/companion/Options.h"
#include "tools/companion/OutputFile.h"
#include "tools/companion/Program.h"

namespace {

using vek::InputServer;
using vek::InputStream;

constexpr const char* programName = "vekcat";

constexpr const char* version = "vekcat " EQCONVERT_VERSION "\n";

constexpr const char* help =
    "Usage: vekcat NAME[::DRIVER[:OPTIONS]]...\n"
    "\n"
    "Writes named streams to standard output, one after another: files, pipes, - for\n"
    "standard input, and patterns, whose files are chained.\n"
    "\n"
    "Drivers:\n"
    "  buffer[:KB]               Read through a window of 2 or KB kilobytes, 0 for the\n"
    "                            whole file; the usual one\n"
    "  basic, fstream            Read through stdio, through a standard file stream\n"
    "  memory                    Read the whole file into memory\n"
    "  multi[:DRIVER[:OPTIONS]]  Read all files of a pattern as one stream, by DRIVER\n"
    "  bmulti[:KB]               The same, by buffer\n"
    "\n"
    "Other:\n"
    "  --help                    Print this\n"
    "  --version                 Print the version\n"
    "\n"
    "Status 0: all streams are written; 2: trouble. A stream that can't be read is left\n"
    "out or ends early, and the others are written all the same.\n"
    "\n"
    "Examples:\n"
    "  vekcat './samples/*.xml' | sha256sum      all files as one stream\n"
    "  gzip -dc set.gz | vekcat head.bin -       a file, then a pipe\n";

/// Opens what an argument names; null when its driver is unknown or refuses the options.
std::unique_ptr<InputStream> open(const std::string& argument) {
    const InputServer& server = *InputServer::getInstance();
    constexpr auto order = InputStream::BYTE_ORDER_NATIVE;
    if (argument != "-" && !argument.starts_with("-::")) {
        return std::unique_ptr<InputStream>(server.getFile(argument.c_str(), order));
    }
    // The server splits names; standard input has none.
    const std::string spec = argument.substr(argument == "-" ? 1 : 3);
    const std::size_t colon = spec.find(':');
    const std::string driver = spec.substr(0, colon);
    const std::string options = colon == std::string::npos ? "" : spec.substr(colon + 1);
    return std::unique_ptr<InputStream>(
        server.getFile(nullptr, order, driver.c_str(), options.c_str()));
}

/// Copies a stream to its end; false when a read failed.
bool copy(InputStream& stream, std::ostream& output) {
    static std::array<char, 1 << 16> buffer;
    while (true) {
        const long before = stream.offset();
        stream.bufread(buffer.data(), buffer.size());
        const long got = stream.offset() - before;
        if (got <= 0) {
            return !stream.readFailed();
        }
        output.write(buffer.data(), got).flush();
    }
}

bool complain(const std::string& argument, const char* text) {
    std::string name = "an input";  // where there is no memory to make the argument printable
    try {
        name = lint::printable(argument);
    } catch (const std::bad_alloc&) {
    }
    companion::say(programName, name, text);
    return false;
}

/// Leaves the text out where there is no memory for a copy of it.
bool complain(const vek::Exception& error) {
    std::string text;
    try {
        text = lint::printable(error.msg().view());
    } catch (const std::bad_alloc&) {
    }
    std::fprintf(stderr, "vekcat: %s: %s: %s\n", error.family(), error.title(), text.c_str());
    return false;
}

/// Writes the stream that an argument names; false, with a message, when it fails.
bool writeStream(const std::string& argument, std::ostream& output) {
    try {
        const auto stream = open(argument);
        if (!stream) {
            return complain(argument, ": no such driver, or it refuses the options");
        }
        return copy(*stream, output) || complain(argument, ": read error");
    } catch (const vek::Exception& error) {
        return complain(error);
    } catch (const std::bad_alloc&) {
        return complain(argument, ": out of memory");
    }
}

int runVekcat(int argc, char** argv) {
    const auto names = companion::readOperands(argc, argv, help, version);
    if (!names) {
        return companion::nothingFound;
    }
    if (names->empty()) {
        throw companion::UsageError("no NAME is given");
    }
    companion::OutputFile output("-", false);
    bool isComplete = true;
    for (const std::string& name : *names) {
        isComplete = writeStream(name, output.stream()) && isComplete;
    }
    output.commit();
    return isComplete ? companion::nothingFound : companion::trouble;
}

}  // namespace

int main(int argc, char** argv) {
    return companion::runProgram(programName, [&] { return runVekcat(argc, argv); });
}
