// The layer's own codecs are loose on purpose. They join what looks like a sequence by the bits of
// its lead byte and look no closer: overlong forms, surrogates and values that no character has
// pass through and come out again. What texts that are not quite UTF-8 become is settled that way,
// and may not change. Where strictness is wanted, the sweep or the system's converter has it.

#include "markup/text/UnicodeCodec.h"

#include <algorithm>

namespace {

// Only DetectUTF8 tells the two apart; to all others both are no character.
constexpr int invalidSequence = -1;
constexpr int cutOffSequence = -2;

/// DecodeCharUTF8 that tells the two kinds of fault apart. A lead byte 10xxxxxx reads like 110xxxxx
/// and bit 0x40 of a continuation is not looked at: the check is meant to be this loose.
int decodeSequence(const char*& cursor, const char* end) {
    const unsigned lead = static_cast<unsigned char>(*cursor++);
    if (lead < 0x80) {
        return static_cast<int>(lead);
    }
    int continuations = 1;
    unsigned value = lead & 0x1F;
    if ((lead & 0x38) == 0x38) {
        return invalidSequence;
    }
    if ((lead & 0x30) == 0x30) {
        continuations = 3;
        value = lead & 0x07;
    } else if ((lead & 0x20) != 0) {
        continuations = 2;
        value = lead & 0x0F;
    }
    for (; continuations > 0; --continuations) {
        if (cursor == end) {
            return cutOffSequence;
        }
        const unsigned byte = static_cast<unsigned char>(*cursor++);
        if ((byte & 0x80) == 0) {
            return invalidSequence;
        }
        value = value << 6 | (byte & 0x3F);
    }
    return static_cast<int>(value);
}

}  // namespace

void EncodeCharUTF8(int character, char* target, int& length) {
    char scratch[4];
    char* const at = target == nullptr ? scratch : target + length;
    length += static_cast<int>(markup::putUTF8(static_cast<std::uint32_t>(character), at));
}

void EncodeCharUTF16(int character, unsigned short* target, int& length) {
    unsigned short scratch[2];
    unsigned short* const at = target == nullptr ? scratch : target + length;
    length += static_cast<int>(markup::putUTF16(static_cast<std::uint32_t>(character), at));
}

int DecodeCharUTF8(const char*& cursor, const char* end) {
    return cursor == end ? -1 : std::max(decodeSequence(cursor, end), -1);
}

int DecodeCharUTF16(const unsigned short*& cursor, const unsigned short* end) {
    if (cursor == end) {
        return -1;
    }
    const unsigned first = *cursor++;
    if (first < 0xD800 || first > 0xDFFF) {
        return static_cast<int>(first);
    }
    if (cursor == end || *cursor == 0) {
        return -1;
    }
    const unsigned second = *cursor++;
    return static_cast<int>(((first & 0x3FF) << 10 | (second & 0x3FF)) + 0x10000);
}

int UTF16To8(char* target, const unsigned short* source, int length) {
    return markup::transcode(target, source, length, DecodeCharUTF16, markup::putUTF8);
}

int UTF8To16(unsigned short* target, const char* source, int length) {
    return markup::transcode(target, source, length, DecodeCharUTF8, markup::putUTF16);
}

bool DetectUTF8(const char* text, int length, int* nonAscii, bool* errorAtEnd) {
    const char* const end = text + (text == nullptr || length < 0 ? 0 : length);
    int count = 0;
    int character = 0;
    for (const char* cursor = text; cursor != end && *cursor != 0 && character >= 0;) {
        count += (*cursor & 0x80) != 0 ? 1 : 0;
        character = decodeSequence(cursor, end);
    }
    if (nonAscii != nullptr) {
        *nonAscii = count;
    }
    if (errorAtEnd != nullptr) {
        *errorAtEnd = character == cutOffSequence;
    }
    return character >= 0;
}
