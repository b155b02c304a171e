#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "record/ByteSource.h"
#include "record/Reading.h"

namespace record {

/// Reads a record: what it consists of at once, vectors when they are asked for.
class RecordReader {
  public:
    /// Opens a file, or standard input for "-". Without an order both are tried. Throws
    /// std::system_error when it can't be read; a file that is no record is an outcome.
    explicit RecordReader(const std::string& path, std::optional<ByteOrder> order = std::nullopt);
    /// The same for bytes in memory.
    static RecordReader ofBytes(std::string_view bytes,
                                std::optional<ByteOrder> order = std::nullopt) {
        return RecordReader(bytes, order);
    }
    RecordReader(const RecordReader&) = delete;
    RecordReader& operator=(const RecordReader&) = delete;

    const Outcome& outcome() const { return outcome_; }
    /// Makes one of an ambiguous record's readings, counted from 1, the only one, and the outcome
    /// what it then is. Requires: 1 <= number <= outcome().readings.size().
    void choose(std::size_t number);
    std::uint64_t size() const { return bytes_.size(); }
    /// At most 4096 bytes, fewer at the end; valid until the next call.
    std::string_view view(std::uint64_t offset, std::size_t length) {
        return bytes_.view(offset, length);
    }

    /// Reads the vector of a kind, 0 to 3, and a detector, 1 to 12, of a configuration into the
    /// first P of the values, of which there must be so many; every bit is kept. Throws
    /// std::runtime_error when the record has not so many bytes.
    void readVector(const Configuration& configuration, int kind, int detector,
                    std::span<double> values) {
        readVectors(configuration, kind * detectorCount + detector - 1, 1, values);
    }
    /// The same for all detectors of a kind, P values each.
    void readKind(const Configuration& configuration, int kind, std::span<double> values) {
        readVectors(configuration, kind * detectorCount, detectorCount, values);
    }

  private:
    RecordReader(std::string_view bytes, std::optional<ByteOrder> order);
    void read(std::optional<ByteOrder> order);
    Outcome outcome(std::optional<ByteOrder> order, bool takesNul);
    /// Decides between the outcomes of both orders.
    Outcome outcomeOfBoth(bool takesNul);
    long plausibility(const Outcome& outcome);
    long plausibility(const Configuration& configuration, ByteOrder order);
    void readVectors(const Configuration& configuration, int first, int count,
                     std::span<double> values);

    ByteSource bytes_;
    Outcome outcome_;
};

}  // namespace record
