#include "tools/eqrecord/StatsJson.h"

#include <cstdint>

#include "record/Layout.h"

namespace eqrecord {

StatsJson::StatsJson(const OpenRecord& record, const std::optional<OutlierRule>& rule,
                     std::ostream& out)
    : out_(out), json_(out), showsOutliers_(rule) {
    json_.beginObject();
    writeText("schema", "eqrecord-stats-1");
    writeText("path", record.path());
    if (record.isIncomplete()) {
        json_.key("incomplete");
        json_.boolean(true);
    }
    if (rule) {
        json_.key("outlier_rule");
        json_.beginObject();
        json_.key("sigma");
        json_.real(rule->sigma);
        writeNumber("window", rule->window);
        json_.endObject();
    }
    json_.key("configurations");
    json_.beginArray();
}

void StatsJson::write(const Block& block, const std::vector<VectorStats>& vectors) {
    json_.beginObject();
    writeNumber("file", block.fileNumber);
    writeNumber("band", block.file->band);
    writeText("name", block.file->name);
    writeNumber("configuration", block.configurationNumber);
    writeText("label", block.configuration->label);
    writeNumber("pixels", static_cast<std::size_t>(block.configuration->pixels));
    json_.key("vectors");
    json_.beginArray();
    for (const VectorStats& vector : vectors) {
        writeVector(vector);
        outliers_ += vector.outliers.size();
    }
    json_.endArray();
    json_.endObject();
}

void StatsJson::end() {
    json_.endArray();
    if (showsOutliers_) {
        writeNumber("outliers", outliers_);
    }
    json_.endObject();
    out_ << '\n';
}

void StatsJson::writeVector(const VectorStats& vector) {
    json_.beginObject();
    writeText("kind", record::kindNames[static_cast<std::size_t>(vector.kind)]);
    writeNumber("detector", static_cast<std::size_t>(vector.detector));
    const Figures& figures = vector.figures;
    writeNumber("values", figures.values);
    writeNumber("nan", figures.nan);
    writeNumber("infinite", figures.infinite);
    writeNumber("length", figures.length);
    for (std::size_t i = 0; i < Figures::names.size(); ++i) {
        json_.key(Figures::names[i]);
        json_.real(figures.figures[i].value_or(record::fillValue));
    }
    if (showsOutliers_) {
        writeOutliers(vector.outliers);
    }
    json_.endObject();
}

void StatsJson::writeOutliers(const std::vector<Outlier>& outliers) {
    json_.key("outliers");
    json_.beginArray();
    for (const Outlier& outlier : outliers) {
        json_.beginObject();
        writeNumber("pixel", outlier.pixel);
        json_.key("value");
        json_.real(outlier.value);
        json_.key("median");
        json_.real(outlier.median);
        json_.endObject();
    }
    json_.endArray();
}

void StatsJson::writeText(std::string_view key, std::string_view text) {
    json_.key(key);
    json_.text(text);
}

void StatsJson::writeNumber(std::string_view key, std::size_t number) {
    json_.key(key);
    json_.number(std::uint64_t{number});
}

}  // namespace eqrecord
