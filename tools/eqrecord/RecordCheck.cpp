// A value that a vector does not have is the fill value, and so is a "nan" of the input: a vector
// that ends before P is therefore nothing to tell, but a NaN with a value behind it can't be fill.

#include "tools/eqrecord/RecordCheck.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <map>
#include <span>

#include "lint/Printable.h"
#include "tools/eqrecord/JsonWriter.h"
#include "tools/eqrecord/Telling.h"

namespace eqrecord {

namespace {

constexpr std::size_t usualDate = 19;  // characters

constexpr std::array dayCounts{31, 29, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};

/// The two digits of a date from a place on that is counted from its end.
int partOf(std::string_view date, std::size_t fromEnd) {
    int value = 0;
    const std::string_view digits = date.substr(date.size() - fromEnd, 2);
    std::from_chars(digits.data(), digits.data() + digits.size(), value);
    return value;
}

/// Whether a text in the form of a date is one.
bool isDate(std::string_view text) {
    long year = 0;
    std::from_chars(text.data(), text.data() + text.size() - 15, year);
    const int month = partOf(text, 14);
    const int day = partOf(text, 11);
    if (month < 1 || month > 12 || day < 1 ||
        day > dayCounts[static_cast<std::size_t>(month) - 1]) {
        return false;
    }
    const bool isLeapYear = year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
    return (month != 2 || day < 29 || isLeapYear) && partOf(text, 8) < 24 && partOf(text, 5) < 60 &&
           partOf(text, 2) < 60;
}

/// What is to be known of one vector.
struct Summary {
    std::size_t length = 0;         ///< without the NaN at its end
    std::size_t firstGap = 0;       ///< the first NaN before a value, from 0; or `length`
    std::size_t firstInfinity = 0;  ///< the same
};

Summary summarize(std::span<const double> values) {
    Summary summary;
    summary.length = values.size();
    while (summary.length > 0 && std::isnan(values[summary.length - 1])) {
        --summary.length;
    }
    const auto kept = values.first(summary.length);
    const auto find = [&](auto is) {
        return static_cast<std::size_t>(std::ranges::find_if(kept, is) - kept.begin());
    };
    summary.firstGap = find([](double value) { return std::isnan(value); });
    summary.firstInfinity = find([](double value) { return std::isinf(value); });
    return summary;
}

class RecordCheck {
  public:
    explicit RecordCheck(record::RecordReader& reader) : reader_(reader) {}

    std::vector<Finding> run() {
        checkState();
        if (!reader_.outcome().readings.empty()) {
            checkReading(reader_.outcome().readings.front());
        }
        return std::move(findings_);
    }

  private:
    void error(std::string_view id, std::uint64_t offset, std::string message) {
        findings_.push_back({id, true, offset, std::move(message)});
    }
    void note(std::string_view id, std::uint64_t offset, std::string message) {
        findings_.push_back({id, false, offset, std::move(message)});
    }

    void checkState();
    void checkReading(const record::Reading& reading);
    void checkCounts(const record::Reading& reading);
    void checkDates(const record::Reading& reading);
    void checkBands(const record::Reading& reading);
    void checkFile(const record::File& file);
    void checkVectors(const record::Configuration& configuration, const std::string& where);
    void checkVector(const Summary& summary, std::uint64_t offset, const std::string& where);

    record::RecordReader& reader_;
    std::vector<Finding> findings_;
};

void RecordCheck::checkState() {
    const record::Outcome& outcome = reader_.outcome();
    const record::Ending& ending = outcome.ending;
    const std::vector<std::string> lines = tell(reader_);
    switch (outcome.state) {
        case record::State::damaged:
            error(ending.field <= 1 ? "RC101" : "RC102", ending.offset, lines.front());
            break;
        case record::State::incomplete:
            error("RC103", reader_.size(), lines.front());
            break;
        case record::State::trailing:
            error("RC105", ending.offset, lines.front());
            break;
        case record::State::ambiguous:
            error("RC106", 0, lines.front());
            break;
        default:
            break;
    }
    if (!outcome.isOrderCertain) {
        note("RC107", 0, lines.back());
    }
}

void RecordCheck::checkReading(const record::Reading& reading) {
    checkCounts(reading);
    checkDates(reading);
    checkBands(reading);
    for (const record::File& file : reading.files) {
        checkFile(file);
    }
}

void RecordCheck::checkCounts(const record::Reading& reading) {
    for (std::size_t i = 0; i < reading.files.size(); ++i) {
        const record::File& file = reading.files[i];
        const std::size_t there = file.configurations.size();
        std::string text = tellCount(reader_.outcome(), reading, i);
        if (text.empty()) {
            continue;
        }
        if (there > file.counted && (there - file.counted) % 256 == 0) {
            note("RC108", file.offset, std::move(text));
        } else {
            error("RC104", file.offset, std::move(text));
        }
    }
}

void RecordCheck::checkDates(const record::Reading& reading) {
    // The fields are at the end of the prologue, which has only texts.
    std::uint64_t offset =
        record::marker.size() + reading.fileType.size() +
        std::max(record::numberWidth, std::to_string(reading.fileType.size()).size());
    bool areDates = true;
    for (const std::string* date :
         {&reading.creationDate, &reading.applicabilityStart, &reading.applicabilityEnd}) {
        if (!date->empty() && !isDate(*date)) {
            error("RC206", offset, "no date of the calendar: " + *date);
            areDates = false;
        } else if (date->size() > usualDate) {
            // A wrong file type length makes the end of the file type the beginning of a year.
            note("RC209", offset, "a year that is not of four digits: " + *date);
        }
        offset += date->size();
    }
    const std::string& start = reading.applicabilityStart;
    const std::string& end = reading.applicabilityEnd;
    // Texts of years of four digits are in the order of time.
    if (areDates && start.size() == end.size() && !start.starts_with('-') && start > end) {
        error("RC207", offset - end.size() - start.size(),
              "the applicability ends before it starts: " + start + " to " + end);
    }
}

void RecordCheck::checkBands(const record::Reading& reading) {
    std::map<std::uint8_t, std::size_t> bands;
    for (std::size_t i = 0; i < reading.files.size(); ++i) {
        const record::File& file = reading.files[i];
        const auto [earlier, isNew] = bands.try_emplace(file.band, i + 1);
        if (!isNew) {
            note("RC204", file.offset,
                 "file " + std::to_string(i + 1) + " has band " + std::to_string(file.band) +
                     ", as file " + std::to_string(earlier->second) + " has");
        }
    }
}

void RecordCheck::checkFile(const record::File& file) {
    // A label that is there many times is told once.
    std::map<std::string_view, int> labels;
    for (const record::Configuration& configuration : file.configurations) {
        const std::string where =
            "band " + std::to_string(file.band) + ", " + lint::printable(configuration.label);
        if (++labels[configuration.label] == 2) {
            note("RC205", configuration.offset, where + ": this label is there twice");
        }
        if (!std::isfinite(configuration.epsilon())) {
            note("RC208", configuration.offset,
                 where + ": epsilon is " + decimalOf(configuration.epsilon()));
        }
        checkVectors(configuration, where);
    }
}

void RecordCheck::checkVectors(const record::Configuration& configuration,
                               const std::string& where) {
    // A vector at a time, so that memory does not grow with the record.
    std::vector<double> values(static_cast<std::size_t>(configuration.pixels));
    std::array<std::size_t, record::detectorCount> kinds{};
    std::array<std::string, record::detectorCount> missing;
    std::uint64_t offset = configuration.vectorsOffset;
    for (int kind = 0; kind < record::kindCount; ++kind) {
        const std::string name(record::kindNames[static_cast<std::size_t>(kind)]);
        for (int detector = 1; detector <= record::detectorCount; ++detector) {
            reader_.readVector(configuration, kind, detector, values);
            const Summary summary = summarize(values);
            const auto index = static_cast<std::size_t>(detector) - 1;
            if (summary.length > 0) {
                ++kinds[index];
            } else {
                missing[index] += (missing[index].empty() ? "" : ", ") + name;
            }
            std::string place = where;
            place.append(", detector ").append(std::to_string(detector)).append(", ").append(name);
            checkVector(summary, offset, place);
            offset += configuration.vectorLength();
        }
    }
    for (std::size_t i = 0; i < kinds.size(); ++i) {
        if (kinds[i] > 0 && !missing[i].empty()) {
            note("RC202", configuration.vectorsOffset,
                 where + ", detector " + std::to_string(i + 1) + ": no " + missing[i]);
        }
    }
}

void RecordCheck::checkVector(const Summary& summary, std::uint64_t offset,
                              const std::string& where) {
    if (summary.firstGap < summary.length) {
        note(
            "RC201", offset + summary.firstGap * sizeof(double),
            where + ": NaN between values, first at pixel " + std::to_string(summary.firstGap + 1));
    }
    if (summary.firstInfinity < summary.length) {
        note("RC203", offset + summary.firstInfinity * sizeof(double),
             where + ": infinite, first at pixel " + std::to_string(summary.firstInfinity + 1));
    }
}

}  // namespace

std::vector<Finding> checkRecord(record::RecordReader& reader) {
    return RecordCheck(reader).run();
}

}  // namespace eqrecord
