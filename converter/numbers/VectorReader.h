#pragma once

#include <array>
#include <cstddef>
#include <span>
#include <string_view>

/// Reads the numbers of a vector: the text is cut at each single space and each piece converted as
/// strtod does, what is no number giving 0. A space at the end adds nothing; tabs and line ends cut
/// nothing off.
class VectorReader {
  public:
    /// Numbers that one call of `read` gives at most.
    static constexpr std::size_t batchSize = 4096;
    using Batch = std::array<double, batchSize>;

    /// The text is not owned and must outlive the reader.
    explicit VectorReader(std::string_view text)
        : begin_(text.data()), piece_(begin_), end_(begin_ + text.size()) {}

    /// Reads the next numbers into `batch` and returns how many; 0 at the end.
    std::size_t read(Batch& batch);

  private:
    std::size_t readEdge(std::span<double> values);
    std::size_t readLong(std::span<double> values);

    const char* begin_;
    const char* piece_;  ///< start of the next piece
    const char* end_;
};
