#pragma once

#include <cstring>
#include <gtest/gtest.h>
#include <memory>
#include <string>

#include "markup/text/EncodingNameTable.h"
#include "markup/text/TextEncoding.h"

/// Bytes per unit of an encoding.
inline std::size_t unitSize(const std::string& encoding) {
    const int codePage = x_GetEncodingCodePage(encoding);
    return codePage == CodePageUtf16 ? 2 : codePage == CodePageUtf32 ? 4 : 1;
}

/// Converts the bytes of a text from one encoding to another: measures, then converts into a
/// buffer of exactly the measured size. Both passes have to agree.
inline std::string convert(const std::string& from, const std::string& to,
                           const std::string& source) {
    const bool isUnknown = x_GetEncodingCodePage(from) == CodePageUnknown;
    const auto in = std::make_unique<std::byte[]>(source.size());
    std::memcpy(in.get(), source.data(), source.size());
    TextEncoding encoding(from, in.get(), static_cast<int>(source.size() / unitSize(from)));
    const int count = encoding.PerformConversion(nullptr, to);
    EXPECT_EQ(encoding.outputCount(), count);
    const std::size_t size = static_cast<std::size_t>(count) * (isUnknown ? 1 : unitSize(to));
    const auto out = std::make_unique<std::byte[]>(size);
    EXPECT_EQ(encoding.PerformConversion(out.get(), nullptr), count) << from << " to " << to;
    EXPECT_EQ(encoding.error(), 0);
    return {reinterpret_cast<const char*>(out.get()), size};
}
