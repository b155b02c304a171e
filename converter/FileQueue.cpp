#include "converter/FileQueue.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <new>
#include <thread>

#include "converter/Threads.h"

namespace {

// From here on a thread costs less than it saves.
constexpr int leastFiles = 16;
// More of larger ones would take a lot of memory.
constexpr off_t largestAhead = 1 << 16;

/// Whether the file may be read before its turn: a pipe's other end might see the difference, and a
/// link may lead to what the process has open just then.
bool isSmallFile(const char* path) {
    struct stat status {};
    return ::lstat(path, &status) == 0 && S_ISREG(status.st_mode) && status.st_size <= largestAhead;
}

/// Whether the standard streams are open: a file that the caller opens in the place of one would
/// stay open in the other thread's table of descriptors.
bool hasStreams() {
    constexpr std::array streams{STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO};
    return std::ranges::all_of(streams, [](int stream) { return ::fcntl(stream, F_GETFD) >= 0; });
}

}  // namespace

bool FileQueue::run(const Write& write) {
    return isShared() ? runShared(write) : runAlone(write);
}

bool FileQueue::isShared() const {
    return fileCount_ >= leastFiles && threads::haveRoom() && hasStreams();
}

bool FileQueue::runAlone(const Write& write) {
    for (int i = 0; i < fileCount_; ++i) {
        PreparedFile file;
        if (!write(paths_[i], file)) {
            return false;
        }
    }
    return true;
}

bool FileQueue::runShared(const Write& write) {
    claimed_ = 1;  // the first file's header is written, so that it can't be prepared
    slots_.front().isDone = true;
    std::thread other;
    try {
        other = std::thread([this, &write] {
            // Or else a path such as /dev/fd/4 could lead to what it has just opened.
            if (threads::ownDescriptors(STDIN_FILENO, STDERR_FILENO)) {
                CoefficientTable table;
                work(write, table, false);
            }
        });
    } catch (const std::exception&) {  // no memory, or too many threads
        return runAlone(write);
    }
    work(write, table_, true);
    other.join();
    if (failure_) {
        std::rethrow_exception(failure_);
    }
    return result_;
}

/// Does what there is to do, until the files are written or the run has to stop.
void FileQueue::work(const Write& write, CoefficientTable& table, bool isCaller) {
    std::unique_lock lock(access_);
    while (!isEnding_) {
        if (mayWrite(isCaller)) {
            writeNext(lock, write);
        } else if (mayPrepare()) {
            prepareNext(lock, table);
        } else {
            changed_.notify_all();  // what is left is the other's
            changed_.wait(lock);
            continue;
        }
        // To wake up takes longer than to prepare a file: not for each that there is room for.
        const bool hasRoom = claimed_ == current_ + slotCount / 2;
        const bool isForCaller = mayWrite(true) && !mayWrite(false);
        if (hasRoom || isForCaller || isEnding_) {
            changed_.notify_all();
        }
    }
}

/// Whether the file whose turn it is can be written. What is loaded in its turn may be a mapping,
/// whose descriptor and lease are in the caller's table of descriptors.
bool FileQueue::mayWrite(bool isCaller) {
    const Slot& slot = slotOf(current_);
    return !isWriting_ && current_ < claimed_ && slot.isDone && (isCaller || slot.isPrepared());
}

/// Writes the file whose turn it is, unlocked.
void FileQueue::writeNext(std::unique_lock<std::mutex>& lock, const Write& write) {
    const char* const path = paths_[current_];
    Slot& slot = slotOf(current_);
    isWriting_ = true;
    lock.unlock();
    try {
        result_ = write(path, slot.file ? *slot.file : slot.file.emplace());
        if (!slot.isPrepared()) {
            slot.file.reset();  // before the other thread does it
        }
    } catch (...) {
        failure_ = std::current_exception();
    }
    lock.lock();
    isWriting_ = false;
    ++current_;
    isEnding_ = !result_ || failure_ || current_ == fileCount_;
}

bool FileQueue::mayPrepare() const {
    return claimed_ < fileCount_ && claimed_ < current_ + slotCount;
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
