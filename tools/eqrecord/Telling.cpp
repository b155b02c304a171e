// What is told of a record names the field with its number on the page on the record, so that
// people can look up what should be there, and the offset, so that they can look at what is.
//
// Where a record ends is what it is; why is a guess, and said as one: a full disk can end a
// file at the same byte as a run that stopped.

#include "tools/eqrecord/Telling.h"

#include <algorithm>

#include "lint/Printable.h"
#include "record/Layout.h"
#include "record/ReadingSearch.h"
#include "tools/eqrecord/JsonWriter.h"

namespace eqrecord {

namespace {

constexpr std::size_t shownBytes = 16;

std::string counted(std::uint64_t count, std::string_view thing) {
    return std::to_string(count) + ' ' + std::string(thing) + (count == 1 ? "" : "s");
}

/// A label, of which damage can make one of any length.
std::string quoted(std::string_view text) {
    constexpr std::size_t longest = 100;
    const bool isLong = text.size() > longest;
    return '"' + lint::printable(text.substr(0, longest)) + (isLong ? "\"..." : "\"");
}

/// "field 17 (coefficient vectors) of file 2, configuration 1 "ALL"".
std::string placeOf(const record::Ending& ending) {
    std::string text = "field " + std::to_string(ending.field) + " (" +
                       std::string(record::field(ending.field).name) + ')';
    if (ending.file > 0) {
        text += " of file " + std::to_string(ending.file);
    }
    if (ending.configuration > 0) {
        text += ", configuration " + std::to_string(ending.configuration);
    }
    if (ending.partial) {
        text += ' ' + quoted(ending.partial->label);
    }
    return text;
}

std::string wholeOf(const record::Outcome& outcome) {
    const record::Reading& reading = outcome.readings[0];
    const record::Ending& ending = outcome.ending;
    if (reading.filesCounted == 0) {
        return "no file is there";
    }
    std::string text = "whole: " + std::to_string(ending.file - 1) + " of " +
                       counted(reading.filesCounted, "file");
    if (ending.configuration > 0) {
        const record::File& file = reading.files.back();
        text += ", then " + std::to_string(file.configurations.size()) + " of " +
                counted(file.counted, "configuration");
    }
    if (ending.partial && ending.partial->pixels > 0) {
        text += ", then " + std::to_string(ending.wholeVectors) + " of 48 vectors";
    }
    return text;
}

std::string tellIncomplete(const record::RecordReader& reader) {
    const record::Outcome& outcome = reader.outcome();
    const std::string_view cause = causeOf(outcome);
    return "ends at " + hexNumber(reader.size()) +
           (outcome.ending.available == 0 ? " before " : " in ") + placeOf(outcome.ending) +
           (cause == "nuc_table_mismatch"
                ? ", as a run leaves it that stopped at a NUC table mismatch"
            : cause == "stopped_in_configuration"
                ? ", as a run leaves it that stopped in this configuration"
                : "") +
           "; " + wholeOf(outcome);
}

std::string tellDamage(record::RecordReader& reader) {
    const record::Ending& ending = reader.outcome().ending;
    if (ending.isGivenUp) {
        return "no record, or too damaged: given up after " +
               std::to_string(record::ReadingSearch::maxPlaces) + " places";
    }
    if (reader.size() == 0) {
        return "no record: empty";
    }
    const std::string found = hexOf(reader.view(ending.offset, shownBytes), " ");
    return (ending.field == 1
                ? "no record"
                : "damaged at " + hexNumber(ending.offset) + " in " + placeOf(ending)) +
           ": expected " + expectedOf(ending) + ", found " + (found.empty() ? "nothing" : found);
}

std::string tellTrailing(const record::Ending& ending) {
    return counted(ending.available, "byte") + " behind the end at " + hexNumber(ending.offset) +
           (ending.isSecondRecord ? "; a second record begins there" : "");
}

std::string tellAmbiguity(const record::Outcome& outcome) {
    const std::size_t count = outcome.readings.size();
    return "can be read in " + std::to_string(count) +
           (count == record::ReadingSearch::maxReadings ? " ways or more" : " ways") +
           ": choose with --reading";
}

}  // namespace

std::string_view nameOf(record::State state) {
    switch (state) {
        case record::State::complete:
            return "complete";
        case record::State::fewerBlocks:
            return "short";
        case record::State::ambiguous:
            return "ambiguous";
        case record::State::trailing:
            return "trailing";
        case record::State::incomplete:
            return "incomplete";
        default:
            return "damaged";
    }
}

std::string_view nameOf(record::ByteOrder order) {
    return order == record::ByteOrder::little ? "little" : "big";
}

std::string_view causeOf(const record::Outcome& outcome) {
    const record::Ending& ending = outcome.ending;
    if (outcome.state != record::State::incomplete || ending.available > 0) {
        return "";
    }
    if (ending.field == 16) {
        return "stopped_in_configuration";
    }
    if (ending.field != 9 || ending.file < 2) {
        return "";
    }
    // Behind a negative identifier field 8 stands before the band, and nothing is compared.
    const std::vector<record::File>& files = outcome.readings.front().files;
    const auto last = std::find_if(files.rbegin(), files.rend(), [](const record::File& file) {
        return file.nucTableId.has_value();
    });
    return *last->nucTableId < 0 ? "" : "nuc_table_mismatch";
}

std::string expectedOf(const record::Ending& ending) {
    const record::Field& field = record::field(ending.field);
    switch (field.form) {
        case record::Form::marker:
            return "the marker \"ZEDA\"";
        case record::Form::numberText:
            return field.fill == '0' ? "a number such as \"09\" or \"14\""
                                     : "a number such as \" 9\" or \"14\"";
        case record::Form::date:
            return "a date";
        case record::Form::real:
            return "the epsilon of the file's other configurations";
        case record::Form::int16:
            return "a count that is not negative";
        default:
            return field.number == 3 ? "\"VORN/\"" : "a name without slash and NUL";
    }
}

std::string tellCount(const record::Outcome& outcome, const record::Reading& reading,
                      std::size_t index) {
    const record::File& file = reading.files[index];
    const std::size_t there = file.configurations.size();
    const bool isBroken = outcome.ending.configuration > 0 && index + 1 == outcome.ending.file;
    if (there == file.counted || isBroken) {
        return "";
    }
    std::string text = "file " + std::to_string(index + 1) + " counts " +
                       counted(file.counted, "configuration") +
                       (there > file.counted ? " modulo 256, " : ", ") + std::to_string(there) +
                       (there == 1 ? " is there" : " are there");
    if (there > file.counted && (there - file.counted) % 256 == 0) {
        return text;
    }
    return text + (index + 1 < reading.files.size()
                       ? ": the input has lost them, see rule EQ607 of eqlint"
                       : ". Either the run stopped here or the input lost them; only the exit "
                         "status of the run can tell");
}

std::vector<std::string> tell(record::RecordReader& reader) {
    const record::Outcome& outcome = reader.outcome();
    std::vector<std::string> lines;
    switch (outcome.state) {
        case record::State::ambiguous:
            lines.push_back(tellAmbiguity(outcome));
            break;
        case record::State::trailing:
            lines.push_back(tellTrailing(outcome.ending));
            break;
        case record::State::incomplete:
            lines.push_back(tellIncomplete(reader));
            break;
        case record::State::damaged:
            lines.push_back(tellDamage(reader));
            break;
        default:
            break;
    }
    if (!outcome.isOrderCertain) {
        lines.push_back("byte order can't be told; it is taken for " +
                        std::string(nameOf(outcome.order)) + "-endian");
    }
    return lines;
}

}  // namespace eqrecord
