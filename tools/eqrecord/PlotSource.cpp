// What a detector has beyond the selected pixels is not shown, but it counts among the neighbours
// that outliers are held against: a picture of a part marks what the picture of the whole marks.
//
// Texts are made safe here, once, so that what draws them has no unsafe ones to draw.

#include "tools/eqrecord/PlotSource.h"

#include <algorithm>
#include <cmath>
#include <deque>
#include <limits>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "lint/Printable.h"
#include "record/Layout.h"
#include "tools/companion/Program.h"
#include "tools/eqrecord/JsonWriter.h"
#include "tools/eqrecord/Outliers.h"

namespace eqrecord {

namespace {

/// Replaces what XML must not have, of which gnuplot knows nothing: two code points that are no
/// characters, and what would end a CDATA section even where there is none.
void escapeForXml(std::string& text) {
    using Pair = std::pair<std::string_view, std::string_view>;
    for (const auto& [bad, good] : {Pair{"\xEF\xBF\xBE", "\\ufffe"},
                                    Pair{"\xEF\xBF\xBF", "\\uffff"}, Pair{"]]>", "]]\\x3e"}}) {
        for (auto at = text.find(bad); at != std::string::npos; at = text.find(bad, at)) {
            text.replace(at, bad.size(), good);
        }
    }
}

/// Where the characters of a text begin, and its end.
std::vector<std::size_t> bordersOf(std::string_view text) {
    std::vector<std::size_t> borders;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if ((text[i] & 0xC0) != 0x80) {
            borders.push_back(i);
        }
    }
    borders.push_back(text.size());
    return borders;
}

/// A text as it may be shown, with its middle left out when it is long: names and paths differ at
/// their ends.
std::string shown(std::string_view text) {
    constexpr std::size_t mostFront = 38;  // in cells of a terminal
    constexpr std::size_t mostBack = 20;
    // Enough for what is shown, however many bytes a character has.
    constexpr std::size_t enough = 1000;
    std::string whole = text.size() <= 2 * enough
                            ? lint::printable(text)
                            : lint::printable(text.substr(0, enough)) +
                                  lint::printable(text.substr(text.size() - enough));
    escapeForXml(whole);
    if (lint::cellsOf(whole) <= mostFront + mostBack + 1) {
        return whole;
    }
    const std::string_view view = whole;
    const std::vector<std::size_t> borders = bordersOf(view);
    const auto front = std::ranges::find_if(borders, [&](std::size_t border) {
        return lint::cellsOf(view.substr(0, border)) > mostFront;
    });
    const auto back = std::ranges::find_if(borders, [&](std::size_t border) {
        return lint::cellsOf(view.substr(border)) <= mostBack;
    });
    return whole.substr(0, *std::prev(front)) + "…" + whole.substr(*back);
}

/// The last component: where a record lies is nothing that a report has to show.
std::string nameOfPath(const std::string& path) {
    return path == "-" ? "standard input" : shown(path.substr(path.rfind('/') + 1));
}

/// The NUC table of a file: its own, or that of a file before it.
std::string nucTableOf(const record::Reading& reading, std::size_t fileNumber) {
    std::string table;
    for (std::size_t i = 0; i < fileNumber; ++i) {
        const auto& own = reading.files[i].nucTableId;
        table = own ? ", NUC table " + std::to_string(*own) : table;
    }
    return table;
}

/// 0 also for two infinities that are the same; NaN when one of the two is.
double difference(double a, double b) {
    return a == b ? 0 : a - b;
}

/// Counts the values of a panel and finds the range of the finite ones.
void measure(PlotPanel& panel) {
    for (const double value : panel.values) {
        panel.infinite += std::isinf(value) ? 1 : 0;
        if (std::isfinite(value)) {
            const bool isFirst = panel.finite++ == 0;
            panel.least = isFirst ? value : std::min(panel.least, value);
            panel.greatest = isFirst ? value : std::max(panel.greatest, value);
        }
    }
}

}  // namespace

std::string titleOf(const Block& block) {
    return shown(block.file->name) + ", band " + std::to_string(block.file->band) +
           ", configuration " + shown(block.configuration->label);
}

PlotSource::PlotSource(OpenRecord& record, OpenRecord* against, const Selection& selection,
                       bool marksOutliers)
    : record_(record), against_(against), selection_(selection), marksOutliers_(marksOutliers) {
    if (against_ != nullptr) {
        match(record_.reading(), against_->reading());
    }
}

void PlotSource::match(const record::Reading& reading, const record::Reading& other) {
    using Key = std::pair<std::uint8_t, std::string_view>;
    const auto forEach = [](const record::Reading& those, const auto& take) {
        for (const record::File& file : those.files) {
            for (const record::Configuration& configuration : file.configurations) {
                take(Key{file.band, configuration.label}, &configuration);
            }
        }
    };
    std::map<Key, std::deque<const record::Configuration*>> others;
    forEach(other,
            [&](const Key& key, auto* configuration) { others[key].push_back(configuration); });
    forEach(reading, [&](const Key& key, auto* configuration) {
        // Each is taken once: the second of two that are alike is compared with a second one.
        if (auto& alike = others[key]; !alike.empty()) {
            counterparts_[configuration] = alike.front();
            alike.pop_front();
        }
    });
}

std::vector<Block> PlotSource::blocks() const {
    std::vector<Block> blocks = selection_.blocksOf(record_.reading());
    if (blocks.empty()) {
        throw std::runtime_error(record_.path() + ": there is no configuration to show");
    }
    return blocks;
}

bool PlotSource::hasCounterpart(const Block& block) const {
    return against_ == nullptr || counterparts_.contains(block.configuration);
}

std::vector<double> PlotSource::valuesOf(const Block& block, int kind) const {
    const auto pixels = static_cast<std::size_t>(block.configuration->pixels);
    std::vector<double> values(pixels * record::detectorCount);
    record_.reader().readKind(*block.configuration, kind, values);
    if (against_ == nullptr) {
        return values;
    }
    const record::Configuration& counterpart = *counterparts_.at(block.configuration);
    const auto otherPixels = static_cast<std::size_t>(counterpart.pixels);
    std::vector<double> others(otherPixels * record::detectorCount);
    against_->reader().readKind(counterpart, kind, others);
    for (std::size_t i = 0; i < values.size(); ++i) {
        // Where the other one ends before this one there is nothing to compare.
        const std::size_t pixel = i % pixels;
        const double other = pixel < otherPixels ? others[i / pixels * otherPixels + pixel]
                                                 : std::numeric_limits<double>::quiet_NaN();
        values[i] = difference(values[i], other);
    }
    return values;
}

PlotPanel PlotSource::panelOf(const PlotPage& page, const Block& block, int kind) const {
    const std::vector<double> all = valuesOf(block, kind);
    const auto pixels = static_cast<std::size_t>(block.configuration->pixels);
    const std::size_t skipped = page.firstPixel - 1;
    PlotPanel panel;
    panel.name = record::kindNames[static_cast<std::size_t>(kind)];
    for (const int detector : page.detectors) {
        const auto whole =
            std::span(all).subspan(static_cast<std::size_t>(detector - 1) * pixels, pixels);
        const std::size_t start = panel.values.size();
        const auto part = page.pixels == 0 ? whole : whole.subspan(skipped, page.pixels);
        panel.values.insert(panel.values.end(), part.begin(), part.end());
        if (!marksOutliers_) {
            continue;
        }
        for (const std::size_t outlier : outliersOf(whole, {})) {
            if (outlier >= skipped && outlier < skipped + page.pixels) {
                panel.outliers.push_back(start + outlier - skipped);
            }
        }
    }
    measure(panel);
    return panel;
}

std::string PlotSource::subtitleOf(const Block& block) const {
    const std::string name = nameOfPath(record_.path());
    if (against_ != nullptr) {
        const std::string other = nameOfPath(against_->path());
        // Records are often told apart by their folders only.
        return "Differences: " + (name == other ? shown(record_.path()) : name) + " minus " +
               (name == other ? shown(against_->path()) : other);
    }
    const record::Reading& reading = record_.reading();
    // What tells one table from another of the same name.
    return name + ", created " + shown(reading.creationDate) +
           nucTableOf(reading, block.fileNumber) + ", epsilon " +
           decimalOf(block.configuration->epsilon());
}

PlotPage PlotSource::pageOf(const Block& block) const {
    const auto pixels = static_cast<std::size_t>(block.configuration->pixels);
    const Selection::Pixels selected = selection_.pixelsOf(pixels);
    if (selected.count == 0 && pixels > 0) {
        throw companion::UsageError("--pixel: " + titleOf(block) + ", has " +
                                    std::to_string(pixels) + " pixels");
    }
    PlotPage page;
    page.title = titleOf(block);
    page.subtitle = subtitleOf(block);
    // A configuration without pixels has a page too, which says so.
    page.firstPixel = selected.first;
    page.pixels = selected.count;
    for (int detector = 1; detector <= record::detectorCount; ++detector) {
        if (selection_.takesDetector(detector)) {
            page.detectors.push_back(detector);
        }
    }
    for (int kind = 0; kind < record::kindCount; ++kind) {
        if (selection_.takesKind(kind)) {
            page.panels.push_back(panelOf(page, block, kind));
        }
    }
    return page;
}

}  // namespace eqrecord
