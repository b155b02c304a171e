#include "converter/Diagnostics.h"

#include <sys/stat.h>
#include <unistd.h>

#include <new>
#include <system_error>

#include "converter/Threads.h"

namespace {

bool isSameFile(int descriptor, int other) {
    struct stat status {};
    struct stat otherStatus {};
    return ::fstat(descriptor, &status) == 0 && ::fstat(other, &otherStatus) == 0 &&
           status.st_dev == otherStatus.st_dev && status.st_ino == otherStatus.st_ino;
}

}  // namespace

/// Keeps a message or has it written by the thread.
void Diagnostics::putElsewhere(std::string_view message) {
    if (kept_ != nullptr) {
        kept_->add(message, record_->size());
    } else if (message.size() <= MessageThread::mostBytes && !message.empty()) {
        thread_->add(message);
    } else {
        thread_->drain();
        writeMessage(descriptor_, message);
    }
}

void Diagnostics::useThread() {
    if (kept_ != nullptr || thread_ || !threads::haveRoom() ||
        isSameFile(descriptor_, STDOUT_FILENO)) {
        return;
    }
    try {
        thread_ = std::make_unique<MessageThread>(descriptor_);
    } catch (const std::system_error&) {  // goes on without
    } catch (const std::bad_alloc&) {
    }
}
