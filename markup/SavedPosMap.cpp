#include "markup/SavedPosMap.h"

#include <algorithm>

#include "markup/text/NameCompare.h"

void SavedPosMap::Save(SavedPos entry) {
    std::vector<SavedPos>& entries = slots_[slotOf(entry.name)];
    const auto same = std::find_if(entries.begin(), entries.end(),
                                   [&](const SavedPos& other) { return other.name == entry.name; });
    if (same == entries.end()) {
        entries.push_back(std::move(entry));
    } else {
        *same = std::move(entry);
    }
}

const SavedPos* SavedPosMap::Find(std::string_view name) const {
    const auto slot = slots_.find(slotOf(name));
    if (slot == slots_.end()) {
        return nullptr;
    }
    const auto entry = std::find_if(slot->second.begin(), slot->second.end(),
                                    [&](const SavedPos& other) { return other.name == name; });
    return entry == slot->second.end() ? nullptr : &*entry;
}

int SavedPosMap::slotOf(std::string_view name) const {
    return static_cast<int>(markup::byteSum(name, false) % static_cast<unsigned>(slotCount_));
}

SavedPosMap* SavedPosMapArray::GetMap(int number) {
    if (number < 0) {
        return nullptr;
    }
    highest_ = std::max(highest_, number);
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
