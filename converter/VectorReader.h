#pragma once

#include <array>
#include <cstddef>
#include <string_view>

/// Reads the numbers of a vector: the text is cut at each single space and each piece converted as
/// strtod does, what is no number giving 0. A space at the end adds nothing; tabs and line ends cut
/// nothing off.
class VectorReader {
  public:
    /// Numbers that one call of `read` gives at most.
    static constexpr std::size_t batchSize = 4096;
    using Batch = std::array<double, batchSize>;

    /// `around` is the memory that holds the text and may be looked at: the more of it lies before
    /// and behind the text the more numbers are read the fast way. Neither is owned, and both must
    /// outlive the reader.
    VectorReader(std::string_view text, std::string_view around)
        : readable_(around.data()),
          readableEnd_(around.data() + around.size()),
          piece_(text.data()),
          end_(text.data() + text.size()) {}

    /// Reads the next numbers into `batch` and returns how many; 0 at the end.
    std::size_t read(Batch& batch);

  private:
    std::size_t readBlocks(Batch& batch, std::size_t count);

    const char* readable_;
    const char* readableEnd_;
    const char* piece_;  ///< start of the next piece
    const char* end_;
};
