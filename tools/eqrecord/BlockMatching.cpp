// Pairs are found by key and then brought into an order that both records have a part in: that of A
// alone would make the listing of A and B another one than that of B and A. Where both have their
// blocks in the same order, as is usual, it is theirs.

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
    const std::size_t level = isFile ? 0 : 1;  // a configuration may have an empty label
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

/// Blocks of both records that have the same key.
struct Candidates {
    std::vector<Block> ofA;
    std::vector<Block> ofB;
};

void appendPairs(const Candidates& candidates, std::vector<BlockPair>& pairs) {
    const std::vector<Block>& ofA = candidates.ofA;
    const std::vector<Block>& ofB = candidates.ofB;
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

}  // namespace

std::vector<BlockPair> matchBlocks(const record::Reading& a, const record::Reading& b,
                                   const Selection& selection, Match match) {
    // A map without order would leave pairs of the same positions in one that depends on chance.
    std::map<Key, Candidates> byKey;
    std::vector<Block> all = blocksOf(a, selection);
    for (const Block& block : all) {
        byKey[keyOf(block, match)].ofA.push_back(block);
    }
    for (const Block& block : blocksOf(b, selection)) {
        byKey[keyOf(block, match)].ofB.push_back(block);
        all.push_back(block);
    }
    selection.requirePixels(all);
    std::vector<BlockPair> pairs;
    for (const auto& [key, candidates] : byKey) {
        appendPairs(candidates, pairs);
    }
    if (selection.choosesBlocks() && std::ranges::all_of(pairs, &BlockPair::isFile)) {
        throw companion::UsageError("no configuration of either record is selected");
    }
    std::ranges::stable_sort(pairs, {}, orderOf);
    return pairs;
}

}  // namespace eqrecord
