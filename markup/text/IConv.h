#pragma once

#include <iconv.h>

#include <array>
#include <cstddef>
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
    /// in host byte order on either side. Throws std::bad_alloc when memory does not suffice to
    /// tell whether there is one.
    IConv(TextArg to, TextArg from, std::size_t targetUnit = 1, std::size_t sourceUnit = 1);
    IConv(const IConv&) = delete;
    IConv& operator=(const IConv&) = delete;
    ~IConv();

    /// Why no converter could be opened or the run failed, an errno value: EINVAL when there is
    /// none for the pair, EMFILE or ENFILE when descriptors were wanting to tell, E2BIG when the
    /// target was full before the end of the source; 0 when all went well.
    int error() const { return error_; }

    /// Lets the run give back the memory of what it has read of the source, which lies in `block`,
    /// unless it only counts. The block must outlive the object.
    void consume(Pages& block) { consumed_ = &block; }

    /// Converts into `target`, never past its end, or only counts when it has no data; returns the
    /// bytes produced, the same in both cases. What can't be converted becomes "?", one for each
    /// source unit skipped; an incomplete character at the end becomes nothing.
    /// Requires: no run before.
    std::size_t run(std::string_view source, std::span<char> target);

    /// Characters that the system reported as converted irreversibly. It reports none for a call
    /// that met a fault.
    std::size_t irreversible() const { return irreversible_; }

    /// Bytes of an incomplete character left at the end of the source.
    std::size_t unread() const { return source_.size(); }

  private:
    /// What a call of the system's converter came to.
    struct Outcome {
        std::string_view left;     ///< of its input
        std::span<char> output;    ///< valid until the next call
        int error;                 ///< errno, 0 for success
        std::size_t irreversible;  ///< 0 after an error
    };

    static constexpr std::size_t shortestPiece = 64;
    static constexpr std::size_t longestPiece = 1024;
    /// More than a piece of bytes ever becomes.
    static constexpr std::size_t callRoom = 16 * longestPiece;

    bool convertPiece();
    std::string_view nextPiece();
    bool passesOverByte(std::string_view left);
    bool replaceUnit();
    void reset() { store(call({}).output); }
    Outcome call(std::string_view input);
    void store(std::span<const char> output);

    iconv_t handle_;
    std::size_t targetUnit_;
    std::size_t sourceUnit_;
    bool isTargetSwapped_ = false;  ///< the system gives UTF-16 in the other byte order
    bool isSourceSwapped_ = false;
    bool ignoresFaults_ = false;  ///< asked for a target with "//IGNORE"
    int error_ = 0;
    Pages* consumed_ = nullptr;  ///< holds the source, null when that is to stay

    std::string_view source_;  ///< still to be converted
    std::span<char> target_;   ///< still to be filled
    bool isCounting_ = false;
    std::size_t pieceLength_ = longestPiece;
    std::size_t produced_ = 0;
    std::size_t irreversible_ = 0;
    std::array<char, longestPiece> swapped_;  ///< a piece of a swapped source
    std::array<char, callRoom> scratch_;      ///< output that the target may not hold
};
