// Slots are made when they are first used: a map may have been given any number of them, and a
// document any number of maps. What a slot is for, to keep a search short, the maps of the standard
// library do; the number of slots only shows in which names share one.

#include "markup/SavedPosMap.h"

#include <algorithm>

#include "markup/text/NameCompare.h"

void SavedPosMap::Save(std::string_view name, SavedPos entry) {
    slots_[slotOf(name)].insert_or_assign(std::string(name), entry);
}

const SavedPos* SavedPosMap::Find(std::string_view name) const {
    const auto slot = slots_.find(slotOf(name));
    if (slot == slots_.end()) {
        return nullptr;
    }
    const auto entry = slot->second.find(name);
    return entry == slot->second.end() ? nullptr : &entry->second;
}

int SavedPosMap::slotOf(std::string_view name) const {
    return static_cast<int>(markup::byteSum(name, false) % static_cast<unsigned>(slotCount_));
}

SavedPosMap* SavedPosMapArray::GetMap(int number) {
    if (number < 0) {
        return nullptr;
    }
    highest_ = std::max(highest_, number);  // all below exist from now on, too
    return &maps_[number];
}

bool SavedPosMapArray::SetMapSize(int slots, int number) {
    if (slots < 1 || number <= highest_) {
        return false;
    }
    highest_ = number;
    maps_.emplace(number, SavedPosMap(slots));
    return true;
}

void SavedPosMapArray::RemoveAll() {
    maps_.clear();
    highest_ = -1;
}
