#pragma once

#include <iconv.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>

#include "markup/text/EncodingNameTable.h"
#include "markup/text/TextEncoding.h"

/// Throws unless the rule holds: to a test that is a failure, to a fuzzer a finding.
inline void require(bool holds, const std::string& rule) {
    if (!holds) {
        throw std::logic_error(rule);
    }
}

/// Bytes per unit of an encoding.
inline std::size_t unitSize(const std::string& encoding) {
    const int codePage = x_GetEncodingCodePage(encoding);
    return codePage == CodePageUtf16 ? 2 : codePage == CodePageUtf32 ? 4 : 1;
}

/// Converts the bytes of a text from one encoding to another: measures, then converts into a
/// buffer of exactly the measured size. Both passes have to agree.
inline std::string convert(const std::string& from, const std::string& to,
                           std::string_view source) {
    const bool isUnknown = x_GetEncodingCodePage(from) == CodePageUnknown;
    const auto in = std::make_unique<std::byte[]>(source.size());
    std::copy_n(source.data(), source.size(), reinterpret_cast<char*>(in.get()));
    TextEncoding encoding(from, in.get(), static_cast<int>(source.size() / unitSize(from)));
    const int count = encoding.PerformConversion(nullptr, to);
    const std::size_t size = static_cast<std::size_t>(count) * (isUnknown ? 1 : unitSize(to));
    const auto out = std::make_unique<std::byte[]>(size);
    const bool isSame =
        encoding.outputCount() == count && encoding.PerformConversion(out.get(), nullptr) == count;
    require(isSame, from + " to " + to + ": both passes agree");
    const bool isTold = encoding.error() == EINVAL && !TextEncoding::CanConvert(to, from);
    require(encoding.error() == 0 || isTold, from + " to " + to + ": nothing fails");
    return {reinterpret_cast<const char*>(out.get()), size};
}

/// What the system makes of bytes in one call with all the room that it may want, each byte that it
/// refuses being replaced by "?".
inline std::string convertAtOnce(const std::string& from, const std::string& to,
                                 std::string source) {
    std::array<char, TextEncoding::iconvNameBufferSize> names[2];
    const iconv_t converter = iconv_open(TextEncoding::IConvName(names[0].data(), to),
                                         TextEncoding::IConvName(names[1].data(), from));
    std::string target(source.size() * 16 + 64, '\0');
    char* in = source.data();
    char* out = target.data();
    std::size_t left = source.size();
    std::size_t room = target.size();
    while (left > 0 && iconv(converter, &in, &left, &out, &room) == SIZE_MAX && errno == EILSEQ &&
           left > 0) {
        ++in;
        --left;
        iconv(converter, nullptr, nullptr, &out, &room);
        *out++ = '?';
        --room;
    }
    iconv(converter, nullptr, nullptr, &out, &room);
    iconv_close(converter);
    return target.substr(0, target.size() - room);
}

/// Where the system converts, its converter decides, whatever the pieces in which it is given a
/// text.
inline void checkConversion(const std::string& from, const std::string& to, std::string_view text) {
    const std::string result = convert(from, to, text);
    if (unitSize(from) == 1 && unitSize(to) == 1 && TextEncoding::CanConvert(to, from)) {
        require(result == convertAtOnce(from, to, std::string(text)),
                from + " to " + to + " is what the system makes of it");
    }
}
