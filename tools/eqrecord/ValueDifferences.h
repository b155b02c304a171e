#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "tools/eqrecord/Equality.h"

namespace eqrecord {

/// Two values that are not equal, and where they are.
struct ValuePair {
    std::uint16_t detector = 0;  ///< from 1
    std::uint16_t pixel = 0;     ///< from 1
    double a = 0;
    double b = 0;
};

/// The greatest of the distances, and the first pair that has it.
struct GreatestDistance {
    double distance = 0;
    ValuePair pair;
};

/// What is told of the values of one variable that two records have both.
class ValueDifferences {
  public:
    /// Keeps the first `mostPairs` that differ. The tolerance is not owned.
    ValueDifferences(const Tolerance& tolerance, std::size_t mostPairs)
        : tolerance_(&tolerance), mostPairs_(mostPairs) {}

    /// Compares values of one detector, the first of which are those of pixel `firstPixel`.
    /// Requires: as many of a as of b.
    void compare(int detector, std::size_t firstPixel, std::span<const double> a,
                 std::span<const double> b);

    /// Pairs without those of two fill values.
    std::size_t compared() const { return compared_; }
    /// Pairs that are not equal: those with a NaN on one side or of different bits, and all others.
    std::size_t differing() const { return differing_; }
    std::size_t nanOnlyInA() const { return nanOnlyInA_; }
    std::size_t nanOnlyInB() const { return nanOnlyInB_; }
    std::size_t nanOfOtherBits() const { return nanOfOtherBits_; }
    /// Of the pairs that differ and have no NaN; none if there is no such pair.
    const std::optional<GreatestDistance>& greatest() const { return greatest_; }
    const std::optional<GreatestDistance>& greatestRelative() const { return greatestRelative_; }
    /// The first that differ.
    const std::vector<ValuePair>& pairs() const { return pairs_; }

  private:
    void add(const ValuePair& pair);

    const Tolerance* tolerance_;
    std::size_t mostPairs_;
    std::size_t compared_ = 0;
    std::size_t differing_ = 0;
    std::size_t nanOnlyInA_ = 0;
    std::size_t nanOnlyInB_ = 0;
    std::size_t nanOfOtherBits_ = 0;
    std::optional<GreatestDistance> greatest_;
    std::optional<GreatestDistance> greatestRelative_;
    std::vector<ValuePair> pairs_;
};

}  // namespace eqrecord
