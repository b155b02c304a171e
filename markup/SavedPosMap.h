#pragma once

#include <map>
#include <string>
#include <string_view>

/// Which position a saved entry holds; with neither flag, it is the parent position.
enum SavedPosFlag : int {
    SavedPosMain = 1,
    SavedPosChild = 2,
};

/// One saved position.
struct SavedPos {
    int pos = 0;    ///< record index
    int flags = 0;  ///< `SavedPosFlag` bits
};

/// Named positions, hashed by name into a fixed number of slots.
class SavedPosMap {
  public:
    static constexpr int defaultSlots = 7;

    /// Requires: slots >= 1.
    explicit SavedPosMap(int slots = defaultSlots) : slotCount_(slots) {}

    /// Stores a position under a name, in place of an earlier one of that name.
    void Save(std::string_view name, SavedPos entry);
    /// The position saved under `name`, null when there is none; valid until the map changes.
    const SavedPos* Find(std::string_view name) const;
    /// Drops the entries whose record `inUse` denies.
    template <class InUse>
    void KeepOnly(InUse inUse) {
        for (auto& [number, slot] : slots_) {
            std::erase_if(slot, [&](const auto& entry) { return !inUse(entry.second.pos); });
        }
    }

  private:
    int slotOf(std::string_view name) const;

    int slotCount_;
    /// By number, only those ever used; the entries of each by name.
    std::map<int, std::map<std::string, SavedPos, std::less<>>> slots_;
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
