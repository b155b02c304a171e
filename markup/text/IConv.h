#pragma once

#include <iconv.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "markup/text/Pages.h"
#include "markup/text/TextArg.h"

/// One of the system's converters, open, and a run of it over a buffer.
class IConv {
  public:
    /// Bytes that prepareName may write.
    static constexpr int nameBufferSize = 104;

    /// Writes the NUL-terminated name as the system is given it and returns `buffer`: a to z become
    /// upper case and plain "UTF-16" becomes "UTF-16BE".
    /// Requires: the name is shorter than 100 bytes; `buffer` holds nameBufferSize bytes.
    static char* prepareName(char* buffer, TextArg name);

    /// Opens the converter between two encodings, with the given bytes per unit. Plain "UTF-16" is
    /// in host byte order on either side. Throws std::bad_alloc.
    IConv(TextArg to, TextArg from, std::size_t targetUnit = 1, std::size_t sourceUnit = 1);
    IConv(const IConv&) = delete;
    IConv& operator=(const IConv&) = delete;
    ~IConv();

    /// Whether there is a converter for the pair.
    bool isOpen() const;

    /// Lets runs into a target give back the memory of what they have read of the source, which
    /// lies in `block`. The block must outlive the object.
    void consume(Pages& block) { consumed_ = &block; }

    /// Converts until the source ends, ends in the middle of a character, or the target is full,
    /// and returns the bytes produced. What can't be converted becomes "?", one for each source
    /// unit skipped. Never writes past the target's end; without a target it only counts.
    /// Requires: no run before.
    std::size_t run(std::string_view source, std::span<char> target);

    /// Characters that the system reported as converted irreversibly.
    std::size_t irreversible() const { return irreversible_; }

    /// Bytes of an incomplete character left at the end of the source.
    std::size_t unread() const { return inputLeft_; }

  private:
    bool step();
    bool callByScratch(char** input, std::size_t* inputLeft);
    void reset();
    bool replaceUnit();
    void callIConv(char** input, std::size_t* inputLeft);
    void restartScratch();

    iconv_t handle_;
    std::size_t targetUnit_;
    std::size_t sourceUnit_;
    bool isTargetSwapped_ = false;
    bool isSourceSwapped_ = false;
    // Source bytes handed over at once while only counting. A small number avoids that the scratch
    // buffer overflows in the middle of a call, after which much of its input is converted again.
    // Only for sources that may safely be given in pieces: the converter from EUC-CN to GBK, for
    // one, then loses characters.
    std::size_t countingPiece_ = SIZE_MAX;
    char* input_ = nullptr;  // iconv wants it so; the source is never written to
    std::size_t inputLeft_ = 0;
    char* output_ = nullptr;
    std::size_t room_ = 0;   // bytes left at output_
    bool counting_ = false;  // output goes to scratch_ and is forgotten
    int error_ = 0;          // why there is no converter; then errno of the last call
    std::size_t bytes_ = 0;  // produced in all
    std::size_t irreversible_ = 0;
    Pages* consumed_ = nullptr;  // holds the source, null when that is to stay
    std::array<char, 2048> scratch_;
};
