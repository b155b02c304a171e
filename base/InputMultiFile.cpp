// A chain reads from its current member; position_ is starts_[current_] and the member's own
// offset. Where members start is found out on the way, since a pipe has no size: starts_ ends with
// the last member that reading or seeking has come to. Up to there a target is looked up, behind it
// the chain walks from member to member and asks each where it ends, a pipe by reading on.
//
// A member is brought to its place before the chain counts as moved: a pipe that can't go back
// throws, and the chain then stays where it was.

#include "base/InputMultiFile.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <memory>
#include <string>
#include <utility>

#include "base/Exception.h"
#include "base/FileUtils.h"
#include "base/InputServer.h"
#include "base/InputStreamStl.h"
#include "base/SaturatingAdd.h"

namespace vek {

namespace {

/// Counts chains that are being opened within one another. They have no use, and options that name
/// "multi" again and again would exhaust the stack.
class NestedOpening {
  public:
    NestedOpening() { ++depth_; }
    ~NestedOpening() { --depth_; }
    NestedOpening(const NestedOpening&) = delete;
    NestedOpening& operator=(const NestedOpening&) = delete;

    static bool isTooDeep() { return depth_ > mostNested; }

  private:
    static constexpr int mostNested = 16;
    inline static int depth_ = 0;
};

bool isHidden(const String& path) {
    return FileUtils::baseName(path.c_str(), false).match(".*");
}

/// Whether the file stands for a text made of its name.
bool isNameText(const String& path) {
    return path.match("*@");
}

/// The base name behind its length in two digits.
std::string nameText(const String& path) {
    const String base = FileUtils::baseName(path.c_str(), false);
    std::array<char, 16> digits;
    std::snprintf(digits.data(), digits.size(), "%02d", base.length());
    return digits.data() + std::string(base.view());
}

[[noreturn]] void throwNothingMatches(String pattern, String folder) {
    const String message =
        String("no file matching ") + pattern.quote('"') + " in folder " + folder.quote('"');
    throw StdError(message.c_str(), ENOENT);
}

}  // namespace

InputMultiFile::InputMultiFile(const char* name, ByteOrder order) : InputStream(name, order) {
    starts_.append(0);
}

bool InputMultiFile::open(const char* driver, const char* options) {
    const NestedOpening opening;
    if (NestedOpening::isTooDeep()) {
        return false;
    }
    const bool isOpen = FileUtils::checkFile(name_.c_str())
                            ? addMember(name_.c_str(), driver, options)
                            : addMatches(driver, options);
    if (!isOpen) {
        return false;
    }
    totalSize_ = 0;
    for (long i = 0; i < members_.count(); ++i) {
        isFifo_ = isFifo_ || members_[i]->isFifo();
        totalSize_ = saturatingAdd(totalSize_, members_[i]->size());
    }
    totalSize_ = isFifo_ ? 0 : totalSize_;
    return true;
}

/// Opens one member; false when its driver refuses.
bool InputMultiFile::addMember(const char* name, const char* driver, const char* options) {
    std::unique_ptr<InputStream> member(
        InputServer::getInstance()->getFile(name, order_, driver, options));
    if (!member) {
        return false;
    }
    members_.append(std::move(member));
    return true;
}

/// Opens what the name matches as a pattern. Of the listing only regular files and pipes count: a
/// device or socket would be taken for a pattern that matches itself, without end.
bool InputMultiFile::addMatches(const char* driver, const char* options) {
    const String pattern = FileUtils::baseName(name_.c_str(), false);
    const String folder = FileUtils::dirName(name_.c_str(), false);
    ObjAppendListP<String> listing;
    FileUtils::listFiles(folder.c_str(), pattern.c_str(), false, listing);
    bool matches = false;
    for (long i = 0; i < listing.count(); ++i) {
        const String& path = *listing[i];
        if (isHidden(path)) {
            // No member, but a match: a chain of hidden files alone is empty, as is required.
            matches = true;
        } else if (isNameText(path)) {
            matches = true;
            members_.append(std::make_unique<InputSStream>(path.c_str(), order_, nameText(path)));
        } else if (FileUtils::checkFile(path.c_str())) {
            matches = true;
            if (!addMember(path.c_str(), driver, options)) {
                return false;
            }
        }
    }
    if (!matches) {
        throwNothingMatches(pattern, folder);
    }
    return true;
}

long InputMultiFile::offset() {
    return position_;
}

InputStream& InputMultiFile::getline(char*, unsigned long, char) {
    return *this;
}

bool InputMultiFile::eof() {
    return members_.count() == 0 || (isLast(current_) && current().eof());
}

bool InputMultiFile::fail() {
    return members_.count() == 0 || (isLast(current_) && current().fail());
}

int InputMultiFile::peek() {
    return members_.count() == 0 ? -1 : current().peek();
}

long InputMultiFile::size() {
    return totalSize_;
}

long InputMultiFile::size(long offset) {
    InputStream* const member = file(offset);
    return member == nullptr ? 0 : member->size();
}

const String& InputMultiFile::name(long offset) {
    InputStream* const member = file(offset);
    return member == nullptr ? name_ : member->name();
}

InputStream* InputMultiFile::file(long offset) {
    if (members_.count() == 0) {
        return nullptr;
    }
    if (offset < 0 || offset == position_) {
        return &current();
    }
    if (offset < position_) {
        return members_[memberBackward(offset)];
    }
    if (isFifo_) {
        return &current();
    }
    const long back = position_;
    seek(offset);
    InputStream* const member = &current();
    seek(back);
    return member;
}

unsigned long InputMultiFile::bufread(char* buffer, unsigned long count, unsigned long reserved) {
    unsigned long delivered = 0;
    while (members_.count() != 0) {
        const long before = current().offset();
        current().bufread(buffer + delivered, count - delivered, 0);
        const long got = std::max(current().offset() - before, 0L);
        delivered += static_cast<unsigned long>(got);
        position_ += got;
        readFailed_ = readFailed_ || current().readFailed();
        // Asked also when all has come: between two members the chain stands in the second, and
        // name() tells so.
        if (isLast(current_) || current().peek() >= 0) {
            break;
        }
        const long next = current_ + 1;
        if (next == starts_.count()) {
            starts_.append(position_);
        }
        members_[next]->seek(position_ - starts_[next]);
        current_ = next;
        if (delivered == count) {
            break;
        }
    }
    return reserved + delivered;
}

InputStream& InputMultiFile::seek(long offset, std::ios::seekdir dir) {
    if (!isDirection(dir)) {
        return *this;
    }
    const long target =
        std::max(dir == std::ios::cur ? saturatingAdd(position_, offset) : offset, 0L);
    if (target == position_ || members_.count() == 0) {
        return *this;
    }
    const long member = target < position_ ? memberBackward(target) : memberForward(target);
    InputStream& stream = *members_[member];
    const long inner = target - starts_[member];
    stream.seek(inner);
    if (stream.offset() != inner && !stream.isFifo()) {
        stream.seek(0, std::ios::end);  // it can't go that far: nothing is there
    }
    current_ = member;
    position_ = target;
    return *this;
}

/// The last member, up to the current one, that does not start behind `target`.
long InputMultiFile::memberBackward(long target) const {
    const long* const first = starts_.data();
    return std::upper_bound(first, first + current_ + 1, target) - first - 1;
}

/// The member in which a walk from the current one, which does not start behind `target`, ends: the
/// first that starts at it, else the last that starts before it. Finds out on the way where members
/// start.
long InputMultiFile::memberForward(long target) {
    const long* const first = starts_.data();
    const long known = starts_.count();
    const long next = std::lower_bound(first + current_, first + known, target) - first;
    if (next < known && (starts_[next] == target || next > current_)) {
        return starts_[next] == target ? next : next - 1;
    }
    long member = known - 1;
    while (starts_[member] < target && !isLast(member) && endsBefore(member, target)) {
        ++member;
    }
    return member;
}

/// Records where `member`, the last with a known start, ends and the next one starts. True unless
/// `target` lies before that.
bool InputMultiFile::endsBefore(long member, long target) {
    InputStream& stream = *members_[member];
    const long start = starts_[member];
    if (!stream.isFifo()) {
        starts_.append(saturatingAdd(start, stream.size()));
        return target >= starts_[member + 1];
    }
    // The end of a pipe shows only when reading meets it.
    std::array<char, 1024> dropped;
    while (stream.offset() < target - start) {
        const long before = stream.offset();
        const long wanted = std::min<long>(target - start - before, dropped.size());
        stream.bufread(dropped.data(), static_cast<unsigned long>(wanted), 0);
        if (stream.offset() - before < wanted) {
            starts_.append(saturatingAdd(start, std::max(stream.offset(), 0L)));
            return true;
        }
    }
    return false;
}

}  // namespace vek
