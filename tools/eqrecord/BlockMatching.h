#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "record/Reading.h"
#include "tools/eqrecord/Selection.h"

namespace eqrecord {

/// By what blocks of two records belong together.
enum class Match {
    band,      ///< by their file's band and their label
    position,  ///< by their numbers
    name,      ///< by their file's name and their label
};

/// A block of one record and that of the other that belongs to it, or one that stands alone. A
/// block without a configuration stands for the file as such.
struct BlockPair {
    std::optional<Block> a;
    std::optional<Block> b;
    std::size_t occurrence = 1;  ///< of several that could be taken for each other, from 1

    /// One that is there.
    const Block& any() const { return a ? *a : *b; }
    bool isFile() const { return any().configuration == nullptr; }
};

/// Pairs the selected files and configurations of two readings, which have to outlive the pairs.
/// Those of the same band and label, or name and label, are paired in their order. The pairs come
/// in the order of the records; where these differ, so that it does not matter which one is a.
/// Throws companion::UsageError when the selection leaves no configuration of either, or no pixel.
std::vector<BlockPair> matchBlocks(const record::Reading& a, const record::Reading& b,
                                   const Selection& selection, Match match);

}  // namespace eqrecord
