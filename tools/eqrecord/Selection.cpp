// Options choose what is there and never change what it means: files, detectors and pixels keep
// their numbers. An option that chooses nothing is more likely a slip than a wish, so it is told.

#include "tools/eqrecord/Selection.h"

#include <algorithm>
#include <charconv>
#include <string_view>

#include "record/Layout.h"
#include "tools/companion/Program.h"
#include "tools/eqrecord/Verb.h"

namespace eqrecord {

namespace {

constexpr const char* group = "Selection";

/// A kind's name without "COEFF_", which is what the command line calls it.
constexpr std::string_view shortNameOf(std::string_view kind) {
    return kind.substr(std::string_view("COEFF_").size());
}

bool readNumber(std::string_view text, std::size_t& number) {
    const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
    return result.ec == std::errc() && result.ptr == text.data() + text.size();
}

std::vector<std::string_view> piecesOf(std::string_view text) {
    std::vector<std::string_view> pieces;
    for (std::size_t comma = 0; comma != std::string_view::npos;) {
        comma = text.find(',');
        pieces.push_back(text.substr(0, comma));
        text.remove_prefix(std::min(text.size(), pieces.back().size() + 1));
    }
    return pieces;
}

/// "N" or "N-N" within the limits; a message when it is not.
template <class Range>
std::string readRange(std::string_view text, std::size_t least, std::size_t most, Range& range) {
    const std::size_t dash = text.find('-');
    const std::string_view last = dash == std::string_view::npos ? text : text.substr(dash + 1);
    if (!readNumber(text.substr(0, dash), range.first) || !readNumber(last, range.last)) {
        return '"' + std::string(text) + "\" is no number and no range of two";
    }
    if (range.last < range.first) {
        return std::string(text) + " ends before it begins";
    }
    if (range.first < least || range.last > most) {
        return std::string(text) + " is not within " + std::to_string(least) + " to " +
               std::to_string(most);
    }
    return "";
}

/// Adds an option that takes ranges and throws what is wrong with them.
template <class Range>
void addRanges(Verb& verb, const char* name, const char* valueName, std::size_t least,
               std::size_t most, std::vector<Range>& ranges, const char* text) {
    verb.addOption({group, name, valueName, text}, [=, &ranges](const std::string& value) {
        ranges.clear();
        for (const std::string_view piece : piecesOf(value)) {
            const std::string wrong = readRange(piece, least, most, ranges.emplace_back());
            if (!wrong.empty()) {
                throw companion::UsageError(std::string(name) + ": " + wrong);
            }
        }
        if (std::string_view(valueName).find(',') == std::string_view::npos && ranges.size() > 1) {
            throw companion::UsageError(std::string(name) + ": one range at most");
        }
    });
}

template <class Range>
bool isIn(const std::vector<Range>& ranges, std::size_t number) {
    return ranges.empty() || std::ranges::any_of(ranges, [&](const Range& range) {
               return range.first <= number && number <= range.last;
           });
}

void readKinds(const std::string& value, std::vector<int>& kinds) {
    kinds.clear();
    for (const std::string_view piece : piecesOf(value)) {
        const auto* const name = std::ranges::find_if(
            record::kindNames,
            [&](std::string_view kind) { return kind == piece || shortNameOf(kind) == piece; });
        if (name == record::kindNames.end()) {
            throw companion::UsageError("--kind: \"" + std::string(piece) +
                                        "\" is none of A1, A2, ZS, D");
        }
        kinds.push_back(static_cast<int>(name - record::kindNames.begin()));
    }
}

}  // namespace

void Selection::addTo(Verb& verb) {
    constexpr std::size_t mostFiles = 999'999'999;
    constexpr std::size_t mostPixels = 32767;
    addRanges(verb, "--file", "N[-N][,...]", 1, mostFiles, files_, "Files, by their number");
    addRanges(verb, "--band", "N[-N][,...]", 0, 255, bands_, "Files, by their band");
    verb.addMany({group, "--configuration", "LABEL", "Configurations; may be given several times"},
                 false, labels_);
    addRanges(verb, "--detector", "N[-N][,...]", 1, record::detectorCount, detectors_,
              "Detectors, 1 to 12");
    verb.addOption({group, "--kind", "KIND[,...]", "Kinds of coefficient: A1, A2, ZS, D"},
                   [this](const std::string& value) { readKinds(value, kinds_); });
    addRanges(verb, "--pixel", "N[-N]", 1, mostPixels, pixels_, "Pixels, from 1");
}

std::vector<Block> Selection::blocksOf(const record::Reading& reading) const {
    std::vector<Block> blocks;
    for (std::size_t i = 0; i < reading.files.size(); ++i) {
        const record::File& file = reading.files[i];
        for (std::size_t j = 0; takesFile(file, i + 1) && j < file.configurations.size(); ++j) {
            if (takesConfiguration(file.configurations[j])) {
                blocks.push_back({&file, i + 1, &file.configurations[j], j + 1});
            }
        }
    }
    if (blocks.empty() && choosesBlocks()) {
        throw companion::UsageError("no configuration of the record is selected");
    }
    requirePixels(blocks);
    return blocks;
}

bool Selection::takesFile(const record::File& file, std::size_t number) const {
    return isIn(files_, number) && isIn(bands_, file.band);
}

bool Selection::takesEmptyFile(const record::File& file, std::size_t number) const {
    return labels_.empty() && takesFile(file, number);
}

bool Selection::takesConfiguration(const record::Configuration& configuration) const {
    return labels_.empty() || std::ranges::find(labels_, configuration.label) != labels_.end();
}

bool Selection::takesKind(int kind) const {
    return kinds_.empty() || std::ranges::find(kinds_, kind) != kinds_.end();
}

bool Selection::takesDetector(int detector) const {
    return isIn(detectors_, static_cast<std::size_t>(detector));
}

Selection::Pixels Selection::pixelsOf(std::size_t pixels) const {
    if (pixels_.empty()) {
        return {1, pixels};
    }
    const std::size_t last = std::min(pixels_[0].last, pixels);
    return {pixels_[0].first, last < pixels_[0].first ? 0 : last - pixels_[0].first + 1};
}

void Selection::requirePixels(const std::vector<Block>& blocks) const {
    std::size_t most = 0;
    std::size_t selected = 0;
    for (const Block& block : blocks) {
        if (block.configuration != nullptr) {
            const auto pixels = static_cast<std::size_t>(block.configuration->pixels);
            most = std::max(most, pixels);
            selected = std::max(selected, pixelsOf(pixels).count);
        }
    }
    if (most > 0 && selected == 0) {
        throw companion::UsageError("--pixel: no selected configuration has such a pixel; " +
                                    std::to_string(most) + " is the last one that there is");
    }
}

bool Selection::isAll() const {
    return !choosesBlocks() && takesAllOfBlocks();
}

}  // namespace eqrecord
