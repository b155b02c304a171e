#pragma once

#include <string>

#include "record/RecordReader.h"
#include "tools/eqrecord/Arguments.h"

namespace eqrecord {

/// A record that a verb takes as a whole: opened, its reading decided. Neither can be copied.
class OpenRecord {
  public:
    /// Opens a file, or standard input for "-". Throws std::system_error when it can't be read,
    /// and std::runtime_error, with a message that names the path, when it is no record that has
    /// one reading and all its bytes, or, with --partial, not even the beginning of one.
    OpenRecord(std::string path, const Arguments& arguments);
    OpenRecord(const OpenRecord&) = delete;
    OpenRecord& operator=(const OpenRecord&) = delete;

    const std::string& path() const { return path_; }
    record::RecordReader& reader() { return reader_; }
    const record::Outcome& outcome() const { return reader_.outcome(); }
    const record::Reading& reading() const { return outcome().readings.front(); }
    /// Whether the record ends in one of its fields, which only --partial lets through.
    bool isIncomplete() const { return outcome().state == record::State::incomplete; }

  private:
    std::string path_;
    record::RecordReader reader_;
};

}  // namespace eqrecord
