// Bytes are handed over in small pieces, so that the room for a piece holds whatever it becomes:
// not all of the system's converters can be trusted to go on rightly where their output was full.
//
// The document layer cuts characters above U+FFFF short in UTF-16, and lets surrogates through. So
// it is given these characters as two surrogates each, and writes what it should.

#include "tools/eqrecode/Codec.h"

#include <iconv.h>

#include <array>
#include <cerrno>
#include <stdexcept>
#include <system_error>

#include "markup/Markup.h"
#include "markup/ResultMessages.h"
#include "tools/eqrecode/MemoryFile.h"

namespace eqrecode {

namespace {

/// One of the system's converters to UTF-8.
class Converter {
  public:
    explicit Converter(const std::string& encoding)
        : handle_(::iconv_open("UTF-8", encoding.c_str())) {
        // NOLINTNEXTLINE(performance-no-int-to-ptr): this is how iconv_open says that it failed
        if (handle_ == reinterpret_cast<iconv_t>(-1)) {
            throw std::system_error(errno, std::generic_category(), encoding);
        }
    }
    Converter(const Converter&) = delete;
    Converter& operator=(const Converter&) = delete;
    ~Converter() { ::iconv_close(handle_); }

    /// Appends what `bytes` become to `text` and returns how many were taken: fewer than there are
    /// where they are faulty or end within a character. Nothing stands for the end of the text,
    /// which some converters wait for.
    std::size_t convert(std::string_view bytes, std::string& text) {
        char* in = const_cast<char*>(bytes.data());  // iconv wants it so, and never writes there
        std::size_t left = bytes.size();
        char* out = room_.data();
        std::size_t roomLeft = room_.size();
        error_ = ::iconv(handle_, bytes.empty() ? nullptr : &in, &left, &out, &roomLeft) ==
                         static_cast<std::size_t>(-1)
                     ? errno
                     : 0;
        text.append(room_.data(), out);
        return bytes.size() - left;
    }

    /// Whether the last call has met bytes that are none of the encoding's.
    bool hasFailed() const { return error_ != 0 && error_ != EINVAL; }

    static constexpr std::size_t longestPiece = 1024;

  private:
    iconv_t handle_;
    int error_ = 0;
    std::array<char, 16 * longestPiece> room_;  // more than a piece ever becomes
};

/// Puts two surrogates in the place of each character above U+FFFF.
std::string splitIntoSurrogates(std::string_view text) {
    std::string result;
    const char* cursor = text.data();
    const char* const end = cursor + text.size();
    while (cursor != end) {
        const char* const start = cursor;
        const int character = MarkupDocument::DecodeCharUTF8(cursor, end);
        std::array<unsigned short, 2> units;
        int count = 0;
        if (character > 0xFFFF) {
            MarkupDocument::EncodeCharUTF16(character, units.data(), count);
        } else {
            result.append(start, cursor);
        }
        for (int i = 0; i < count; ++i) {
            std::array<char, 4> bytes;
            int length = 0;
            MarkupDocument::EncodeCharUTF8(units[static_cast<std::size_t>(i)], bytes.data(),
                                           length);
            result.append(bytes.data(), static_cast<std::size_t>(length));
        }
    }
    return result;
}

}  // namespace

Decoding decode(std::string_view bytes, const Form& form) {
    Converter converter(form.encoding);
    Decoding result;
    std::size_t at = markOf(form).size();
    while (at < bytes.size() && !result.fault) {
        const std::string_view piece = bytes.substr(at, Converter::longestPiece);
        const std::size_t taken = converter.convert(piece, result.text);
        at += taken;
        if (taken < piece.size() && (converter.hasFailed() || taken == 0)) {
            result.fault = at;
        }
    }
    converter.convert({}, result.text);  // also what is held back before a fault
    return result;
}

std::string encode(std::string_view text, const Form& form) {
    const bool isUtf16 = (form.mark & (DocFlagUtf16LeFile | DocFlagUtf16BeFile)) != 0;
    const std::string prepared = isUtf16 ? splitIntoSurrogates(text) : std::string(text);
    const MemoryFile file;
    std::string results;
    int flags = form.mark;  // chooses the encoding where there is a mark, else the name does
    std::string encoding = form.encoding;
    if (!MarkupDocument::WriteTextFile(file.path(), prepared, &results, &flags, &encoding)) {
        throw std::runtime_error("can't be written: " + markup::renderResults(results));
    }
    return file.content();
}

}  // namespace eqrecode
