// The bytes that are left are moved to the front before more are read, so that what is ahead is in
// one piece, however it lies across the reads. That happens once in a buffer of bytes, and costs
// nothing beside them.
//
// The library takes a NUL for the end of the text, whatever is behind it, and keeps all that stands
// between two strings in memory, blanks too. The iterator keeps both from it.

#include "tools/eqrecord/JsonInput.h"

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <utility>

namespace eqrecord {

namespace {

constexpr std::size_t bufferSize = std::size_t{1} << 18;
constexpr std::string_view blanks = " \n\r\t";

/// Standard input is not ours to close.
int keepOpen(std::FILE*) {
    return 0;
}

}  // namespace

JsonInput::JsonInput(std::string path)
    : path_(std::move(path)), buffer_(bufferSize), isMore_(true) {
    const bool isInput = path_ == "-";
    file_ = {isInput ? stdin : std::fopen(path_.c_str(), "rbe"), isInput ? keepOpen : std::fclose};
    if (!file_) {
        fail();
    }
    // This is the buffer; another one would only be copied from.
    std::setvbuf(file_.get(), nullptr, _IONBF, 0);
}

void JsonInput::fail() const {
    throw std::system_error(errno, std::generic_category(), path_);
}

/// Fills the buffer with what follows the bytes that are left.
void JsonInput::fill() {
    std::copy(left_.begin(), left_.end(), buffer_.begin());
    char* const behind = buffer_.data() + left_.size();
    const std::size_t room = buffer_.size() - left_.size();
    const std::size_t count = std::fread(behind, 1, room, file_.get());
    if (count < room && std::ferror(file_.get()) != 0) {
        fail();
    }
    isMore_ = count == room;
    left_ = {buffer_.data(), left_.size() + count};
}

void JsonInput::skip(std::size_t count) {
    // Who takes many bytes at once pays little for that.
    const std::string_view skipped = left_.substr(0, count);
    left_.remove_prefix(count);
    if (const std::size_t newline = skipped.rfind('\n'); newline != std::string_view::npos) {
        line_ += static_cast<std::size_t>(std::ranges::count(skipped, '\n'));
        column_ = 0;
        count -= newline + 1;
    }
    column_ += count;
}

/// The next byte. Between strings a NUL becomes another character that can't be there.
char JsonInput::character() {
    const char c = ahead().front();
    return c == '\0' && !isInText_ ? '\1' : c;
}

void JsonInput::skipCharacter() {
    const char c = ahead().front();
    skip(1);
    if (c == '"' && !isEscaped_) {
        isInText_ = !isInText_;
    }
    isEscaped_ = isInText_ && c == '\\' && !isEscaped_;
    if (isInText_ || blanks.find(c) == std::string_view::npos) {
        return;
    }
    std::size_t count = 0;
    do {
        skip(count);
        count = std::min(ahead().find_first_not_of(blanks), ahead().size());
    } while (count > 0);
}

std::string JsonInput::place() const {
    return "line " + std::to_string(line_) + ", column " +
           std::to_string(std::max<std::size_t>(column_, 1));
}

}  // namespace eqrecord
