#pragma once

#include <bit>
#include <cmath>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "record/ByteOrder.h"
#include "record/Layout.h"

/// What a reader finds in a record: a plain description, with the vectors left where they are.
/// Offsets count from the record's first byte; fields are cited by their number in Layout.h.
namespace record {

/// Whether a value may well have been written by people: neither tiny nor huge, as most doubles
/// are.
inline bool isPlausible(double value) {
    constexpr double least = 1e-12;
    constexpr double greatest = 1e12;
    const double size = std::fabs(value);
    return size == 0 || (least <= size && size <= greatest);
}

/// Fields 13 to 17 of one configuration.
struct Configuration {
    std::uint64_t offset = 0;  ///< of field 13
    std::string label;
    std::uint64_t epsilonBits = 0;  ///< of the double
    std::int16_t pixels = 0;        ///< P, 0 or more
    std::uint64_t vectorsOffset = 0;

    double epsilon() const { return std::bit_cast<double>(epsilonBits); }
    std::uint64_t vectorLength() const { return static_cast<std::uint64_t>(pixels) * 8; }
    std::uint64_t vectorsLength() const { return vectorLength() * kindCount * detectorCount; }
};

/// Fields 8 to 12 of one file, and its configurations.
struct File {
    std::uint64_t offset = 0;  ///< of its first field, 8 or 9
    std::optional<std::int16_t> nucTableId;
    std::uint8_t band = 0;
    std::string name;
    std::uint8_t counted = 0;  ///< field 12
    std::vector<Configuration> configurations;
};

/// How the configurations that are there compare to those that field 12 counts; of a reading, the
/// worst of its files. Better ones come first.
enum class Counts {
    kept,
    modulo256,      ///< 256 more than counted, or a multiple of that
    fewer,          ///< fewer than counted
    fewerThanMore,  ///< fewer than counted and a multiple of 256
};

/// One way of reading a record, or as much of it as is whole.
struct Reading {
    std::string fileType;
    std::string creationDate;
    std::string applicabilityStart;
    std::string applicabilityEnd;
    std::uint64_t filesCounted = 0;  ///< field 7; 0 when the record ends before it
    std::vector<File> files;         ///< those whose fields 9 to 12 are whole
    Counts counts = Counts::kept;    ///< of files that are whole
    std::uint64_t end = 0;           ///< the offset behind what was read

    /// Whether a file has fewer configurations than it counts.
    bool isShort() const { return counts > Counts::modulo256; }
};

enum class State {
    complete,
    fewerBlocks,  ///< complete with fewer configurations than counted: the run stopped, or damage
    ambiguous,    ///< there are several readings, none better than the other
    trailing,     ///< a whole record with more bytes behind it
    incomplete,   ///< the beginning of a record, which ends in a field
    damaged,      ///< no reading
};

/// Where a record that is not complete ends, or stops being one.
struct Ending {
    std::uint64_t offset = 0;  ///< of the field that is not whole, or of the bytes behind the end
    int field = 0;             ///< its number; 0 behind the last one
    std::uint64_t available = 0;    ///< bytes from there to the end of the input
    std::size_t file = 0;           ///< number, from 1, of the file that the field belongs to; or 0
    std::size_t configuration = 0;  ///< the same of the configuration in this file; or 0
    /// Fields of the broken configuration, those before `field`.
    std::optional<Configuration> partial;
    std::size_t wholeVectors = 0;  ///< of 48 that the broken configuration has
    bool isSecondRecord = false;   ///< the bytes behind the end begin as a record does
    bool isGivenUp = false;        ///< too many ways of reading were tried
};

struct Outcome {
    State state = State::damaged;
    ByteOrder order = machineOrder;
    /// False when nothing tells which order is the right one.
    bool isOrderCertain = true;
    /// All that are found of an ambiguous record, none of a damaged one, else one.
    std::vector<Reading> readings;
    Ending ending;  ///< of a record that is trailing, incomplete or damaged
};

}  // namespace record
