#pragma once

#include <map>
#include <string>
#include <vector>

#include "tools/eqrecord/OpenRecord.h"
#include "tools/eqrecord/PlotPage.h"
#include "tools/eqrecord/Selection.h"

namespace eqrecord {

/// Where pictures come from: a record, or what it has more than another one.
class PlotSource {
  public:
    /// Nothing is owned; `against` may be null.
    PlotSource(OpenRecord& record, OpenRecord* against, const Selection& selection,
               bool marksOutliers);

    /// The selected configurations. Throws std::runtime_error when there is none.
    std::vector<Block> blocks() const;
    /// Whether the other record, if there is one, has a configuration of the same band and label.
    bool hasCounterpart(const Block& block) const;
    /// One picture. Requires: hasCounterpart(block). Throws companion::UsageError when the
    /// configuration has none of the selected pixels, and what RecordReader throws.
    PlotPage pageOf(const Block& block) const;

  private:
    /// Finds the counterparts; those of the same band and label are matched in their order.
    void match(const record::Reading& reading, const record::Reading& other);
    /// All values of a kind, or their differences.
    std::vector<double> valuesOf(const Block& block, int kind) const;
    PlotPanel panelOf(const PlotPage& page, const Block& block, int kind) const;
    std::string subtitleOf(const Block& block) const;

    OpenRecord& record_;
    OpenRecord* against_;
    const Selection& selection_;
    bool marksOutliers_;
    /// The other record's configurations by those of this one.
    std::map<const record::Configuration*, const record::Configuration*> counterparts_;
};

/// What a configuration is called on pictures and in messages: safe to show, and not too long.
std::string titleOf(const Block& block);

}  // namespace eqrecord
