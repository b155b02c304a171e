#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <vector>

#include "record/Layout.h"
#include "record/RecordReader.h"
#include "tools/eqrecord/Selection.h"

namespace eqrecord {

/// How a record is dumped, beside the format.
struct DumpOptions {
    bool leavesNothingOut = false;
    bool writesBits = false;  ///< for values
    std::string nan;          ///< what stands for NaN in CSV
};

/// A configuration of which something is dumped. It belongs to the reading, or, as the broken one
/// of a record that is incomplete, to the outcome.
struct DumpedConfiguration {
    const record::Configuration* configuration = nullptr;
    std::size_t number = 0;  ///< in its file, from 1
    /// The fields from this one on are not there; of the vectors, those that are whole.
    int firstMissingField = static_cast<int>(record::fields.size()) + 1;
    int wholeVectors = record::kindCount * record::detectorCount;

    bool isBroken() const { return !has(17); }
    bool has(int field) const { return field < firstMissingField; }
    /// Whether one of its vectors is there.
    bool hasKind(int kind) const { return kind * record::detectorCount < wholeVectors; }
};

/// A file of which something is dumped, and its configurations.
struct DumpedFile {
    const record::File* file = nullptr;
    std::size_t number = 0;  ///< from 1
    std::vector<DumpedConfiguration> configurations;
};

/// What is dumped of a record: what is selected and there.
class DumpSource {
  public:
    /// The arguments are not owned. Throws companion::UsageError when the selection leaves nothing
    /// of a record that has something.
    DumpSource(record::RecordReader& reader, const record::Reading& reading,
               const Selection& selection);

    record::RecordReader& reader() { return reader_; }
    const record::Reading& reading() const { return reading_; }
    const Selection& selection() const { return selection_; }
    const std::vector<DumpedFile>& files() const { return files_; }
    /// Whether the record ends in one of its fields.
    bool isIncomplete() const { return reader_.outcome().state == record::State::incomplete; }

    /// Whether the vector of a kind, 0 to 3, and a detector, 1 to 12, is dumped.
    bool hasVector(const DumpedConfiguration& configuration, int kind, int detector) const;
    /// Reads what is selected of a vector into `values`, and returns it. Throws std::runtime_error
    /// when the record has become shorter.
    std::span<const double> read(const DumpedConfiguration& configuration, int kind, int detector,
                                 std::vector<double>& values);

  private:
    DumpedFile chosenOf(const record::File& file, std::size_t number) const;

    record::RecordReader& reader_;
    const record::Reading& reading_;
    const Selection& selection_;
    std::vector<DumpedFile> files_;
};

}  // namespace eqrecord
