#pragma once

#include <array>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <thread>

#include "converter/PreparedFile.h"

/// Hands out the files of a run in their order. Where they are many and there is more than one
/// processor, a thread of its own and the caller's prepare small ones meanwhile.
///
/// Files are claimed one after another by whoever has time: by the thread, and by the caller while
/// the thread is still busy with the file whose turn it is. So neither waits for the other for
/// long, however the work is shared out.
class FileQueue {
  public:
    /// The paths and the table, which the caller uses for its own files, are not owned and must
    /// outlive the object.
    FileQueue(int fileCount, const char* const* paths, CoefficientTable& table);
    FileQueue(const FileQueue&) = delete;
    FileQueue& operator=(const FileQueue&) = delete;
    ~FileQueue();

    /// The next file, prepared or not; valid until the next call. Requires: no more calls than
    /// files. Throws std::bad_alloc.
    PreparedFile& next();

  private:
    /// Files that may be in hand at a time, from the one that the caller works on.
    static constexpr int slotCount = 16;

    struct Slot {
        std::optional<PreparedFile> file;
        bool isDone = false;  ///< nobody prepares it any more
    };

    Slot& slotOf(int file) { return slots_[static_cast<std::size_t>(file % slotCount)]; }
    bool mayClaim() const { return claimed_ < fileCount_ && claimed_ < current_ + slotCount; }
    void giveUpOwn();
    void prepareNext(std::unique_lock<std::mutex>& lock, CoefficientTable& table);
    void prepareAll();

    int fileCount_;
    const char* const* paths_;
    std::array<Slot, slotCount> slots_;
    CoefficientTable& table_;

    std::mutex access_;  ///< to what follows, and to `isDone`
    std::condition_variable changed_;
    int current_ = -1;  ///< the file that the caller works on
    int claimed_ = 0;   ///< files that somebody prepares, has prepared or does without
    bool isEnding_ = false;
    std::thread thread_;
};
