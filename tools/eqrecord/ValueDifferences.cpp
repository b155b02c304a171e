// Records that are compared are mostly the same in most of their values, and those are found by
// comparing memory. Fill values that both have are not counted: of 12 detectors that are written,
// often two have values.

#include "tools/eqrecord/ValueDifferences.h"

#include <bit>
#include <cmath>
#include <cstring>

#include "record/Layout.h"

namespace eqrecord {

namespace {

constexpr auto fillBits = std::bit_cast<std::uint64_t>(record::fillValue);

std::size_t countValues(std::span<const double> values) {
    std::size_t fills = 0;
    for (const double value : values) {
        fills += std::bit_cast<std::uint64_t>(value) == fillBits ? 1U : 0U;
    }
    return values.size() - fills;
}

void takeGreater(std::optional<GreatestDistance>& greatest, double distance,
                 const ValuePair& pair) {
    if (!greatest || distance > greatest->distance) {
        greatest = {distance, pair};
    }
}

}  // namespace

void ValueDifferences::compare(int detector, std::size_t firstPixel, std::span<const double> a,
                               std::span<const double> b) {
    // The first clause of areEqual for all of them at once.
    if (a.empty() || std::memcmp(a.data(), b.data(), a.size_bytes()) == 0) {
        compared_ += countValues(a);
        return;
    }
    for (std::size_t i = 0; i < a.size(); ++i) {
        const bool areFill = std::bit_cast<std::uint64_t>(a[i]) == fillBits &&
                             std::bit_cast<std::uint64_t>(b[i]) == fillBits;
        compared_ += areFill ? 0U : 1U;
        if (!areEqual(a[i], b[i], *tolerance_)) {
            add({static_cast<std::uint16_t>(detector), static_cast<std::uint16_t>(firstPixel + i),
                 a[i], b[i]});
        }
    }
}

void ValueDifferences::add(const ValuePair& pair) {
    ++differing_;
    if (pairs_.size() < mostPairs_) {
        pairs_.push_back(pair);
    }
    // A NaN is at no distance from anything; it is counted apart, so that a difference of 0 in all
    // else does not look like one.
    const bool isNanInA = std::isnan(pair.a);
    const bool isNanInB = std::isnan(pair.b);
    if (isNanInA || isNanInB) {
        ++(isNanInA && isNanInB ? nanOfOtherBits_ : isNanInA ? nanOnlyInA_ : nanOnlyInB_);
        return;
    }
    takeGreater(greatest_, distanceOf(pair.a, pair.b), pair);
    takeGreater(greatestRelative_, relativeDistanceOf(pair.a, pair.b), pair);
}

}  // namespace eqrecord
