// The results are made into text when they come, and the document around them when all are there:
// so that the worst stand first, nothing can be written before. What is kept is bounded by the
// limit for each severity, not by the number of findings.

#include "lint/SarifReport.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <span>
#include <utility>

#include "lint/Json.h"

namespace lint {

namespace {

Json textOf(std::string_view text) {
    Json json;
    json["text"] = text;
    return json;
}

Json jsonOf(const Rule& rule) {
    const std::string summary = std::string(rule.summary) + '.';
    Json json;
    json["id"] = rule.id;
    json["shortDescription"] = textOf(summary);
    json["fullDescription"] = textOf(summary + " The converter " + std::string(rule.effect) + '.');
    json["help"] =
        textOf(std::string(rule.explanation) + "\n\nExample:\n" + std::string(rule.example));
    json["defaultConfiguration"]["level"] = nameOf(rule.severity);
    return json;
}

/// A line or a column of 0 would make a code host refuse the whole document.
Json regionOf(const Place& place) {
    Json json;
    json["startLine"] = std::max(place.line, 1);
    json["startColumn"] = std::max(place.column, 1);
    json["endLine"] = std::max(place.endLine, 1);
    json["endColumn"] = std::max(place.endColumn, 1);
    return json;
}

Json locationOf(const Finding& finding) {
    Json artifact;
    artifact["uri"] = uriOf(finding.path);
    if (!finding.path.starts_with('/')) {
        artifact["uriBaseId"] = "%SRCROOT%";
    }
    Json location;
    location["physicalLocation"]["artifactLocation"] = std::move(artifact);
    location["physicalLocation"]["region"] = regionOf(finding.place);
    if (!finding.where.empty()) {
        location["logicalLocations"][0]["fullyQualifiedName"] = finding.where;
    }
    return location;
}

Json jsonOf(const Finding& finding) {
    Json json;
    json["ruleId"] = finding.rule->id;
    json["ruleIndex"] =
        std::find_if(rules().begin(), rules().end(),
                     [&](const Rule& rule) { return rule.id == finding.rule->id; }) -
        rules().begin();
    json["level"] = nameOf(finding.severity);
    json["message"] = textOf(finding.message + (finding.isReached ? "" : " (not reached)"));
    json["locations"][0] = locationOf(finding);
    if (finding.count > 1) {
        json["occurrenceCount"] = finding.count;
    }
    json["partialFingerprints"]["eqlint/v1"] = fingerprintOf(finding);
    return json;
}

/// What a run was; `kept` of `total` results are in the document.
Json invocationOf(int status, std::size_t kept, std::size_t total) {
    Json json;
    json["executionSuccessful"] = true;
    json["exitCode"] = status;
    if (kept < total) {
        Json notification;
        notification["level"] = "warning";
        notification["message"] = textOf(std::to_string(total - kept) + " of " +
                                         std::to_string(total) + " findings are left out");
        json["toolExecutionNotifications"][0] = std::move(notification);
    }
    return json;
}

}  // namespace

std::string uriOf(std::string_view path) {
    constexpr std::string_view plain =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~/";
    std::string uri = path.starts_with('/') ? "file://" : "";
    for (const char c : path) {
        if (plain.find(c) != std::string_view::npos) {
            uri += c;
            continue;
        }
        char escape[4];
        std::snprintf(escape, sizeof escape, "%%%02X", static_cast<unsigned char>(c));
        uri += escape;
    }
    return uri;
}

std::string fingerprintOf(const Finding& finding) {
    std::uint64_t hash = 0xCBF29CE484222325;  // FNV-1a, 64 bits
    const auto addByte = [&hash](char c) {
        hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001B3;
    };
    const auto addText = [&](std::string_view text) {
        std::for_each(text.begin(), text.end(), addByte);
        addByte('\0');
    };
    std::string message = finding.message;
    std::erase_if(message, [](char c) { return c >= '0' && c <= '9'; });
    addText(finding.rule->id);
    addText(finding.where);
    addText(message);
    char digits[17];
    std::snprintf(digits, sizeof digits, "%016llx", static_cast<unsigned long long>(hash));
    return digits;
}

SarifReport::SarifReport(std::ostream& out, std::string version, Threshold threshold)
    : out_(out), version_(std::move(version)), threshold_(threshold) {}

void SarifReport::add(const Finding& finding) {
    std::vector<std::string>& results = results_[static_cast<std::size_t>(finding.severity)];
    if (results.size() < limit) {
        results.push_back(dumped(jsonOf(finding)));
    }
    ++total_;
}

void SarifReport::end(const Counts& counts, const Conversion&) {
    Json driver;
    driver["name"] = "eqlint";
    driver["version"] = version_;
    Json& descriptions = driver["rules"] = Json::array();
    for (const Rule& rule : rules()) {
        descriptions.push_back(jsonOf(rule));
    }
    const std::size_t kept = std::min(total_, limit);
    out_ << R"({"$schema":"https://json.schemastore.org/sarif-2.1.0.json","version":"2.1.0",)"
         << "\n\"runs\":[{\"tool\":{\"driver\":" << dumped(driver)
         << "},\n\"columnKind\":\"unicodeCodePoints\",\n\"invocations\":["
         << dumped(invocationOf(threshold_.statusFor(counts), kept, total_)) << "],\n\"results\":[";
    std::size_t written = 0;
    for (auto severity = results_.rbegin(); severity != results_.rend(); ++severity) {
        const std::size_t left = kept - written;
        for (const std::string& result :
             std::span(*severity).first(std::min(severity->size(), left))) {
            out_ << (written++ == 0 ? "\n" : ",\n") << result;
        }
    }
    out_ << "]}]}\n";
}

}  // namespace lint
