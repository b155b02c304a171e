#pragma once

#include <array>
#include <condition_variable>
#include <exception>
#include <functional>
#include <mutex>
#include <optional>

#include "converter/PreparedFile.h"

/// Takes the files of a run in their order. Where they are many and there is more than one
/// processor, a thread of its own and the caller's share the work.
///
/// Files are prepared some way ahead, and written in their turn, by whichever thread has time. So
/// neither waits for the other for long, however large the files are, however slowly the output is
/// taken and whichever processor is the slower one.
class FileQueue {
  public:
    /// Writes a file, prepared or not; false when the run has to stop there. Called for one file
    /// after the other, though not always from the same thread: from the caller's for those that
    /// are not prepared.
    using Write = std::function<bool(const char* path, PreparedFile& file)>;

    /// The paths and the table, which the caller's thread uses, are not owned and must outlive the
    /// object.
    FileQueue(int fileCount, const char* const* paths, CoefficientTable& table)
        : fileCount_(fileCount), paths_(paths), table_(table) {}
    FileQueue(const FileQueue&) = delete;
    FileQueue& operator=(const FileQueue&) = delete;

    /// Has the files written and returns what that returned last, true for no files. Throws what it
    /// threw. May be called once.
    bool run(const Write& write);

  private:
    /// Files that may be in hand at a time, from the one whose turn it is.
    static constexpr int slotCount = 16;

    struct Slot {
        std::optional<PreparedFile> file;
        bool isDone = false;  ///< nobody prepares it any more

        bool isPrepared() const { return file && file->isPrepared(); }
    };

    Slot& slotOf(int file) { return slots_[static_cast<std::size_t>(file % slotCount)]; }
    bool isShared() const;
    bool runAlone(const Write& write);
    bool runShared(const Write& write);
    void work(const Write& write, CoefficientTable& table, bool isCaller);
    bool mayWrite(bool isCaller);
    void writeNext(std::unique_lock<std::mutex>& lock, const Write& write);
    bool mayPrepare() const;
    void prepareNext(std::unique_lock<std::mutex>& lock, CoefficientTable& table);

    int fileCount_;
    const char* const* paths_;
    CoefficientTable& table_;
    std::array<Slot, slotCount> slots_;

    std::mutex access_;  ///< to what follows, and to `isDone`
    std::condition_variable changed_;
    int current_ = 0;         ///< the file whose turn it is
    bool isWriting_ = false;  ///< somebody writes it
    int claimed_ = 0;         ///< files that somebody prepares, has prepared or does without
    bool isEnding_ = false;
    bool result_ = true;          ///< what the last `Write` returned
    std::exception_ptr failure_;  ///< what it threw
};
