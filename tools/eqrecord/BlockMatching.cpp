#include "tools/eqrecord/BlockMatching.h"

#include <algorithm>
#include <map>
#include <string_view>
#include <tuple>
#include <utility>

#include "tools/companion/Program.h"

namespace eqrecord {

namespace {

/// What blocks that belong together have in common: of the file, then of the configuration.
using Key = std::tuple<std::size_t, std::string_view, std::size_t, std::string_view>;

Key keyOf(const Block& block, Match match) {
    const bool isFile = block.configuration == nullptr;
    if (match == Match::position) {
        return {block.fileNumber, "", block.configurationNumber, ""};
    }
    const std::string_view label = isFile ? std::string_view() : block.configuration->label;
    const std::size_t level = isFile ? 0 : 1;
    return match == Match::band ? Key{block.file->band, "", level, label}
                                : Key{0, block.file->name, level, label};
}

/// The selected files, each before its configurations.
std::vector<Block> blocksOf(const record::Reading& reading, const Selection& selection) {
    std::vector<Block> blocks;
    for (std::size_t i = 0; i < reading.files.size(); ++i) {
        const record::File& file = reading.files[i];
        if (!selection.takesFile(file, i + 1)) {
            continue;
        }
        blocks.push_back({&file, i + 1, nullptr, 0});
        for (std::size_t j = 0; j < file.configurations.size(); ++j) {
            if (selection.takesConfiguration(file.configurations[j])) {
                blocks.push_back({&file, i + 1, &file.configurations[j], j + 1});
            }
        }
    }
    return blocks;
}

std::pair<std::size_t, std::size_t> positionOf(const Block& block) {
    return {block.fileNumber, block.configurationNumber};
}

/// By the earlier of both positions, then the later one. What belongs to none is in both.
auto orderOf(const BlockPair& pair) {
    return std::minmax(
        {positionOf(pair.a ? *pair.a : *pair.b), positionOf(pair.b ? *pair.b : *pair.a)});
}

}  // namespace

std::vector<BlockPair> matchBlocks(const record::Reading& a, const record::Reading& b,
                                   const Selection& selection, Match match) {
    // In the order of their keys, so that pairs of the same positions have one.
    std::map<Key, std::pair<std::vector<Block>, std::vector<Block>>> byKey;
    bool isAny = false;
    for (const Block& block : blocksOf(a, selection)) {
        byKey[keyOf(block, match)].first.push_back(block);
        isAny = isAny || block.configuration != nullptr;
    }
    for (const Block& block : blocksOf(b, selection)) {
        byKey[keyOf(block, match)].second.push_back(block);
        isAny = isAny || block.configuration != nullptr;
    }
    if (!isAny && selection.choosesBlocks()) {
        throw companion::UsageError("no configuration of either record is selected");
    }
    std::vector<BlockPair> pairs;
    for (const auto& [key, blocks] : byKey) {
        const auto& [ofA, ofB] = blocks;
        for (std::size_t i = 0; i < std::max(ofA.size(), ofB.size()); ++i) {
            BlockPair& pair = pairs.emplace_back();
            pair.occurrence = i + 1;
            if (i < ofA.size()) {
                pair.a = ofA[i];
            }
            if (i < ofB.size()) {
                pair.b = ofB[i];
            }
        }
    }
    std::ranges::stable_sort(pairs, {}, orderOf);
    return pairs;
}

}  // namespace eqrecord
