#pragma once

#include <cstdint>
#include <cstdlib>
#include <regex>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// Reads a record back, field by field as docs/record.md tells, knowing nothing of the program that
/// wrote it. Where a number text has no end of its own, what follows decides.
class RecordReader {
  public:
    /// `names` are the files' names. A record that is not `isComplete` may end behind any field.
    /// One of damaged files (`keepsCounts` is false) may have other configurations than it counts.
    RecordReader(std::string_view record, std::vector<std::string> names, bool isComplete,
                 bool keepsCounts)
        : left_(record),
          names_(std::move(names)),
          isComplete_(isComplete),
          keepsCounts_(keepsCounts) {}

    /// Whether the record has the layout, to its last byte.
    bool read() {
        return mayEnd() || (skip("ZEDA") && readText(' ', "VORN/", [this] {
                                return readDate() && readDate() && readDate() &&
                                       skip(numberText(names_.size(), ' ')) && readFile(0, true);
                            }));
    }

  private:
    bool mayEnd() const { return left_.empty() && !isComplete_; }

    bool take(std::size_t size) {
        const bool isThere = left_.size() >= size;
        left_.remove_prefix(isThere ? size : 0);
        return isThere;
    }

    bool skip(std::string_view text) { return left_.starts_with(text) && take(text.size()); }

    bool takeInt16(std::int16_t& number) {
        left_.copy(reinterpret_cast<char*>(&number), sizeof number);
        return take(sizeof number);
    }

    static std::string numberText(std::size_t number, char fill) {
        const std::string digits = std::to_string(number);
        return digits.size() < 2 ? fill + digits : digits;
    }

    /// Reads a length and its text, which begins with `prefix`, and then what `readOn` reads; tries
    /// every length that the digits can mean.
    template <class ReadOn>
    bool readText(char fill, std::string_view prefix, ReadOn readOn) {
        const std::string_view start = left_;
        for (std::size_t digits = 2; digits <= 5; ++digits) {
            const std::string number(start.substr(0, digits));
            const std::size_t size = std::strtoul(number.c_str(), nullptr, 10);
            left_ = start;
            if (numberText(size, fill) == number && take(digits) && left_.starts_with(prefix) &&
                take(size) && readOn()) {
                return true;
            }
        }
        return false;
    }

    bool readDate() {
        static const std::regex date(R"(-?\d{4,9}-\d\d-\d\dT\d\d:\d\d:\d\d)");
        std::match_results<std::string_view::const_iterator> found;
        return std::regex_search(left_.begin(), left_.end(), found, date,
                                 std::regex_constants::match_continuous) &&
               take(static_cast<std::size_t>(found.length()));
    }

    bool readFile(std::size_t file, bool hasNucTable) {
        if (file == names_.size() || mayEnd()) {
            return left_.empty();
        }
        std::int16_t id = 0;
        const std::string& name = names_[file];
        if ((hasNucTable && !takeInt16(id)) || !take(1) ||
            !skip(numberText(name.size(), '0') + name) || left_.empty()) {
            return false;
        }
        const auto count = static_cast<unsigned char>(left_[0]);
        return take(1) && readConfigurations(count, file + 1, id < 0);
    }

    /// Reads as many configurations, or any number of them, then the next file.
    bool readConfigurations(int count, std::size_t nextFile, bool hasNucTable) {
        const std::string_view start = left_;
        if (mayEnd() || ((count == 0 || !keepsCounts_) && readFile(nextFile, hasNucTable))) {
            return true;
        }
        left_ = start;
        return (count != 0 || !keepsCounts_) && readText('0', "", [&] {
                   std::int16_t pixels = 0;
                   return take(sizeof(double)) &&
                          (mayEnd() ||
                           (takeInt16(pixels) && pixels >= 0 &&
                            take(static_cast<std::size_t>(pixels) * 48 * sizeof(double)) &&
                            readConfigurations(count - 1, nextFile, hasNucTable)));
               });
    }

    std::string_view left_;
    const std::vector<std::string> names_;
    const bool isComplete_, keepsCounts_;
};
