#include "converter/FileQueue.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <new>
#include <string_view>
#include <system_error>

#include "converter/Threads.h"

namespace {

// From here on a thread costs less than it saves.
constexpr int leastFiles = 16;
// More of larger ones would take a lot of memory.
constexpr off_t largestAhead = 1 << 16;

/// Whether the file may be read before its turn: a pipe's other end might see the difference.
bool isSmallFile(const char* path) {
    struct stat status {};
    return ::stat(path, &status) == 0 && S_ISREG(status.st_mode) && status.st_size <= largestAhead;
}

/// Whether a path may lead to what another thread has just opened.
bool namesDescriptor(std::string_view path) {
    return path.starts_with("/dev/") || path.starts_with("/proc/");
}

/// Whether files can be opened in any order, as files opened meanwhile don't take the place of the
/// standard streams.
bool areIndependent(int fileCount, const char* const* paths) {
    bool hasStreams = true;
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        hasStreams = hasStreams && ::fcntl(stream, F_GETFD) >= 0;
    }
    return hasStreams && std::none_of(paths, paths + fileCount, namesDescriptor);
}

}  // namespace

FileQueue::FileQueue(int fileCount, const char* const* paths, CoefficientTable& table)
    : fileCount_(fileCount), paths_(paths), table_(table) {
    if (fileCount < leastFiles || !threads::canRunTogether() || !areIndependent(fileCount, paths)) {
        return;
    }
    claimed_ = 1;  // the first file's header is written, so that it can't be prepared
    slots_.front().isDone = true;
    try {
        thread_ = std::thread(&FileQueue::prepareAll, this);
    } catch (const std::system_error&) {  // the caller does it all then
    } catch (const std::bad_alloc&) {
    }
}

FileQueue::~FileQueue() {
    if (thread_.joinable()) {
        {
            const std::lock_guard lock(access_);
            isEnding_ = true;
        }
        changed_.notify_all();
        thread_.join();
    }
}

PreparedFile& FileQueue::next() {
    if (!thread_.joinable()) {
        return slots_.front().file.emplace();
    }
    giveUpOwn();
    std::unique_lock lock(access_);
    const bool wasFull = claimed_ == current_ + slotCount;
    Slot& slot = slotOf(++current_);
    if (wasFull) {
        changed_.notify_all();
    }
    if (claimed_ == current_) {
        ++claimed_;
        slot.file.reset();
        slot.isDone = true;
    }
    while (!slot.isDone) {
        if (mayClaim()) {
            prepareNext(lock, table_);
        } else {
            changed_.wait(lock);
        }
    }
    return slot.file ? *slot.file : slot.file.emplace();
}

/// Gives up the last file if the caller has loaded it: its text may be a mapping, whose descriptor
/// and lease are the caller's thread's, which has a table of its own.
void FileQueue::giveUpOwn() {
    if (current_ >= 0) {
        std::optional<PreparedFile>& last = slotOf(current_).file;
        if (last && !last->isPrepared()) {
            last.reset();
        }
    }
}

/// Claims the next file and prepares it, unlocked, where that is possible.
void FileQueue::prepareNext(std::unique_lock<std::mutex>& lock, CoefficientTable& table) {
    const char* const path = paths_[claimed_];
    Slot& slot = slotOf(claimed_++);
    slot.isDone = false;
    lock.unlock();
    try {
        slot.file.emplace();
        if (isSmallFile(path)) {
            slot.file->prepare(path, table);
        }
    } catch (const std::bad_alloc&) {  // there may be enough when it is its turn
        slot.file.reset();
    }
    lock.lock();
    slot.isDone = true;
}

void FileQueue::prepareAll() {
    threads::ownDescriptors(STDIN_FILENO, STDERR_FILENO);
    CoefficientTable table;
    std::unique_lock lock(access_);
    while (!isEnding_ && claimed_ < fileCount_) {
        if (mayClaim()) {
            prepareNext(lock, table);
            changed_.notify_all();
        } else {
            changed_.wait(lock);
        }
    }
}
