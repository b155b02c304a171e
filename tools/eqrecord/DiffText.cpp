// Every line says where it belongs, so that one found by a search needs no other. Values are
// written with all their digits, as differences may be in the last; how far apart they are is
// rounded.

#include "tools/eqrecord/DiffText.h"

#include <algorithm>
#include <bit>
#include <cmath>

#include "lint/Printable.h"
#include "record/Layout.h"
#include "tools/eqrecord/JsonWriter.h"
#include "tools/eqrecord/Telling.h"

namespace eqrecord {

namespace {

constexpr int distanceDigits = 3;

std::string counted(std::size_t count, std::string_view thing) {
    return std::to_string(count) + ' ' + std::string(thing) + (count == 1 ? "" : "s");
}

/// A NaN that is not the fill value with its bits, which may be all that two of them differ in.
std::string valueText(double value) {
    const auto bits = std::bit_cast<std::uint64_t>(value);
    const bool isFill = bits == std::bit_cast<std::uint64_t>(record::fillValue);
    return std::isnan(value) && !isFill ? "nan(" + hexNumber(bits) + ')' : decimalOf(value);
}

/// Fields of text are a record's bytes, which a terminal must not get as they are.
struct FieldText {
    std::string operator()(std::monostate /*unused*/) const { return "nothing"; }
    std::string operator()(const std::string& text) const { return lint::printable(text); }
    std::string operator()(std::int64_t number) const { return std::to_string(number); }
    std::string operator()(double number) const { return valueText(number); }
    std::string operator()(const std::vector<std::int64_t>& numbers) const {
        std::string text;
        for (const std::int64_t number : numbers) {
            text += (text.empty() ? "" : ", ") + std::to_string(number);
        }
        return text.empty() ? "nothing" : text;
    }
};

/// "detector 1, pixel 2".
std::string placeOf(const ValuePair& pair) {
    return "detector " + std::to_string(pair.detector) + ", pixel " + std::to_string(pair.pixel);
}

std::string valuesOf(const ValuePair& pair) {
    return valueText(pair.a) + " | " + valueText(pair.b);
}

/// ", greatest |a-b| 1e-06 and relative 6.67e-07 at detector 1, pixel 2 (1.5 | 1.500001)", or each
/// with its own place; nothing when only NaN differ.
std::string greatestOf(const ValueDifferences& differences) {
    if (!differences.greatest()) {
        return "";
    }
    const GreatestDistance& greatest = *differences.greatest();
    const GreatestDistance& relative = *differences.greatestRelative();
    const auto place = [](const ValuePair& pair) {
        return " at " + placeOf(pair) + " (" + valuesOf(pair) + ')';
    };
    // Mostly they are at the same place, which is then told once.
    const bool isOnePlace = greatest.pair.detector == relative.pair.detector &&
                            greatest.pair.pixel == relative.pair.pixel;
    return ", greatest |a-b| " + roundedOf(greatest.distance, distanceDigits) +
           (isOnePlace ? " and relative " : place(greatest.pair) + ", greatest relative ") +
           roundedOf(relative.distance, distanceDigits) + place(relative.pair);
}

/// ", NaN only in A: 30", for each of the ways in which NaN can differ.
std::string nansOf(const ValueDifferences& differences) {
    std::string text;
    const auto add = [&](std::string_view what, std::size_t count) {
        if (count > 0) {
            text.append(", ").append(what).append(std::to_string(count));
        }
    };
    add("NaN only in A: ", differences.nanOnlyInA());
    add("NaN only in B: ", differences.nanOnlyInB());
    add("NaN of other bits: ", differences.nanOfOtherBits());
    return text;
}

/// "1 field and 2 of 24 values differ". Values are mentioned even when none differs: how many were
/// compared tells whether the selection was the one that was meant.
std::string differingOf(const DiffTotals& totals) {
    const std::string values =
        std::to_string(totals.differing) + " of " + counted(totals.compared, "value");
    if (totals.fields > 0 && totals.differing > 0) {
        return counted(totals.fields, "field") + " and " + values + " differ";
    }
    if (totals.differing > 0) {
        return values + (totals.differing == 1 ? " differs" : " differ");
    }
    const std::string none = "none of " + counted(totals.compared, "value");
    if (totals.fields > 0) {
        return counted(totals.fields, "field") + (totals.fields == 1 ? " differs, " : " differ, ") +
               none;
    }
    return none + " differs";
}

/// "; only in A: 1 file and 2 configurations". The record that has them is named, not the other.
std::string missingOf(const DiffTotals::Missing& missing, std::string_view where) {
    if (!missing.isAny()) {
        return "";
    }
    std::string text = "; only in " + std::string(where) + ": ";
    if (missing.files > 0) {
        text += counted(missing.files, "file");
    }
    if (missing.configurations > 0) {
        text +=
            (missing.files > 0 ? " and " : "") + counted(missing.configurations, "configuration");
    }
    return text;
}

/// A record that is not whole, or has more behind it.
void noteState(std::string_view name, OpenRecord& record, std::ostream& out) {
    if (record.outcome().state >= record::State::trailing) {
        out << "note: " << name << ": " << tell(record.reader()).front() << '\n';
    }
}

}  // namespace

DiffText::DiffText(OpenRecord& a, OpenRecord& b, const DiffOptions& options, std::ostream& out)
    : match_(options.match), out_(out) {
    noteState("A", a, out);
    noteState("B", b, out);
    if (options.takes("byte_order") && a.outcome().order != b.outcome().order) {
        out << "note: byte order: " << nameOf(a.outcome().order) << " | "
            << nameOf(b.outcome().order) << '\n';
    }
}

// "band 4, ALL", by what the blocks are matched by, since that is the same in both records; which
// of several is told from the second one on.
std::string DiffText::placeOf(const BlockPair& pair) const {
    const Block& block = pair.any();
    std::string text;
    if (match_ == Match::position) {
        text = "file " + std::to_string(block.fileNumber);
        return pair.isFile()
                   ? text
                   : text + ", configuration " + std::to_string(block.configurationNumber);
    }
    text = match_ == Match::band ? "band " + std::to_string(block.file->band)
                                 : lint::printable(block.file->name);
    if (!pair.isFile()) {
        text += ", " + lint::printable(block.configuration->label);
    }
    if (pair.occurrence > 1) {
        text += ", occurrence " + std::to_string(pair.occurrence);
    }
    return text;
}

void DiffText::writeField(const BlockPair* pair, const FieldDifference& field) {
    if (pair != nullptr) {
        out_ << placeOf(*pair) << ", ";
    }
    out_ << field.name << ": " << std::visit(FieldText(), field.a) << " | "
         << std::visit(FieldText(), field.b);
    if (field.key == "pixels") {
        const auto common =
            std::min(std::get<std::int64_t>(field.a), std::get<std::int64_t>(field.b));
        out_ << ", compared are " << (common == 0 ? "none" : "the first " + std::to_string(common));
    }
    out_ << '\n';
}

void DiffText::writeVariable(const BlockPair& pair, int kind, const ValueDifferences& differences) {
    if (differences.differing() == 0) {
        return;
    }
    out_ << placeOf(pair) << ", " << record::kindNames[static_cast<std::size_t>(kind)] << ": "
         << differences.differing() << " of " << counted(differences.compared(), "value")
         << (differences.differing() == 1 ? " differs" : " differ") << greatestOf(differences)
         << nansOf(differences) << '\n';
    for (const ValuePair& values : differences.pairs()) {
        out_ << "  " << eqrecord::placeOf(values) << ": " << valuesOf(values) << '\n';
    }
    // With --max-lines 0 nobody asks for a list, and none is said to be cut.
    const std::size_t more = differences.differing() - differences.pairs().size();
    if (more > 0 && !differences.pairs().empty()) {
        out_ << "  and " << more << " more\n";
    }
}

void DiffText::writeMissing(const BlockPair& pair) {
    out_ << placeOf(pair) << ": only in " << (pair.a ? 'A' : 'B');
    // Who reads that a band is missing wants to know which file that is.
    if (pair.isFile() && match_ != Match::name) {
        out_ << " (" << lint::printable(pair.any().file->name) << ')';
    }
    out_ << '\n';
}

void DiffText::end(const DiffTotals& totals) {
    if (!totals.isSame()) {
        out_ << differingOf(totals) << missingOf(totals.missingInB, "A")
             << missingOf(totals.missingInA, "B") << '\n';
    }
}

}  // namespace eqrecord
