// Variables are written as they come, since there are as many as the records have, and what else
// differs is kept for the end. Keys that belong to one record end in a or b, so that whoever reads
// can exchange the records by their names.

#include "tools/eqrecord/DiffJson.h"

#include "record/Layout.h"
#include "tools/eqrecord/Telling.h"

namespace eqrecord {

namespace {

/// The record that lacks what the other has.
std::string_view lackingOf(const BlockPair& pair) {
    return pair.a ? "b" : "a";
}

/// Writes the value of a field; null for what is not there.
struct FieldJson {
    JsonWriter& json;
    void operator()(std::monostate /*unused*/) const { json.real(record::fillValue); }
    void operator()(const std::string& text) const { json.text(text); }
    void operator()(std::int64_t number) const { json.number(number); }
    void operator()(double number) const { json.real(number); }
    void operator()(const std::vector<std::int64_t>& numbers) const {
        json.beginArray();
        for (const std::int64_t number : numbers) {
            json.number(number);
        }
        json.endArray();
    }
};

}  // namespace

DiffJson::DiffJson(const OpenRecord& a, const OpenRecord& b, const DiffOptions& options,
                   std::ostream& out)
    : options_(options), out_(out), json_(out) {
    json_.beginObject();
    json_.text("schema", "eqrecord-diff-1");
    writeRecord("a", a);
    writeRecord("b", b);
    json_.text("match", options.match == Match::band       ? "band"
                        : options.match == Match::position ? "position"
                                                           : "name");
    writeTolerance(options.tolerance);
    json_.key("variables");
    json_.beginArray();
}

void DiffJson::writeField(const BlockPair* pair, const FieldDifference& field) {
    fields_.push_back({pair == nullptr ? std::nullopt : std::optional(*pair), field});
}

void DiffJson::writeVariable(const BlockPair& pair, int kind, const ValueDifferences& differences) {
    writeKind(pair, kind, differences);
}

// Also among the variables, so that a reader who only looks at those does not take them for all.
void DiffJson::writeMissing(const BlockPair& pair) {
    missing_.push_back(pair);
    const ValueDifferences none(options_.tolerance, 0);
    for (int kind = 0; kind < record::kindCount && !pair.isFile(); ++kind) {
        if (options_.takesKind(kind)) {
            writeKind(pair, kind, none);
        }
    }
}

void DiffJson::end(const DiffTotals& totals) {
    json_.endArray();
    writeFields();
    json_.key("missing");
    json_.beginArray();
    for (const BlockPair& pair : missing_) {
        json_.beginObject();
        json_.text("missing_in", lackingOf(pair));
        writePair(pair);
        json_.endObject();
    }
    json_.endArray();
    json_.key("totals");
    json_.beginObject();
    json_.number("fields", totals.fields);
    json_.number("compared", totals.compared);
    json_.number("differing", totals.differing);
    json_.number("missing", missing_.size());
    json_.endObject();
    json_.boolean("same", totals.isSame());
    json_.endObject();
    out_ << '\n';
}

void DiffJson::writeRecord(std::string_view key, const OpenRecord& record) {
    json_.key(key);
    json_.beginObject();
    json_.text("path", record.path());
    json_.text("byte_order", nameOf(record.outcome().order));
    if (record.isIncomplete()) {
        json_.boolean("incomplete", true);
    }
    json_.endObject();
}

void DiffJson::writeTolerance(const Tolerance& tolerance) {
    json_.key("tolerance");
    json_.beginObject();
    if (tolerance.absolute) {
        json_.real("abs", *tolerance.absolute);
    }
    if (tolerance.relative) {
        json_.real("rel", *tolerance.relative);
    }
    if (tolerance.ulp) {
        json_.number("ulp", *tolerance.ulp);
    }
    json_.boolean("nan_differs", tolerance.nanDiffers);
    json_.endObject();
}

void DiffJson::writeFields() {
    json_.key("fields");
    json_.beginArray();
    for (const auto& [pair, difference] : fields_) {
        json_.beginObject();
        json_.text("field", difference.key);
        json_.key("value_in_a");
        std::visit(FieldJson{json_}, difference.a);
        json_.key("value_in_b");
        std::visit(FieldJson{json_}, difference.b);
        if (pair) {
            writePair(*pair);
        }
        json_.endObject();
    }
    json_.endArray();
}

void DiffJson::writeKind(const BlockPair& pair, int kind, const ValueDifferences& differences) {
    json_.beginObject();
    json_.text("variable", record::kindNames[static_cast<std::size_t>(kind)]);
    writePair(pair);
    if (!pair.a || !pair.b) {
        json_.text("missing_in", lackingOf(pair));
    }
    json_.number("compared", differences.compared());
    json_.number("differing", differences.differing());
    json_.number("nan_only_in_a", differences.nanOnlyInA());
    json_.number("nan_only_in_b", differences.nanOnlyInB());
    json_.number("nan_of_other_bits", differences.nanOfOtherBits());
    writeGreatest("max_abs", differences.greatest());
    writeGreatest("max_rel", differences.greatestRelative());
    json_.key("values");
    json_.beginArray();
    for (const ValuePair& values : differences.pairs()) {
        json_.beginObject();
        writeValues(values);
        json_.endObject();
    }
    json_.endArray();
    json_.endObject();
}

void DiffJson::writePair(const BlockPair& pair) {
    writeBlock("a", pair.a);
    writeBlock("b", pair.b);
}

void DiffJson::writeBlock(std::string_view key, const std::optional<Block>& block) {
    json_.key(key);
    if (!block) {
        json_.real(record::fillValue);
        return;
    }
    json_.beginObject();
    json_.number("file", block->fileNumber);
    json_.number("band", block->file->band);
    json_.text("name", block->file->name);
    if (block->configuration != nullptr) {
        json_.number("configuration", block->configurationNumber);
        json_.text("label", block->configuration->label);
    }
    json_.endObject();
}

void DiffJson::writeGreatest(std::string_view key,
                             const std::optional<GreatestDistance>& greatest) {
    json_.key(key);
    if (!greatest) {
        json_.real(record::fillValue);
        return;
    }
    json_.beginObject();
    json_.real("distance", greatest->distance);
    writeValues(greatest->pair);
    json_.endObject();
}

void DiffJson::writeValues(const ValuePair& pair) {
    json_.number("detector", pair.detector);
    json_.number("pixel", pair.pixel);
    json_.real("a", pair.a);
    json_.real("b", pair.b);
}

}  // namespace eqrecord
