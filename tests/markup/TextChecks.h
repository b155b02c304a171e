#pragma once

#include <iconv.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <string>
#include <vector>

#include "markup/text/EncodingNameTable.h"
#include "markup/text/TextEncoding.h"
#include "markup/text/UnicodeCodec.h"
#include "markup/text/Utf8Sweep.h"
#include "tests/Require.h"

/// Bytes per unit of an encoding.
inline std::size_t unitSize(const std::string& encoding) {
    const int codePage = x_GetEncodingCodePage(encoding);
    return codePage == CodePageUtf16 ? 2 : codePage == CodePageUtf32 ? 4 : 1;
}

/// Converts the bytes of a text from one encoding to another: measures, then converts into a
/// buffer of exactly the measured size. Both passes have to agree.
inline std::string convert(const std::string& from, const std::string& to,
                           std::string_view source) {
    const std::vector<char> in(source.begin(), source.end());
    const std::size_t unit = x_GetEncodingCodePage(from) == CodePageUnknown ? 1 : unitSize(to);
    TextEncoding encoding(from, in.data(), static_cast<int>(in.size() / unitSize(from)));
    const int count = encoding.PerformConversion(nullptr, to);
    std::vector<char> out(static_cast<std::size_t>(count) * unit);
    require(encoding.PerformConversion(out.data(), nullptr) == count &&
                (encoding.error() == 0 || !TextEncoding::CanConvert(to, from)),
            "a text is converted as it was measured:", from + " to " + to);
    return {out.begin(), out.end()};
}

/// What the system makes of a text in one call with all the room that it may want, each byte that
/// it refuses being replaced by "?".
inline std::string convertAtOnce(const std::string& from, const std::string& to,
                                 std::string source) {
    using Name = std::array<char, TextEncoding::iconvNameBufferSize>;
    const iconv_t converter = iconv_open(TextEncoding::IConvName(Name().data(), to),
                                         TextEncoding::IConvName(Name().data(), from));
    std::string target(source.size() * 16 + 64, '\0');
    char *in = source.data(), *out = target.data();
    std::size_t left = source.size(), room = target.size();
    while (left > 0 && iconv(converter, &in, &left, &out, &room) == SIZE_MAX && errno == EILSEQ &&
           left-- > 0) {
        ++in;
        iconv(converter, nullptr, nullptr, &out, &room);
        *out++ = '?';
        --room;
    }
    iconv(converter, nullptr, nullptr, &out, &room);
    iconv_close(converter);
    return target.substr(0, target.size() - room);
}

/// Where the system converts, its converter decides, whatever the pieces are in which it is given a
/// text. Only the place of a fault within other bytes than UTF-8 depends on them.
inline void checkConversion(const std::string& from, const std::string& to,
                            const std::string& text) {
    const std::string result = convert(from, to, text);
    if (unitSize(from) + unitSize(to) == 2 && TextEncoding::CanConvert(to, from)) {
        const std::string wanted = convertAtOnce(from, to, text);
        const bool mayDiffer = from != "UTF-8" && to != "UTF-8" && wanted.find('?') < wanted.size();
        require(mayDiffer || result == wanted, from + " to " + to + " at once");
    }
}

/// The sweep takes as much of a text as is UTF-8 without NUL to the system, and that comes back
/// from every conversion as it is. Returns how much that is.
inline std::size_t checkUtf8(std::string_view text) {
    const std::vector<char> exact(text.begin(), text.end());
    const std::string plain(text.substr(0, markup::plainUtf8Length({exact.data(), exact.size()})));
    const auto isPlain = [](const std::string& bytes) {
        const std::string wide = convertAtOnce("UTF-8", "UTF-16LE", bytes);
        return bytes.find('\0') == std::string::npos &&
               convertAtOnce("UTF-16LE", "UTF-8", wide) == bytes;
    };
    require(isPlain(plain), "what is taken is plain");
    require(plain.size() == text.size() || !isPlain(std::string(text)), "what is plain is taken");
    require(convert("UTF-8", "UTF-8", plain) == plain, "plain UTF-8 stays as it is");
    require(convert("UTF-32", "UTF-8", convert("UTF-8", "UTF-32", plain)) == plain, "UTF-32");
    const int length = static_cast<int>(plain.size());
    std::vector<unsigned short> units(plain.size());
    std::string back(plain.size(), '\0');
    const int count = UTF8To16(units.data(), plain.data(), length);
    require(UTF16To8(back.data(), units.data(), count) == length && back == plain, "UTF-16");
    require(DetectUTF8(plain.data(), length, nullptr, nullptr), "plain UTF-8 is UTF-8");
    return plain.size();
}
