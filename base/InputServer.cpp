#include "base/InputServer.h"

#include <cerrno>
#include <cstdlib>
#include <memory>

#include "base/Exception.h"
#include "base/FileUtils.h"
#include "base/InputBStream.h"
#include "base/InputBasicFile.h"
#include "base/InputMultiFile.h"
#include "base/InputStreamStl.h"

namespace vek {

namespace {

using ByteOrder = InputStream::ByteOrder;

const char* const fallbackDriver = "buffer";
/// Of the driver that is given every pattern.
constexpr long patternDriver = 0;

/// The text up to the first ":" of what a name says of its driver, and what follows it, null for
/// nothing.
struct DriverSpec {
    String driver;
    String options;

    explicit DriverSpec(const String& text)
        : driver(text.word(0, ':')), options(text.words(1, -1, ':')) {
        if (options.length() == 0) {
            options.setNull();
        }
    }
};

const char* textOrNull(const String& text) {
    return text.isNull() ? nullptr : text.c_str();
}

String copyOf(const char* text) {
    return text == nullptr ? String() : String(text);
}

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

template <>
InputStream* getFile<InputBStream>(const char* name, ByteOrder order, const char* options) {
    const String number = copyOf(options);
    if (options != nullptr && !number.isInteger()) {
        return nullptr;
    }
    const unsigned long size = options == nullptr ? 0 : windowSize(number);
    const bool wholeFile = size == 0 || number[0] == '-';
    auto stream = std::make_unique<InputBStream>(name, order);
    stream->initFile(size, wholeFile);
    return stream.release();
}

template <>
InputStream* getFile<InputMultiFile>(const char* name, ByteOrder order, const char* options) {
    const DriverSpec members{copyOf(options)};
    auto stream = std::make_unique<InputMultiFile>(name, order);
    if (!stream->open(textOrNull(members.driver), textOrNull(members.options))) {
        return nullptr;
    }
    return stream.release();
}

}  // namespace

InputServer* InputServer::input_srv = nullptr;

InputServer* InputServer::getInstance() {
    if (input_srv == nullptr) {
        input_srv = new InputServer;
    }
    return input_srv;
}

InputServer::InputServer() : defaultDriver_(fallbackDriver) {
    addDriver("multi", vek::getFile<InputMultiFile>, "buffer:2");  // stays the first
    addDriver("basic", vek::getFile<InputBasicFile>, nullptr);
    addDriver("fstream", vek::getFile<InputFStream>, nullptr);
    addDriver("memory", vek::getFile<InputBStream>, nullptr);
    addDriver("buffer", vek::getFile<InputBStream>, "2");
    addDriver("bmulti", vek::getFile<InputBStream>, "2");
}

InputServer& InputServer::addDriver(const char* name, Driver driver, const char* options) {
    if (name == nullptr || *name == '\0' || driver == nullptr) {
        return *this;
    }
    auto newName = std::make_unique<String>(name);
    auto newOptions = std::make_unique<String>(options);
    names_.append(newName.get());
    static_cast<void>(newName.release());
    options_.append(newOptions.get());
    static_cast<void>(newOptions.release());
    drivers_.append(driver);
    return *this;
}

void InputServer::setDriverDefault(const char* name) {
    if (name != nullptr) {
        defaultDriver_ = name;
    }
}

InputServer& InputServer::setDriverOption(const char* options, const char* driver) {
    const long found = findDriver(driver == nullptr ? defaultDriver_ : String(driver));
    if (options != nullptr && found >= 0 && !options_[found]->isNull()) {
        *options_[found] = options;
    }
    return *this;
}

/// The newest driver of that name, -1 for none.
long InputServer::findDriver(const String& name) const {
    long index = drivers_.count() - 1;
    while (index >= 0 && names_[index]->view() != name.view()) {
        --index;
    }
    return index;
}

InputStream* InputServer::getFile(const char* name, InputStream::ByteOrder order,
                                  const char* driver, const char* options) const {
    String path = copyOf(name);
    String driverName = copyOf(driver);
    String driverOptions = copyOf(options);
    if (driverName.length() == 0) {
        const int split = path.find("::");
        if (split > 0) {
            const DriverSpec chosen(path.substr(split + 2, -1));
            driverName = chosen.driver;
            driverOptions = chosen.options;
            path = path.substr(0, split - 1);
        }
    }
    if (driverOptions.length() == 0) {
        driverOptions.setNull();
    }
    if (driverName.length() == 0) {
        driverName = defaultDriver_;
        driverOptions.setNull();
    }
    const bool isOneFile = path.isNull() || FileUtils::checkFile(path.c_str());
    return isOneFile || driverName.match("*multi*")
               ? openFile(textOrNull(path), order, driverName, driverOptions)
               : openPattern(path.c_str(), order, driverName, driverOptions);
}

InputStream* InputServer::openFile(const char* name, InputStream::ByteOrder order,
                                   const String& driver, const String& options) const {
    const char* chosenOptions = textOrNull(options);
    long found = findDriver(driver);
    if (found < 0 && driver.view() == defaultDriver_.view()) {
        found = findDriver(String(fallbackDriver));
        chosenOptions = nullptr;
    }
    if (found < 0) {
        return nullptr;
    }
    const String& defaultOptions = *options_[found];
    if (chosenOptions == nullptr) {
        chosenOptions = textOrNull(defaultOptions);
    } else if (defaultOptions.isNull()) {
        return nullptr;
    }
    return drivers_[found](name, order, chosenOptions);
}

InputStream* InputServer::openPattern(const char* name, InputStream::ByteOrder order,
                                      const String& driver, const String& options) const {
    if (driver.length() == 0) {
        return drivers_[patternDriver](name, order, options_[patternDriver]->c_str());
    }
    String members = driver;
    if (!options.isNull()) {
        members += ":";
        members += options;
    }
    return drivers_[patternDriver](name, order, members.c_str());
}

}  // namespace vek
