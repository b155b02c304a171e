// The standard drivers, and with them the one instance of the input server. It is made here and not
// with the rest of the server: chains open their members through the server, and windows read
// chains, so that the server itself must know no stream. Whoever asks for the server, from below
// too, gets it with these drivers.

#include <cerrno>
#include <cstdlib>
#include <memory>

#include "base/FileUtils.h"
#include "base/InputBStream.h"
#include "base/InputBasicFile.h"
#include "base/InputMultiFile.h"
#include "base/InputServer.h"
#include "base/InputStreamStl.h"

namespace vek {

namespace {

using ByteOrder = InputStream::ByteOrder;

/// Opens a stream that takes no options. The name is checked here: not every class does.
template <class Stream>
InputStream* getFile(const char* name, ByteOrder order, const char* options) {
    if (options != nullptr) {
        return nullptr;
    }
    if (name == nullptr) {
        return new Stream(name, order);
    }
    return new Stream(FileUtils::pathNameCheck(name, nullptr).c_str(), order);
}

/// Bytes of a window of |N| kilobytes; more than there can be when N is too large a number.
unsigned long windowSize(const String& options) {
    const char* digits = options.c_str();
    digits += *digits == '+' || *digits == '-' ? 1 : 0;
    unsigned long size = 0;
    errno = 0;
    if (__builtin_mul_overflow(std::strtoul(digits, nullptr, 10), 1024UL, &size) || errno != 0) {
        return ~0UL;
    }
    return size;
}

/// Opens a window of the kilobytes that the option says.
template <>
InputStream* getFile<InputBStream>(const char* name, ByteOrder order, const char* options) {
    const String number(options);
    if (options != nullptr && !number.isInteger()) {
        return nullptr;
    }
    const unsigned long size = options == nullptr ? 0 : windowSize(number);
    const bool wholeFile = size == 0 || number[0] == '-';
    auto stream = std::make_unique<InputBStream>(name, order);
    stream->initFile(size, wholeFile);
    return stream.release();
}

/// Opens a chain; the option names the driver of its members and, behind a ":", what that one
/// takes.
template <>
InputStream* getFile<InputMultiFile>(const char* name, ByteOrder order, const char* options) {
    const String members(options);
    auto stream = std::make_unique<InputMultiFile>(name, order);
    const bool isOpen =
        stream->open(members.word(0, ':').c_str(), members.words(1, -1, ':').c_str());
    return isOpen ? stream.release() : nullptr;
}

}  // namespace

InputServer* InputServer::input_srv = nullptr;

InputServer* InputServer::getInstance() {
    if (input_srv == nullptr) {
        std::unique_ptr<InputServer> server(new InputServer);
        server->addDriver("multi", vek::getFile<InputMultiFile>, "buffer:2");  // stays the first
        server->addDriver("basic", vek::getFile<InputBasicFile>, nullptr);
        server->addDriver("fstream", vek::getFile<InputFStream>, nullptr);
        server->addDriver("memory", vek::getFile<InputBStream>, nullptr);
        server->addDriver("buffer", vek::getFile<InputBStream>, "2");
        server->addDriver("bmulti", vek::getFile<InputBStream>, "2");
        input_srv = server.release();
    }
    return input_srv;
}

}  // namespace vek
