// Whether a value is an outlier is decided among all pixels of its vector: what is selected is what
// is shown, and does not change what it means. Figures are those of the selected pixels.

#include "tools/eqrecord/Stats.h"

#include <memory>
#include <optional>

#include "lint/Printable.h"
#include "tools/companion/OutputFile.h"
#include "tools/companion/Program.h"
#include "tools/eqrecord/OpenRecord.h"
#include "tools/eqrecord/Outliers.h"
#include "tools/eqrecord/StatsCsv.h"
#include "tools/eqrecord/StatsJson.h"
#include "tools/eqrecord/StatsText.h"
#include "tools/eqrecord/Telling.h"
#include "tools/eqrecord/Verb.h"

namespace eqrecord {

namespace {

constexpr const char* footer =
    "NaN and infinities are counted, and left out of all other figures. The deviation is the\n"
    "standard deviation (of all values, not of a sample), MAD the median absolute deviation,\n"
    "odd-even the mean of odd pixels less that of even ones. 'length' leaves out the NaN at the\n"
    "end. Text is rounded; JSON and CSV are not, and have null, or nothing, for a figure that\n"
    "there are no values for.\n"
    "\n"
    "An outlier is further from the median of its neighbours of the same parity than S times\n"
    "1.4826 times the MAD of these distances in its vector; where that is 0, it is any value that\n"
    "is not this median. An infinite value is one, NaN never.\n"
    "\n"
    "Status 0: done; 1: --fail-on-outliers, and there are some; 2: trouble.\n"
    "\n"
    "Examples:\n"
    "  eqrecord stats EQ_B4.record\n"
    "  eqrecord stats --kind A1 --outliers EQ_B4.record\n"
    "  eqrecord stats --format csv --configuration ALL EQ_B4.record > figures.csv";

struct Options {
    Arguments arguments;
    Selection selection;
    OutlierRule rule;
    bool showsOutliers = false;
    bool failsOnOutliers = false;
};

std::unique_ptr<StatsReport> makeReport(const Options& options, OpenRecord& record,
                                        std::ostream& out) {
    if (options.arguments.format == "json") {
        const auto rule = options.showsOutliers ? std::optional(options.rule) : std::nullopt;
        return std::make_unique<StatsJson>(record, rule, out);
    }
    if (options.arguments.format == "csv") {
        return std::make_unique<StatsCsv>(out, options.showsOutliers);
    }
    if (record.outcome().state >= record::State::trailing) {
        out << lint::printable(record.path()) << ": " << tell(record.reader()).front() << "\n\n";
    }
    return std::make_unique<StatsText>(out, options.showsOutliers);
}

/// Of one vector, all of it.
VectorStats statsOf(const Options& options, std::span<const double> values) {
    const Selection::Pixels pixels = options.selection.pixelsOf(values.size());
    VectorStats stats;
    stats.figures = figuresOf(
        values.subspan(pixels.count == 0 ? 0 : pixels.first - 1, pixels.count), pixels.first);
    if (!options.showsOutliers) {
        return stats;
    }
    const std::vector<std::size_t> outliers = outliersOf(values, options.rule);
    if (!outliers.empty()) {
        const std::vector<double> medians = runningMediansOf(values, options.rule.window);
        for (const std::size_t i : outliers) {
            if (i + 1 >= pixels.first && i + 1 < pixels.first + pixels.count) {
                stats.outliers.push_back({i + 1, values[i], medians[i]});
            }
        }
    }
    return stats;
}

std::vector<VectorStats> statsOf(const Options& options, record::RecordReader& reader,
                                 const record::Configuration& configuration) {
    std::vector<VectorStats> all;
    std::vector<double> values(static_cast<std::size_t>(configuration.pixels));
    for (int kind = 0; kind < record::kindCount; ++kind) {
        for (int detector = 1; detector <= record::detectorCount; ++detector) {
            if (options.selection.takesKind(kind) && options.selection.takesDetector(detector)) {
                reader.readVector(configuration, kind, detector, values);
                VectorStats& stats = all.emplace_back(statsOf(options, values));
                stats.kind = kind;
                stats.detector = detector;
            }
        }
    }
    return all;
}

int tellStats(const Options& options) {
    OpenRecord record(options.arguments.record(), options.arguments);
    const std::vector<Block> blocks = options.selection.blocksOf(record.reading());
    companion::OutputFile output("-", false);
    const auto report = makeReport(options, record, output.stream());
    bool isAnyOutlier = false;
    for (const Block& block : blocks) {
        const auto vectors = statsOf(options, record.reader(), *block.configuration);
        report->write(block, vectors);
        for (const VectorStats& vector : vectors) {
            isAnyOutlier = isAnyOutlier || !vector.outliers.empty();
        }
    }
    report->end();
    output.commit();
    return isAnyOutlier && options.failsOnOutliers ? companion::somethingFound
                                                   : companion::nothingFound;
}

/// An option that says what outliers are, or what to do about them, would mean nothing without
/// them.
void addOutliers(Verb& verb, Options& options) {
    constexpr const char* group = "Outliers";
    constexpr std::uint64_t mostPixels = 32767;
    verb.addFlag(group, "--outliers", options.showsOutliers,
                 "Show them, too; so do the options below");
    verb.addReal({group, "--sigma", "S",
                  "How far off they are, in standard\ndeviations of noise (default 6)"},
                 true, [&options](double sigma) {
                     options.rule.sigma = sigma;
                     options.showsOutliers = true;
                 });
    verb.addWhole(
        {group, "--window", "N", "How far away neighbours are at most,\nin pixels (default 24)"}, 2,
        mostPixels, [&options](std::uint64_t window) {
            options.rule.window = window;
            options.showsOutliers = true;
        });
    verb.addFlag(group, "--fail-on-outliers", options.failsOnOutliers,
                 "End with 1 when there are any");
}

}  // namespace

void addStats(CLI::App& app, Work& work) {
    Verb verb(app, "stats", "[OPTION...] RECORD",
              "Tell figures of a record's vectors, and their outliers");
    const auto options = std::make_shared<Options>();
    verb.addOperands("RECORD", false, options->arguments.records);
    options->selection.addTo(verb);
    addOutliers(verb, *options);
    verb.addFormat(options->arguments, {"text", "json", "csv"});
    verb.addReading(options->arguments);
    verb.end(footer, [options, &work] {
        options->showsOutliers = options->showsOutliers || options->failsOnOutliers;
        work = [options] { return tellStats(*options); };
    });
}

}  // namespace eqrecord
