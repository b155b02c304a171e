// One pass over both records, a kind of a configuration of each in memory at a time. How a record
// is laid out is not compared: whether a name's length is told in two digits or three follows from
// the name, and the byte order from the machine.

#include "tools/eqrecord/RecordDiff.h"

#include <algorithm>
#include <array>
#include <utility>

#include "record/Layout.h"

namespace eqrecord {

namespace {

/// The name in JSON and for the command line, and that for people.
struct FieldName {
    std::string_view key;
    std::string_view name;
};

constexpr std::array<FieldName, 12> fieldNames{{
    {"file_type", "file type"},
    {"creation_date", "creation date"},
    {"applicability_start", "applicability start"},
    {"applicability_end", "applicability end"},
    {"files_counted", "files counted"},
    {"nuc_table_id", "NUC table"},
    {"band", "band"},
    {"name", "file name"},
    {"configurations_counted", "configurations counted"},
    {"label", "label"},
    {"epsilon", "epsilon"},
    {"pixels", "pixels"},
}};

/// Can be ignored like a field, and is none: no byte of a record tells it.
constexpr std::string_view byteOrderKey = "byte_order";

/// What a record that is cut does not have is empty, and nothing else is.
FieldValue textOf(const std::string& text) {
    return text.empty() ? FieldValue() : FieldValue(text);
}

/// A record that counts no files is none, so 0 is never the count.
FieldValue countOf(const record::Reading& reading) {
    return reading.filesCounted == 0 ? FieldValue()
                                     : FieldValue(static_cast<std::int64_t>(reading.filesCounted));
}

/// All of them: which file has one says nothing but what the one before it was.
FieldValue nucTablesOf(const record::Reading& reading) {
    std::vector<std::int64_t> identifiers;
    for (const record::File& file : reading.files) {
        if (file.nucTableId) {
            identifiers.emplace_back(*file.nucTableId);
        }
    }
    return identifiers;
}

/// A real number is equal to another as a value is.
bool areEqualFields(const FieldValue& a, const FieldValue& b, const Tolerance& tolerance) {
    const auto* const realOfA = std::get_if<double>(&a);
    const auto* const realOfB = std::get_if<double>(&b);
    return realOfA != nullptr && realOfB != nullptr ? areEqual(*realOfA, *realOfB, tolerance)
                                                    : a == b;
}

/// Reads all vectors of a kind. The memory is kept for the next one.
std::span<const double> readKind(OpenRecord& record, const record::Configuration& configuration,
                                 int kind, std::vector<double>& values) {
    values.resize(static_cast<std::size_t>(configuration.pixels) * record::detectorCount);
    record.reader().readKind(configuration, kind, values);
    return values;
}

}  // namespace

std::span<const std::string_view> comparedFields() {
    static const auto keys = [] {
        std::array<std::string_view, fieldNames.size() + record::kindNames.size() + 1> all;
        auto end = std::ranges::transform(fieldNames, all.begin(), &FieldName::key).out;
        end = std::ranges::copy(record::kindNames, end).out;
        *end = byteOrderKey;
        return all;
    }();
    return keys;
}

bool DiffOptions::takes(std::string_view field) const {
    return std::ranges::find(ignored, field) == ignored.end();
}

bool DiffOptions::takesKind(int kind) const {
    return selection.takesKind(kind) && takes(record::kindNames[static_cast<std::size_t>(kind)]);
}

DiffTotals RecordDiff::run() {
    const auto pairs = matchBlocks(a_.reading(), b_.reading(), options_.selection, options_.match);
    compareRecords();
    for (const BlockPair& pair : pairs) {
        if (isDone()) {
            break;
        }
        comparePair(pair);
    }
    report_.end(totals_);
    return totals_;
}

void RecordDiff::compareRecords() {
    const record::Reading& a = a_.reading();
    const record::Reading& b = b_.reading();
    compareField(nullptr, "file_type", textOf(a.fileType), textOf(b.fileType));
    compareField(nullptr, "creation_date", textOf(a.creationDate), textOf(b.creationDate));
    compareField(nullptr, "applicability_start", textOf(a.applicabilityStart),
                 textOf(b.applicabilityStart));
    compareField(nullptr, "applicability_end", textOf(a.applicabilityEnd),
                 textOf(b.applicabilityEnd));
    compareField(nullptr, "files_counted", countOf(a), countOf(b));
    compareField(nullptr, "nuc_table_id", nucTablesOf(a), nucTablesOf(b));
}

void RecordDiff::comparePair(const BlockPair& pair) {
    if (!pair.a || !pair.b) {
        addMissing(pair);
    } else if (pair.isFile()) {
        compareFiles(pair);
    } else {
        compareConfigurations(pair);
    }
}

void RecordDiff::compareFiles(const BlockPair& pair) {
    const record::File& a = *pair.a->file;
    const record::File& b = *pair.b->file;
    // Some of it is what the files are matched by, and can't differ then.
    compareField(&pair, "band", std::int64_t{a.band}, std::int64_t{b.band});
    compareField(&pair, "name", a.name, b.name);
    compareField(&pair, "configurations_counted", std::int64_t{a.counted}, std::int64_t{b.counted});
}

void RecordDiff::compareConfigurations(const BlockPair& pair) {
    const record::Configuration& a = *pair.a->configuration;
    const record::Configuration& b = *pair.b->configuration;
    compareField(&pair, "label", a.label, b.label);
    compareField(&pair, "epsilon", a.epsilon(), b.epsilon());
    compareField(&pair, "pixels", std::int64_t{a.pixels}, std::int64_t{b.pixels});
    for (int kind = 0; kind < record::kindCount && !isDone(); ++kind) {
        if (options_.takesKind(kind)) {
            compareVectors(pair, kind);
        }
    }
}

void RecordDiff::compareVectors(const BlockPair& pair, int kind) {
    const record::Configuration& a = *pair.a->configuration;
    const record::Configuration& b = *pair.b->configuration;
    const auto pixelsOfA = static_cast<std::size_t>(a.pixels);
    const auto pixelsOfB = static_cast<std::size_t>(b.pixels);
    // Of different P, which is a difference of its own, what both have can still be the same.
    const auto pixels = options_.selection.pixelsOf(std::min(pixelsOfA, pixelsOfB));
    ValueDifferences differences(options_.tolerance, options_.mostPairs);
    if (pixels.count > 0) {
        const auto ofA = readKind(a_, a, kind, valuesOfA_);
        const auto ofB = readKind(b_, b, kind, valuesOfB_);
        for (int detector = 1; detector <= record::detectorCount; ++detector) {
            if (options_.selection.takesDetector(detector)) {
                const auto index = static_cast<std::size_t>(detector) - 1;
                differences.compare(
                    detector, pixels.first,
                    ofA.subspan(index * pixelsOfA + pixels.first - 1, pixels.count),
                    ofB.subspan(index * pixelsOfB + pixels.first - 1, pixels.count));
            }
        }
    }
    totals_.compared += differences.compared();
    totals_.differing += differences.differing();
    report_.writeVariable(pair, kind, differences);
}

void RecordDiff::compareField(const BlockPair* pair, std::string_view key, FieldValue a,
                              FieldValue b) {
    if (options_.takes(key) && !areEqualFields(a, b, options_.tolerance)) {
        const FieldName& field = *std::ranges::find(fieldNames, key, &FieldName::key);
        report_.writeField(pair, {key, field.name, std::move(a), std::move(b)});
        ++totals_.fields;
    }
}

// What one record lacks can't be ignored: there is no field that it would be a part of.
void RecordDiff::addMissing(const BlockPair& pair) {
    DiffTotals::Missing& missing = pair.a ? totals_.missingInB : totals_.missingInA;
    ++(pair.isFile() ? missing.files : missing.configurations);
    report_.writeMissing(pair);
}

}  // namespace eqrecord
