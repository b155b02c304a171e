#pragma once

#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "record/RecordReader.h"

namespace eqrecord {

inline constexpr const char* programName = "eqrecord";

/// What a verb is to do once the command line is known; returns the exit status.
using Work = std::function<int()>;

/// What all verbs that read records take.
struct Arguments {
    std::vector<std::string> records;
    std::string format = "text";
    std::string netcdfKind = "4";
    std::string byteOrder = "auto";
    std::size_t reading = 0;    ///< from 1; 0 when none is chosen
    bool takesPartial = false;  ///< also what is whole of a record that isn't
    std::string output = "-";
    bool overwrites = false;  ///< an output that is there

    /// The record of a verb that takes one. Throws companion::UsageError when none is given.
    const std::string& record() const;
    /// The order that is asked for, if one is.
    std::optional<record::ByteOrder> order() const;
};

/// Tells on standard error why a record can't be read, and returns the status of that.
int sayUnreadable(const std::runtime_error& error);

/// Runs `tell` on each record, and returns the worst of its statuses; a record that can't be read,
/// or does not have the reading that was chosen, is told on standard error, and the next one's turn
/// comes.
int forEachRecord(const Arguments& arguments,
                  const std::function<int(const std::string& path, record::RecordReader&)>& tell);

/// Makes the reading that was chosen, if one was, the only one. Throws std::runtime_error, with a
/// message that names the path, when it isn't there.
void chooseReading(const Arguments& arguments, const std::string& path,
                   record::RecordReader& reader);

}  // namespace eqrecord
