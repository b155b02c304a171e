#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <functional>
#include <ios>
#include <map>
#include <string>
#include <vector>

#include "base/InputStream.h"

/// Chosen operations on a stream and on the plain bytes that it must give. Texts in memory refuse
/// seeks beyond the end; windows only move their position; chains take offsets from the end as
/// absolute.
class StreamComparison {
  public:
    /// What a stream is, as far as it matters for what it does.
    enum Kind { basic, stl, memory, window, chain };
    /// Chooses a number from the first to the second, both included.
    using Choose = std::function<long(long, long)>;
    /// Is told whether something is as it must be, and what.
    using Check = std::function<void(bool, const char*)>;

    /// `back` is how far a pipe can go back, -1 for what is no pipe. `members` are the texts that
    /// the stream chains.
    StreamComparison(vek::InputStream& stream, Kind kind, long back,
                     const std::vector<std::string>& members, Choose choose, Check check)
        : stream_(stream),
          kind_(kind),
          back_(back),
          choose_(std::move(choose)),
          check_(std::move(check)) {
        for (const std::string& member : members) {
            gaps_[size()] = gaps_[size()] || member.empty();
            data_ += member;
        }
    }
    /// Does one operation, the first time a peek.
    void step(int i) {
        using Operation = void (StreamComparison::*)();
        constexpr std::array<Operation, 6> operations{
            &StreamComparison::peek, &StreamComparison::read, &StreamComparison::getline,
            &StreamComparison::swap, &StreamComparison::seek, &StreamComparison::seek};
        (this->*operations[index(i == 0 ? 0 : choose_(0, 5))])();
        check_(stream_.offset() == position_, "the offset");
        check_(stream_.size() == (back_ < 0 ? size() : 0), "the size");
        if (stream_.eof() || stream_.fail()) {
            stream_.seek(position_);  // standard streams read no more until that
        }
    }
    /// Whether all of a pipe has been read.
    bool isOver() const { return back_ < 0 || left() == 0; }

  private:
    static std::size_t index(long value) { return static_cast<std::size_t>(value); }
    long size() const { return static_cast<long>(data_.size()); }
    long left() const { return std::max(size() - position_, 0L); }
    bool isStl() const { return kind_ == stl || kind_ == memory; }
    long pickCount() {
        return choose_(1, std::array{3L, 40L, 40L, 5000L, size() + 9}[index(choose_(0, 4))]);
    }
    std::string take(long length) {
        std::string bytes = data_.substr(index(std::min(position_, size())), index(length));
        position_ += static_cast<long>(bytes.size());
        high_ = std::max(high_, position_);
        return bytes;
    }
    void read() {
        const std::size_t count = index(pickCount());
        std::string bytes(count + 1, '#');
        const std::size_t result = stream_.bufread(bytes.data(), count, 100);
        const std::string wanted = take(static_cast<long>(count));
        check_(bytes.starts_with(wanted) && bytes.back() == '#', "the bytes");
        const std::size_t told = kind_ == basic ? index(position_) : wanted.size() + 100;
        check_(result == (isStl() ? count : told), "what bufread returns");
        // In a chain the flags are those of a member, which may have ended.
        const bool isShort = wanted.size() < count;
        check_((stream_.eof() || stream_.fail()) == isShort || (kind_ == chain && !isShort),
               "the state after reading");
    }
    void peek() {
        const int wanted = left() == 0 ? -1 : static_cast<unsigned char>(data_[index(position_)]);
        const int byte = stream_.peek();
        const bool isGap = kind_ == chain && gaps_[position_];
        check_(byte == wanted || (isGap && byte == -1), "the byte peeked at");
    }
    void seek() {
        const long choice = choose_(0, 5);
        auto dir = choice < 2 ? std::ios::beg : choice < 4 ? std::ios::cur : std::ios::end;
        long offset = choice % 2 == 0 ? choose_(-3000, 3000) : choose_(-size() - 3, size() + 3);
        if (back_ >= 0) {
            const long low = std::max(high_ - back_, 0L) - position_;
            dir = std::ios::cur;
            offset = choose_(std::min(low, 0L), std::min(left(), 3000L));
        }
        stream_.seek(offset, dir);
        move(offset, dir);
    }
    void move(long offset, std::ios::seekdir dir) {
        const bool isEnd = dir == std::ios::end;
        const long end = kind_ == chain ? 0 : size();
        const long target = offset + (isEnd ? end : dir == std::ios::cur ? position_ : 0);
        const bool isRefused = target < 0 || (kind_ == window && isEnd) ||
                               (kind_ == memory && target > size()) || (kind_ == stl && back_ >= 0);
        position_ = kind_ == chain ? std::max(target, 0L) : isRefused ? position_ : target;
        high_ = std::max(high_, position_);
    }
    void getline() {
        const long room = pickCount();
        const char delimiter = static_cast<char>(choose_(0, 1) != 0 ? 0xFF : choose_(0, 255));
        std::string bytes(index(room + 1), '#');
        stream_.getline(bytes.data(), index(room), delimiter);
        check_(bytes.back() == '#', "the room of a line");
        if (kind_ == basic || kind_ == chain) {
            check_(bytes[0] == '#', "that there are no lines");
            return;
        }
        const long start = position_;
        // A standard stream looks for the delimiter behind a full line, too.
        std::string wanted = take(kind_ == window ? room - 1 : room);
        const std::size_t found = wanted.find(delimiter);
        wanted.resize(std::min({found, index(room - 1), wanted.size()}));
        position_ = start + static_cast<long>(wanted.size()) + (found != std::string::npos ? 1 : 0);
        check_(bytes.starts_with(wanted + '\0'), "the line");
    }
    void swap() {
        const long inMemory = choose_(1, 8), inFile = choose_(1, 8), isSigned = choose_(0, 1);
        const bool isBig = stream_.byteOrder() == vek::InputStream::BYTE_ORDER_BIG;
        if (left() < inFile || (kind_ == stl && back_ >= 0 && inFile > inMemory)) {
            return;
        }
        std::string field(index(inMemory), '%');
        stream_.read_swap(field.data(), static_cast<unsigned short>(inMemory),
                          static_cast<unsigned short>(inFile), isSigned != 0);
        move(isBig ? std::max(inFile - inMemory, 0L) : 0, std::ios::cur);
        std::string wanted = take(std::min(inMemory, inFile));
        if (isBig) {
            std::reverse(wanted.begin(), wanted.end());
        }
        wanted.resize(field.size(), isSigned != 0 && (wanted.back() & 0x80) != 0 ? '\xFF' : '%');
        check_(field == wanted, "the number");
    }

    vek::InputStream& stream_;
    Kind kind_;
    long back_;  ///< how far a pipe can go back, -1 for what is no pipe
    Choose choose_;
    Check check_;
    std::string data_;
    std::map<long, bool> gaps_;  ///< where empty members are, which have no byte to peek
    long position_ = 0;
    long high_ = 0;
};
