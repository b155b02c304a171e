#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <functional>
#include <ios>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "base/InputBStream.h"
#include "base/InputMultiFile.h"
#include "base/InputServer.h"
#include "base/InputStreamStl.h"
#include "tests/Require.h"

/// A stream and the plain bytes that it must give, for the same chosen operations on both. Windows
/// only move their position; chains take offsets from the end as absolute.
class StreamComparison {
  public:
    /// What may follow a name, of a file, pattern or pipe.
    // clang-format off
    static constexpr std::array drivers{
        "", "::basic", "::fstream", "::memory", "::buffer:0", "::buffer:1", "::buffer:5", "::buffer:-3",
        "::buffer:16", "::bmulti", "::bmulti:0", "::multi", "::multi:basic"};
    // clang-format on
    /// Chooses a number from the first to the second, both included.
    using Choose = std::function<long(long, long)>;

    /// Opens `name`, null for standard input. `members` are the texts that it chains, or its own.
    StreamComparison(const char* name, bool isPipe, const std::vector<std::string>& members,
                     Choose choose)
        : isPipe_(isPipe),
          choose_(std::move(choose)),
          stream_(vek::InputServer::getInstance()->getFile(
              name, static_cast<vek::InputStream::ByteOrder>(choose_(-1, 1)))),
          window_(dynamic_cast<vek::InputBStream*>(stream_.get())),
          isChain_(dynamic_cast<vek::InputMultiFile*>(stream_.get()) != nullptr),
          isStl_(dynamic_cast<vek::InputStreamStl*>(stream_.get()) != nullptr) {
        for (const std::string& member : members) {
            gaps_[size()] = gaps_[size()] || member.empty();
            data_ += member;
        }
    }
    /// Does one operation, the first time a peek.
    void step(int i) {
        const long choice = i == 0 ? 0 : choose_(0, 4);
        choice == 0 ? peek() : choice == 1 ? read() : choice == 2 ? getline() : seek();
        require(stream_->offset() == position_, "the offset");
        require(stream_->size() == (isPipe_ ? 0 : size()), "the size");
        if (stream_->eof() || stream_->fail()) {
            stream_->seek(position_);  // standard streams read no more until that
        }
    }
    /// Whether a pipe has not been read to its end.
    bool mustGoOn() const { return isPipe_ && left() > 0; }

  private:
    static std::size_t index(long value) { return static_cast<std::size_t>(value); }
    long size() const { return static_cast<long>(data_.size()); }
    long left() const { return std::max(size() - position_, 0L); }
    long pickCount() {
        return choose_(1, std::array{3L, 40L, 40L, 5000L, size() + 9}[index(choose_(0, 4))]);
    }
    std::string ahead(long length) const {
        return data_.substr(index(std::min(position_, size())), index(length));
    }
    void moveTo(long target) { high_ = std::max(high_, position_ = target); }
    void peek() {
        const int byte = stream_->peek();
        const bool mayEnd = left() == 0 || (isChain_ && gaps_[position_]);
        require(byte < 0 ? mayEnd : ahead(1) == std::string(1, static_cast<char>(byte)),
                "the byte");
    }
    void read() {
        const long count = pickCount();
        const std::string wanted = ahead(count);
        std::string bytes(index(count + 1), '#');
        stream_->bufread(bytes.data(), index(count));
        require(bytes.starts_with(wanted) && bytes.back() == '#', "the bytes");
        // In a chain the flags are those of a member, which may have ended.
        const bool isShort = left() < count, hasEnded = stream_->eof() || stream_->fail();
        require(hasEnded == isShort || (isChain_ && hasEnded), "the state");
        moveTo(position_ + static_cast<long>(wanted.size()));
    }
    void seek() {
        auto dir = std::array{std::ios::beg, std::ios::cur, std::ios::end}[index(choose_(0, 2))];
        long offset = choose_(0, 1) == 0 ? choose_(-3000, 3000) : choose_(-size() - 3, size() + 3);
        if (isPipe_) {
            // A window may have read ahead by half of what it keeps back, for a line.
            const long back = window_ == nullptr ? 0 : window_->keepBack() / 2;
            dir = std::ios::cur;
            offset = choose_(std::min(std::max(high_ - back, 0L) - position_, 0L),
                             std::min(left(), 3000L));
        }
        stream_->seek(offset, dir);
        const bool isEnd = dir == std::ios::end;
        const long from = dir == std::ios::cur ? position_ : isEnd && !isChain_ ? size() : 0;
        const bool isRefused = (window_ != nullptr && isEnd) || (isStl_ && isPipe_) ||
                               (from + offset < 0 && !isChain_);
        moveTo(isRefused ? position_ : std::max(from + offset, 0L));
    }
    void getline() {
        const long room = pickCount();
        const char delimiter = static_cast<char>(choose_(0, 1) != 0 ? 0xFF : choose_(0, 255));
        std::string bytes(index(room + 1), '#');
        stream_->getline(bytes.data(), index(room), delimiter);
        require(bytes.back() == '#', "the room of a line");
        if (window_ == nullptr && !isStl_) {
            require(bytes[0] == '#', "that there are no lines");
            return;
        }
        // A standard stream looks for the delimiter behind a full line, too.
        std::string wanted = ahead(isStl_ ? room : room - 1);
        const std::size_t found = wanted.find(delimiter);
        wanted.resize(std::min({found, index(room - 1), wanted.size()}));
        require(bytes.starts_with(wanted + '\0'), "the line");
        moveTo(position_ + static_cast<long>(wanted.size()) + (found != std::string::npos ? 1 : 0));
    }

    const bool isPipe_;
    const Choose choose_;
    const std::unique_ptr<vek::InputStream> stream_;
    vek::InputBStream* const window_;  ///< the stream, if it is one
    const bool isChain_, isStl_;
    std::string data_;
    std::map<long, bool> gaps_;  ///< where empty members are, which have no byte to peek at
    long position_ = 0;
    long high_ = 0;  ///< the furthest position so far
};
