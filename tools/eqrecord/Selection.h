#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "record/Reading.h"

namespace eqrecord {

class Verb;

/// One configuration of a record, and the file that it belongs to. Both belong to the reading.
struct Block {
    const record::File* file = nullptr;
    std::size_t fileNumber = 0;  ///< from 1
    const record::Configuration* configuration = nullptr;
    std::size_t configurationNumber = 0;  ///< in its file, from 1
};

/// Which parts of a record a verb works on. What is not chosen by an option is all there is.
class Selection {
  public:
    /// Adds --file, --band, --configuration, --detector, --kind and --pixel. The selection has to
    /// outlive the parsing.
    void addTo(Verb& verb);

    /// The selected configurations in their order. Throws companion::UsageError when options choose
    /// among them, or among their pixels, and none is left.
    std::vector<Block> blocksOf(const record::Reading& reading) const;
    bool takesFile(const record::File& file, std::size_t number) const;
    /// The same of a file without configurations, which is not taken for one of these.
    bool takesEmptyFile(const record::File& file, std::size_t number) const;
    bool takesConfiguration(const record::Configuration& configuration) const;
    /// Whether there are configurations that it doesn't take.
    bool choosesConfigurations() const { return !labels_.empty(); }
    /// `kind` is from 0 to 3.
    bool takesKind(int kind) const;
    /// `detector` is from 1 to 12.
    bool takesDetector(int detector) const;
    /// The first selected pixel, from 1, and the number of those of `pixels` that are selected from
    /// there on.
    struct Pixels {
        std::size_t first = 1;
        std::size_t count = 0;
    };
    Pixels pixelsOf(std::size_t pixels) const;
    /// Throws companion::UsageError when these configurations have pixels, and none that is
    /// selected. Blocks without a configuration are passed over.
    void requirePixels(const std::vector<Block>& blocks) const;
    /// Whether files or configurations are chosen by an option.
    bool choosesBlocks() const { return !files_.empty() || !bands_.empty() || !labels_.empty(); }
    /// Whether all is selected.
    bool isAll() const;
    /// Whether all is selected of the configurations that are.
    bool takesAllOfBlocks() const {
        return detectors_.empty() && kinds_.empty() && pixels_.empty();
    }

  private:
    struct Range {
        std::size_t first = 0;
        std::size_t last = 0;
    };

    std::vector<Range> files_;
    std::vector<Range> bands_;
    std::vector<std::string> labels_;
    std::vector<Range> detectors_;
    std::vector<int> kinds_;
    std::vector<Range> pixels_;  ///< one at most
};

}  // namespace eqrecord
