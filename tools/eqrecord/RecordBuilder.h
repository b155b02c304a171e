#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "record/NamelessFile.h"
#include "record/Reading.h"
#include "record/Sink.h"

namespace eqrecord {

/// Puts a record together: its parts are begun, filled and ended in their order, their fields in
/// any order. Only the vectors of one configuration are in memory. What ends a part throws Refusal
/// when a record can't hold it.
class RecordBuilder {
  public:
    /// The most values of a vector.
    static constexpr std::size_t mostPixels = 32767;

    /// What is put together; the offsets of the vectors are those in a file of their own.
    record::Reading& reading() { return reading_; }
    record::File& file() { return reading_.files.back(); }
    record::Configuration& configuration() { return file().configurations.back(); }
    record::ByteOrder order() const { return order_; }
    void setOrder(record::ByteOrder order) { order_ = order; }

    void beginFile();
    void beginConfiguration();
    /// The next vector of a kind, from 0 to 3, of the configuration: empty, to be filled.
    std::vector<double>& addVector(int kind);
    /// A vector of fill values instead, as many as needed.
    void addFill(int kind);
    void endKind(int kind);
    void endConfiguration();
    void endFile();
    void end() const;

    /// Writes the record, once it has ended. Throws std::runtime_error when the vectors can't be
    /// read back, and what the sink throws.
    void write(record::Sink& sink);

  private:
    struct Vector {
        std::vector<double> values;
        bool isFill = false;
    };

    Vector& add(int kind);
    void checkVectors() const;
    void keepKind(std::size_t kind);

    record::Reading reading_;
    record::ByteOrder order_ = record::machineOrder;
    bool needsNucTable_ = true;  ///< the next file
    /// Of the configuration: vectors by kind and detector, and how many there are of each kind.
    std::array<Vector, static_cast<std::size_t>(record::kindCount* record::detectorCount)> vectors_;
    std::array<std::size_t, record::kindNames.size()> counts_{};
    std::vector<double> kept_;  ///< a kind, as it is kept
    record::NamelessFile file_;
};

}  // namespace eqrecord
