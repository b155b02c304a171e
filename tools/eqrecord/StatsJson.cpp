// A figure is null when there is none, never NaN or 0: of no values there is neither a least one
// nor a mean.

#include "tools/eqrecord/StatsJson.h"

#include "record/Layout.h"

namespace eqrecord {

StatsJson::StatsJson(const OpenRecord& record, const std::optional<OutlierRule>& rule,
                     std::ostream& out)
    : out_(out), json_(out), showsOutliers_(rule) {
    json_.beginObject();
    json_.text("schema", "eqrecord-stats-1");
    json_.text("path", record.path());
    if (record.isIncomplete()) {
        json_.boolean("incomplete", true);
    }
    if (rule) {
        json_.key("outlier_rule");
        json_.beginObject();
        json_.real("sigma", rule->sigma);
        json_.number("window", rule->window);
        json_.endObject();
    }
    json_.key("configurations");
    json_.beginArray();
}

void StatsJson::write(const Block& block, const std::vector<VectorStats>& vectors) {
    json_.beginObject();
    json_.number("file", block.fileNumber);
    json_.number("band", block.file->band);
    json_.text("name", block.file->name);
    json_.number("configuration", block.configurationNumber);
    json_.text("label", block.configuration->label);
    json_.number("pixels", static_cast<std::size_t>(block.configuration->pixels));
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
        json_.number("outliers", outliers_);
    }
    json_.endObject();
    out_ << '\n';
}

void StatsJson::writeVector(const VectorStats& vector) {
    json_.beginObject();
    json_.text("kind", record::kindNames[static_cast<std::size_t>(vector.kind)]);
    json_.number("detector", static_cast<std::size_t>(vector.detector));
    const Figures& figures = vector.figures;
    json_.number("values", figures.values);
    json_.number("nan", figures.nan);
    json_.number("infinite", figures.infinite);
    json_.number("length", figures.length);
    for (std::size_t i = 0; i < Figures::names.size(); ++i) {
        json_.real(Figures::names[i], figures.figures[i].value_or(record::fillValue));
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
        json_.number("pixel", outlier.pixel);
        json_.real("value", outlier.value);
        json_.real("median", outlier.median);
        json_.endObject();
    }
    json_.endArray();
}

}  // namespace eqrecord
