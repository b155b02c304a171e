#pragma once

#include <string>
#include <string_view>

#include "markup/text/Pages.h"
#include "markup/text/TextArg.h"

/// One conversion of a buffer from one named encoding to another. UTF-8, UTF-16 and 32-bit
/// characters are converted among themselves by codecs of its own, every other pair (UTF-8 to UTF-8
/// included) by the system's iconv.
///
/// Conversion takes two calls of PerformConversion: one with a null target that measures, and one
/// with a buffer of the measured number of target units. The unit of UTF-16 is 2 bytes, that of the
/// 32-bit form 4, of everything else 1. Nothing but std::bad_alloc is thrown.
class TextEncoding {
  public:
    /// Bytes that IConvName may write.
    static constexpr int iconvNameBufferSize = 104;

    /// Prepares the conversion of `sourceLength` source units. The source is not owned; it must be
    /// aligned for its unit and outlive the object. A null source or a negative length is an empty
    /// source.
    TextEncoding(TextArg fromEncoding, const void* source, int sourceLength);

    /// Lets a converting call give back the memory of what it has read of the source, which lies in
    /// `block`: the source is lost with it. The block must outlive the object.
    void ConsumeSource(Pages& block) { consumed_ = &block; }

    /// Converts into `target`, or only measures when it is null, and returns the number of target
    /// units. A name that is not null becomes the target encoding; a null one keeps the one stored.
    /// What can't be converted becomes "?". Returns 0 when there is no converter for the pair or
    /// the result would be longer than INT32_MAX units.
    /// Requires: `target` has room for the units that a measuring call returned.
    int PerformConversion(void* target, TextArg toEncoding);

    /// Tells whether iconv has a converter for the pair. Names of 100 bytes or more have none.
    static bool CanConvert(TextArg toEncoding, TextArg fromEncoding) {
        return converterError(toEncoding, fromEncoding) == 0;
    }
    /// Why no converter for the pair can be opened, an errno value: EINVAL when there is none,
    /// EMFILE or ENFILE when descriptors were wanting to tell; 0 when one can. Throws
    /// std::bad_alloc when memory was wanting.
    static int converterError(TextArg toEncoding, TextArg fromEncoding);

    /// Converts through iconv to the stored target encoding, with the given bytes per unit; target
    /// and result as in PerformConversion, but no more than outputCount() units are written
    /// (measured first when that is 0). Failed characters are added to those counted before.
    /// Requires: both units are 1, 2 or 4.
    int IConv(void* target, int targetUnit, int sourceUnit);

    /// Writes the NUL-terminated name as iconv is given it and returns `buffer`: a to z become
    /// upper case and plain "UTF-16" becomes "UTF-16BE".
    /// Requires: the name is shorter than 100 bytes; `buffer` holds iconvNameBufferSize bytes.
    static char* IConvName(char* buffer, TextArg name);

    /// Sets `trailingBytes` to the number of bytes at the end of the source that form an incomplete
    /// character. Returns false, with 0, when there is no converter that could tell.
    bool FindRaggedEnd(int& trailingBytes) const;

    /// Units produced (or measured) by the last conversion.
    int outputCount() const { return outputCount_; }

    /// Characters that iconv reported as converted irreversibly by the last conversion. What became
    /// "?" is not counted: that is required, callers report a loss only for what iconv reports.
    int failedCharacters() const { return failedCharacters_; }

    /// Why the last conversion failed, an errno value: EFBIG when its result would be longer than
    /// INT32_MAX units, E2BIG when the target was full before the end of the source, or what
    /// converterError() gives; 0 when it did not.
    int error() const { return error_; }

  private:
    int convert(void* target);
    int fromUTF8(void* target, int toCodePage);
    int checkedCount(int count);
    int fromUTF16(void* target, int toCodePage);
    int consumeUTF16(char* target);
    int fromUTF32(void* target, int toCodePage);
    int fromOther(void* target, int toCodePage);
    int toUTF32(void* target);
    int convertByIConv(TextArg toEncoding, void* target, int room, int targetUnit, int sourceUnit);
    std::string_view sourceBytes(int unit) const;
    int raggedUTF8() const;
    bool raggedMultibyte(int& trailingBytes) const;

    template <class Unit>
    const Unit* sourceAs() const {
        return static_cast<const Unit*>(source_);
    }

    std::string toEncoding_;
    std::string fromEncoding_;
    const void* source_;
    int sourceLength_;           // in source units
    Pages* consumed_ = nullptr;  // holds the source, null when that is to stay
    int outputCount_ = 0;        // in target units
    int failedCharacters_ = 0;   // of the last conversion
    int error_ = 0;              // of the last conversion
};

/// Converts a text from the platform's default character set to UTF-8.
std::string AToUTF8(TextArg text);

/// Converts a text from UTF-8 to the platform's default character set; stores the number of
/// characters that iconv reported as lost when the pointer is given.
std::string UTF8ToA(TextArg text, int* failedCharacters = nullptr);
