// Every name at every place of nesting has one entry, which stays when its tag is closed: the next
// tag of that name in the same parent goes on counting there. Entries are hashed by name only, so
// that a slot chains those of all places; the parent tells them apart.

#include "markup/ElemStack.h"

#include <algorithm>

#include "markup/text/NameCompare.h"

int ElemStack::PushTagAndCount(std::string_view name) {
    const int slot = CalcSlot(name.data(), static_cast<int>(name.size()), ignoreCase_);
    int& head = slots_[static_cast<std::size_t>(slot)];
    ++depth_;
    for (int index = head; index != 0;) {
        Tag& tag = tags_[static_cast<std::size_t>(index) - 1];
        if (tag.parent == current_ && markup::namesEqual(tag.name, name, ignoreCase_)) {
            current_ = index;
            return ++tag.count;
        }
        index = tag.nextInSlot;
    }
    if (tags_.size() == tags_.capacity()) {
        Alloc(std::max(initialTags, 2 * static_cast<int>(tags_.size())));
    }
    tags_.push_back({std::string(name), 1, current_, head});
    // The newest entry comes first in its slot: it is the likeliest to be asked for.
    current_ = head = static_cast<int>(tags_.size());
    return 1;
}

void ElemStack::PopTag() {
    if (current_ != 0) {
        current_ = tags_[static_cast<std::size_t>(current_) - 1].parent;
        --depth_;
    }
}

int ElemStack::CalcSlot(const char* name, int length, bool ignoreCase) {
    if (name == nullptr || length <= 0) {
        return 0;
    }
    const std::string_view text(name, static_cast<std::size_t>(length));
    return static_cast<int>(markup::byteSum(text, ignoreCase) % unsigned{slotCount});
}
