// Any bytes as parameter files: the checks come to an end, and a run ends as they foretell.

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "fuzz/ParameterFiles.h"
#include "lint/Check.h"
#include "tests/Require.h"

namespace {

/// Holds each finding against what is said of findings.
class Findings : public lint::Report {
  public:
    void add(const lint::Finding& finding) override {
        require(finding.rule != nullptr && finding.severity <= finding.rule->severity,
                "a finding is of a rule, and at most as severe:", finding.message);
        const lint::Place& place = finding.place;
        require(place.line >= 1 && place.column >= 1 &&
                    (place.endLine > place.line ||
                     (place.endLine == place.line && place.endColumn >= place.column)),
                "a place begins before it ends:", finding.message);
        require(finding.message.find('\n') == std::string::npos,
                "a message is a line:", finding.message);
        errors_ += finding.severity == lint::Severity::error ? 1 : 0;
    }
    void end(const lint::Counts&, const lint::Conversion&) override {}

    long errors() const { return errors_; }

  private:
    long errors_ = 0;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static ParameterFiles files;
    const std::vector<const char*> paths = files.put(data, size);
    const Run run(paths);
    lint::CheckOptions options;
    options.keepsMessages = true;
    options.strictXml = size % 2 != 0;
    Findings findings;
    const lint::Conversion foretold = lint::check(paths, options, findings);

    require(foretold.status == run.status, "the status is foretold", std::to_string(run.status));
    require(foretold.recordBytes == static_cast<long long>(run.record.size()),
            "the record's size is foretold", std::to_string(foretold.recordBytes));
    std::string messages;
    for (const std::string& message : foretold.messages) {
        messages += message + "\n";
    }
    // Whether the last one had a line end is not kept.
    const bool isEnded = run.messages.empty() || run.messages.ends_with('\n');
    requireSame(messages, isEnded ? run.messages : run.messages + "\n",
                "the messages are foretold");
    require((findings.errors() > 0) == (run.status != 0),
            "a run ends early where an error is found");
    return 0;
}
