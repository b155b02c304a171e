#pragma once

#include "base/InputStream.h"
#include "base/ObjAppendList.h"

namespace vek {

/// The registry of input drivers, by which streams are opened under names that may choose their
/// driver: "data.bin::memory", "images/*.raw::buffer:16". Names that are no existing files are
/// taken as patterns. One for the process.
///
/// - multi: all files that the name matches, as one; its options are the driver of the members and
///   that driver's options, "buffer:2" by default
/// - basic: through stdio
/// - fstream: through a standard file stream
/// - memory: the whole file in memory
/// - buffer: through a window of as many kilobytes as the option says, 2 by default, 0 for the
///   whole file; a minus sign makes no difference
/// - bmulti: as buffer, and patterns are one stream too
class InputServer {
  public:
    /// Opens `name` (null: standard input, but for "fstream" and "multi") with `options`, which may
    /// be null; the stream belongs to the caller. Returns null when it does not accept the options;
    /// throws StdError as the stream does.
    using Driver = InputStream* (*)(const char* name, InputStream::ByteOrder order,
                                    const char* options);

    /// The only instance, made at the first call and never destroyed; it has the standard drivers
    /// (InputDrivers.cpp), among which "multi" is the first: that one is given every pattern.
    static InputServer* getInstance();

    InputServer(const InputServer&) = delete;
    InputServer& operator=(const InputServer&) = delete;

    /// Adds a driver; `options` are its default options, null for a driver that takes none. A later
    /// driver of a name hides an earlier one. Ignored without a name or driver.
    InputServer& addDriver(const char* name, Driver driver, const char* options);

    /// Names the driver for names that choose none; null changes nothing.
    void setDriverDefault(const char* name);
    /// The name of that driver.
    const char* getDriverDefault() const { return defaultDriver_.c_str(); }

    /// Replaces the default options of `driver` (null: of the default driver). Ignored when they
    /// are null, when there is no such driver, and for one that takes no options.
    InputServer& setDriverOption(const char* options, const char* driver);

    /// Opens a stream, which belongs to the caller.
    ///
    /// Without a `driver` the name may end in "::" and a driver, then ":" and its options. A null
    /// name is standard input; a name that is no regular file or pipe is a pattern, whose members
    /// are opened with the driver unless its name contains "multi". A default driver
    /// that does not exist is replaced by "buffer".
    ///
    /// Returns null for an unknown driver and when it refuses the options; throws StdError when the
    /// stream can't be opened.
    InputStream* getFile(const char* name, InputStream::ByteOrder order,
                         const char* driver = nullptr, const char* options = nullptr) const;

  private:
    struct Entry {
        String name;
        String options;  ///< the default ones; null for a driver that takes none
        Driver driver;
    };

    InputServer();

    long findDriver(const String& name) const;
    InputStream* openFile(const char* name, InputStream::ByteOrder order, const String& driver,
                          const String& options) const;
    InputStream* openPattern(const char* name, InputStream::ByteOrder order, const String& driver,
                             const String& options) const;

    ObjAppendListP<Entry> drivers_;  ///< in the order of adding
    String defaultDriver_;

    static InputServer* input_srv;
};

}  // namespace vek
