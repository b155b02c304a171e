#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

/// Which position a saved entry holds; with neither flag, it is the parent position.
enum SavedPosFlag : int {
    SavedPosMain = 1,
    SavedPosChild = 2,
};

/// One named position.
struct SavedPos {
    std::string name;
    int pos;    ///< record index
    int flags;  ///< `SavedPosFlag` bits
};

/// Named positions, hashed by name into a fixed number of slots.
class SavedPosMap {
  public:
    static constexpr int defaultSlots = 7;

    /// Requires: slots >= 1.
    explicit SavedPosMap(int slots = defaultSlots) : slotCount_(slots) {}

    /// Stores a position under its name, in place of an earlier one of that name.
    void Save(SavedPos entry);
    /// The position saved under `name`, null when there is none; valid until the map changes.
    const SavedPos* Find(std::string_view name) const;
    /// Drops the entries whose record `inUse` denies, so that no gap hides those behind them.
    template <class InUse>
    void KeepOnly(InUse inUse) {
        for (auto& [slot, entries] : slots_) {
            std::erase_if(entries, [&](const SavedPos& entry) { return !inUse(entry.pos); });
        }
    }

  private:
    int slotOf(std::string_view name) const;

    int slotCount_;
    std::map<int, std::vector<SavedPos>> slots_;  ///< only those ever used
};

/// The saved position maps of a document, by number. A map exists once it or a map of a higher
/// number was asked for; storage is kept only for those really used, so that a huge number costs
/// nothing.
class SavedPosMapArray {
  public:
    /// Map `number`, created with the default slots when missing; null for a negative number.
    SavedPosMap* GetMap(int number);
    /// Creates map `number` with `slots` slots. False when it exists or an argument is out of
    /// range.
    bool SetMapSize(int slots, int number);
    /// Drops every map.
    void RemoveAll();
    /// Drops the entries of every map whose record `inUse` denies.
    template <class InUse>
    void KeepOnly(InUse inUse) {
        for (auto& [number, map] : maps_) {
            map.KeepOnly(inUse);
        }
    }

  private:
    std::map<int, SavedPosMap> maps_;
    int highest_ = -1;  ///< highest number of a map that exists
};
