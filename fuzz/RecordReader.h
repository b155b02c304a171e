#pragma once

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// Reads a record back, field by field as docs/record.md tells, knowing nothing of the program that
/// wrote it. Where a number text has no end of its own, what follows decides.
class RecordReader {
  public:
    /// `names` are the files' names. A record that is not `isComplete` may end behind any field.
    /// One of damaged files (`keepsCounts` is false) may have other blocks than it counts: when
    /// elements lack around a detector, the converter goes on elsewhere in the file.
    RecordReader(std::string record, std::vector<std::string> names, bool isComplete,
                 bool keepsCounts)
        : record_(std::move(record)),
          names_(std::move(names)),
          isComplete_(isComplete),
          keepsCounts_(keepsCounts) {}

    /// Whether the record has the layout, to its last byte.
    bool read() {
        return readEnd() || (skip("ZEDA") && readText(' ', [this] { return readPrologue(); }));
    }

    /// The fields with values: texts, and the bytes of numbers and vectors.
    std::vector<std::string> fields;

  private:
    bool readEnd() const { return at_ == record_.size() && !isComplete_; }

    bool skip(std::string_view text) {
        const bool isThere = std::string_view(record_).substr(at_, text.size()) == text;
        at_ += isThere ? text.size() : 0;
        return isThere;
    }

    bool take(std::size_t size) {
        if (record_.size() - at_ < size) {
            return false;
        }
        fields.push_back(record_.substr(at_, size));
        at_ += size;
        return true;
    }

    template <class Number>
    Number number() const {
        Number value;
        std::memcpy(&value, fields.back().data(), sizeof value);
        return value;
    }

    /// Reads a length and its text, and then what `readOn` reads; tries every length that the
    /// digits can mean.
    template <class ReadOn>
    bool readText(char fill, ReadOn readOn) {
        const std::size_t start = at_;
        const std::size_t fieldCount = fields.size();
        constexpr std::size_t mostDigits = 5;
        std::string digits;
        for (std::size_t i = start; i < record_.size() && digits.size() < mostDigits; ++i) {
            const char c = record_[i];
            if (!std::isdigit(static_cast<unsigned char>(c)) && (i != start || c != fill)) {
                break;
            }
            digits += c == ' ' ? '0' : c;
            if (digits.size() < 2 || (digits.size() > 2 && digits[0] == '0')) {
                continue;
            }
            at_ = i + 1;
            if (take(std::stoul(digits)) && readOn()) {
                return true;
            }
            fields.resize(fieldCount);
        }
        return false;
    }

    bool readPrologue() {
        const std::string count = std::to_string(names_.size());
        return fields.back().starts_with("VORN/") && readDate() && readDate() && readDate() &&
               skip(count.size() < 2 ? " " + count : count) && readFile(0, true);
    }

    /// A year of four or more digits, then fields of two.
    bool readDate() {
        const std::size_t sign = record_.compare(at_, 1, "-") == 0 ? 1 : 0;
        const std::size_t yearEnd = record_.find('-', at_ + sign);
        constexpr std::string_view rest = "-00-00T00:00:00";
        if (yearEnd == std::string::npos || yearEnd - at_ - sign < 4 ||
            !take(yearEnd - at_ + rest.size())) {
            return false;
        }
        std::string shape = fields.back();
        std::replace_if(
            shape.begin(), shape.end(), [](unsigned char c) { return std::isdigit(c); }, '0');
        return shape == std::string(sign, '-') +
                            std::string(yearEnd - (at_ - shape.size()) - sign, '0') +
                            std::string(rest);
    }

    bool readFile(std::size_t file, bool hasNucTable) {
        if (file == names_.size()) {
            return at_ == record_.size();
        }
        if (readEnd()) {
            return true;
        }
        if (hasNucTable) {
            if (!take(sizeof(std::int16_t))) {
                return false;
            }
            hasNucTable = number<std::int16_t>() < 0;
        }
        const std::string& name = names_[file];
        const std::string length = std::to_string(name.size());
        if (!take(1) || !skip((length.size() < 2 ? "0" + length : length) + name) || !take(1)) {
            return false;
        }
        return readConfigurations(number<std::uint8_t>(), file + 1, hasNucTable);
    }

    bool readConfigurations(unsigned count, std::size_t nextFile, bool hasNucTable) {
        const std::size_t start = at_;
        const std::size_t fieldCount = fields.size();
        if (readEnd() || ((count == 0 || !keepsCounts_) && readFile(nextFile, hasNucTable))) {
            return true;
        }
        at_ = start;
        fields.resize(fieldCount);
        return (count != 0 || !keepsCounts_) && readText('0', [&] {
                   return readConfiguration() &&
                          readConfigurations(count - 1, nextFile, hasNucTable);
               });
    }

    /// What follows the label.
    bool readConfiguration() {
        constexpr std::size_t pixelSize = 48 * sizeof(double);
        if (!take(sizeof(double)) || readEnd()) {
            return readEnd();
        }
        return take(sizeof(std::int16_t)) && number<std::int16_t>() >= 0 &&
               take(pixelSize * static_cast<std::size_t>(number<std::int16_t>()));
    }

    const std::string record_;
    const std::vector<std::string> names_;
    const bool isComplete_;
    const bool keepsCounts_;
    std::size_t at_ = 0;
};
