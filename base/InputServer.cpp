// A stream is opened in two steps: getFile() finds out which driver with which options is meant,
// from its arguments or from what stands behind "::" in the name, and whether the name is one file.
// Then the driver itself opens a file; anything else is a pattern and goes to the first driver,
// with the chosen one as its option, and comes back from there once for each file.

#include "base/InputServer.h"

#include <memory>

#include "base/FileUtils.h"

namespace vek {

namespace {

const char* const fallbackDriver = "buffer";
/// Of the driver that is given every pattern.
constexpr long patternDriver = 0;

const char* textOrNull(const String& text) {
    return text.isNull() ? nullptr : text.c_str();
}

}  // namespace

InputServer::InputServer() : defaultDriver_(fallbackDriver) {}

InputServer& InputServer::addDriver(const char* name, Driver driver, const char* options) {
    if (name == nullptr || *name == '\0' || driver == nullptr) {
        return *this;
    }
    drivers_.append(std::make_unique<Entry>(Entry{String(name), String(options), driver}));
    return *this;
}

void InputServer::setDriverDefault(const char* name) {
    if (name != nullptr) {
        defaultDriver_ = name;
    }
}

InputServer& InputServer::setDriverOption(const char* options, const char* driver) {
    const long found = findDriver(driver == nullptr ? defaultDriver_ : String(driver));
    if (options != nullptr && found >= 0 && !drivers_[found]->options.isNull()) {
        drivers_[found]->options = options;
    }
    return *this;
}

/// The newest driver of that name, -1 for none.
long InputServer::findDriver(const String& name) const {
    long index = drivers_.count() - 1;
    while (index >= 0 && drivers_[index]->name.view() != name.view()) {
        --index;
    }
    return index;
}

InputStream* InputServer::getFile(const char* name, InputStream::ByteOrder order,
                                  const char* driver, const char* options) const {
    String path(name);
    String driverName(driver);
    String driverOptions(options);
    if (driverName.length() == 0) {
        // A name that begins with "::" is one, whatever follows.
        const int split = path.find("::");
        if (split > 0) {
            const String choice = path.substr(split + 2, -1);
            driverName = choice.word(0, ':');
            driverOptions = choice.words(1, -1, ':');
            path = path.substr(0, split - 1);
        }
    }
    if (driverOptions.length() == 0) {
        driverOptions.setNull();
    }
    if (driverName.length() == 0) {
        // Options are those of a driver: without one they are nobody's.
        driverName = defaultDriver_;
        driverOptions.setNull();
    }
    const bool isOneFile = path.isNull() || FileUtils::checkFile(path.c_str());
    return isOneFile || driverName.match("*multi*")
               ? openFile(textOrNull(path), order, driverName, driverOptions)
               : openPattern(path.c_str(), order, driverName, driverOptions);
}

/// Opens one file, or a pattern with a driver that takes patterns itself.
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
    const Entry& entry = *drivers_[found];
    if (chosenOptions == nullptr) {
        chosenOptions = textOrNull(entry.options);
    } else if (entry.options.isNull()) {
        return nullptr;
    }
    return entry.driver(name, order, chosenOptions);
}

/// Gives a pattern to the first driver, which opens the members with `driver` and `options`.
InputStream* InputServer::openPattern(const char* name, InputStream::ByteOrder order,
                                      const String& driver, const String& options) const {
    const Entry& entry = *drivers_[patternDriver];
    if (driver.length() == 0) {  // a default driver without a name
        return entry.driver(name, order, entry.options.c_str());
    }
    String members = driver;
    if (!options.isNull()) {
        members += ":";
        members += options;
    }
    return entry.driver(name, order, members.c_str());
}

}  // namespace vek
