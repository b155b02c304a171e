// The byte order is not in the record. Of the two, that counts in which there is a reading, the one
// of the better class if there are two. Otherwise the values decide: where P is 0 or has two equal
// bytes both orders give the same layout, and in a record that is not whole a wrong P can reach
// over all that is left. What people write, and the fill value, is hardly ever a number of usual
// size the wrong way round.
//
// The converter drops each NUL of its input, so a label has none. What is taken for a label by
// chance nearly always has: a P below 257, most epsilons and vectors do. Labels with NUL are
// therefore only tried when there is neither a reading without nor one before a second record.

#include "record/RecordReader.h"

#include <algorithm>
#include <utility>

#include "record/ReadingSearch.h"

namespace record {

namespace {

constexpr std::size_t judgedConfigurations = 64;
constexpr long valuePoints = 8;  // all values of what is not whole, held against the evidence
constexpr std::uint64_t judgedBytes = 512;  // at both ends of the vectors

constexpr ByteOrder otherOrder(ByteOrder order) {
    return order == ByteOrder::little ? ByteOrder::big : ByteOrder::little;
}

/// Of 0 there is nothing to be told.
long pointsOf(std::uint64_t bits) {
    const bool isFill = bits == std::bit_cast<std::uint64_t>(fillValue);
    return bits == 0 ? 0 : isFill || isPlausible(std::bit_cast<double>(bits)) ? 1 : -1;
}

long pointsOf(std::string_view bytes, ByteOrder order) {
    long points = 0;
    for (; bytes.size() >= sizeof(double); bytes.remove_prefix(sizeof(double))) {
        std::uint64_t bits = 0;
        bytes.copy(reinterpret_cast<char*>(&bits), sizeof bits);
        points += pointsOf(order == machineOrder ? bits : swapped(bits));
    }
    return points;
}

}  // namespace

RecordReader::RecordReader(const std::string& path, std::optional<ByteOrder> order) : bytes_(path) {
    read(order);
}

RecordReader::RecordReader(std::string_view bytes, std::optional<ByteOrder> order)
    : bytes_(ByteSource::ofBytes(bytes)) {
    read(order);
}

void RecordReader::read(std::optional<ByteOrder> order) {
    outcome_ = outcome(order, false);
    if (outcome_.state > State::ambiguous && !outcome_.ending.isSecondRecord) {
        outcome_ = outcome(order, true);
    }
}

Outcome RecordReader::outcome(std::optional<ByteOrder> order, bool takesNul) {
    return order ? ReadingSearch(bytes_, *order, takesNul).run() : outcomeOfBoth(takesNul);
}

void RecordReader::choose(std::size_t number) {
    std::vector<Reading>& readings = outcome_.readings;
    const auto chosen = readings.begin() + static_cast<std::ptrdiff_t>(number) - 1;
    readings.erase(chosen + 1, readings.end());
    readings.erase(readings.begin(), chosen);
    if (outcome_.state == State::ambiguous) {
        outcome_.state = readings.front().isShort() ? State::fewerBlocks : State::complete;
    }
}

Outcome RecordReader::outcomeOfBoth(bool takesNul) {
    ReadingSearch search(bytes_, machineOrder, takesNul);
    ReadingSearch otherSearch(bytes_, otherOrder(machineOrder), takesNul);
    Outcome result = search.run();
    Outcome other = otherSearch.run();
    // The smaller the better: first what is a reading, by its class, then what may have one.
    const auto rank = [](const Outcome& outcome) {
        return outcome.state <= State::ambiguous ? static_cast<int>(outcome.readings[0].counts)
               : outcome.ending.isGivenUp        ? 100
                                                 : 200;
    };
    long advantage = rank(other) - rank(result);
    if (advantage == 0) {
        advantage = plausibility(result) - plausibility(other);
        if (result.state > State::ambiguous) {
            advantage = std::clamp(advantage, -valuePoints, valuePoints) + search.evidence() -
                        otherSearch.evidence();
        }
    }
    // Texts are read without an order, and a file is the first that has something else.
    result.isOrderCertain =
        advantage != 0 || result.readings.empty() || result.readings[0].files.empty();
    if (advantage < 0) {
        result = std::move(other);
    }
    return result;
}

/// How much the values of an outcome, or of its first configurations if it has many, look like
/// those of its byte order.
long RecordReader::plausibility(const Outcome& outcome) {
    long points = 0;
    std::size_t judged = 0;
    for (const Reading& reading : outcome.readings) {
        for (const File& file : reading.files) {
            for (const Configuration& configuration : file.configurations) {
                if (++judged > judgedConfigurations) {
                    return points;
                }
                points += plausibility(configuration, outcome.order);
            }
        }
    }
    if (outcome.ending.partial) {
        points += plausibility(*outcome.ending.partial, outcome.order);
    }
    return points;
}

/// The configuration may be that in which the record ends, and have no vectors yet.
long RecordReader::plausibility(const Configuration& configuration, ByteOrder order) {
    long points = pointsOf(configuration.epsilonBits);
    const std::uint64_t length = configuration.vectorsLength();
    if (configuration.vectorsOffset == 0 || length == 0) {
        return points;
    }
    const std::uint64_t judged = std::min(length, judgedBytes);
    for (const std::uint64_t start : {std::uint64_t{0}, length - judged}) {
        points += pointsOf(
            bytes_.view(configuration.vectorsOffset + start, static_cast<std::size_t>(judged)),
            order);
    }
    return points;
}

/// Reads so many of the 48 vectors, from number `first` on, which counts from 0.
void RecordReader::readVectors(const Configuration& configuration, int first, int count,
                               std::span<double> values) {
    values = values.first(static_cast<std::size_t>(count) *
                          static_cast<std::size_t>(configuration.pixels));
    const auto before = static_cast<std::uint64_t>(first) * configuration.vectorLength();
    bytes_.read(configuration.vectorsOffset + before, reinterpret_cast<char*>(values.data()),
                values.size_bytes());
    if (outcome_.order != machineOrder) {
        for (double& value : values) {
            value = std::bit_cast<double>(swapped(std::bit_cast<std::uint64_t>(value)));
        }
    }
}

}  // namespace record
