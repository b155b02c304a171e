#include "lint/JsonReport.h"

#include "lint/Json.h"

namespace lint {

namespace {

constexpr std::string_view opening = R"({"schema":"eqlint-1","findings":[)";

Json jsonOf(const Finding& finding) {
    Json json;
    json["id"] = finding.rule->id;
    json["severity"] = nameOf(finding.severity);
    json["path"] = finding.path;
    json["line"] = finding.place.line;
    json["column"] = finding.place.column;
    json["end_line"] = finding.place.endLine;
    json["end_column"] = finding.place.endColumn;
    json["where"] = finding.where;
    json["message"] = finding.message;
    if (!finding.value.empty()) {
        json["value"] = finding.value;
    }
    json["reached"] = finding.isReached;
    if (finding.count > 1) {
        json["count"] = finding.count;
    }
    return json;
}

Json jsonOf(const Conversion& conversion) {
    Json json;
    json["status"] = conversion.status;
    json["record_bytes"] = conversion.recordBytes;
    json["record_complete"] = conversion.isComplete;
    json["messages"] = conversion.messages;
    json["stopped_at"] = nullptr;
    if (conversion.stoppedLine > 0) {
        Json& stop = json["stopped_at"];
        stop["path"] = conversion.stoppedPath;
        stop["line"] = conversion.stoppedLine;
        stop["column"] = conversion.stoppedColumn;
    }
    return json;
}

}  // namespace

void JsonReport::add(const Finding& finding) {
    out_ << (isFirst_ ? opening : ",") << '\n' << dumped(jsonOf(finding));
    isFirst_ = false;
}

void JsonReport::end(const Counts& counts, const Conversion& conversion) {
    Json json;
    json["errors"] = counts.errors;
    json["warnings"] = counts.warnings;
    json["notes"] = counts.notes;
    out_ << (isFirst_ ? opening : "\n") << "],\n\"counts\":" << dumped(json)
         << ",\n\"conversion\":" << dumped(jsonOf(conversion)) << "}\n";
}

}  // namespace lint
