#include "converter/MessageThread.h"

#include <algorithm>
#include <chrono>

#include "converter/Message.h"
#include "converter/Threads.h"

namespace {

constexpr std::uint32_t messagesAtATime = 1 << 13;

/// Waits for something that happens soon or, the longer it has not happened, not so soon. Waking
/// who waits would take longer than writing many messages.
class Patience {
  public:
    explicit Patience(int yields) : yields_(yields) {}
    void wait() {
        if (yields_ > 0) {
            --yields_;
            std::this_thread::yield();
            return;
        }
        std::this_thread::sleep_for(nap_);
        nap_ = std::min(nap_ + shortestNap, longestNap);
    }

  private:
    using Time = std::chrono::microseconds;
    static constexpr Time shortestNap{100};
    static constexpr Time longestNap{5000};

    int yields_;  ///< how often to look again at once
    Time nap_ = shortestNap;
};

}  // namespace

MessageThread::MessageThread(int descriptor) : descriptor_(descriptor) {
    running_ = this;
}

MessageThread::~MessageThread() {
    fill({});
    thread_.join();
    running_ = nullptr;
}

void MessageThread::drainRunning() {
    if (MessageThread* const running = running_; running != nullptr) {
        running->drain();
    }
}

void MessageThread::add(std::string_view message) {
    fill(message);
}

/// Fills the next slot, with an empty text for the end of all.
void MessageThread::fill(std::string_view message) {
    const Count number = added_.load(std::memory_order_relaxed);
    if (number - knownWritten_ == slotCount) {
        awaitWritten(slotCount - messagesAtATime);
    }
    Slot& slot = slots_[number % slotCount];
    slot.size = static_cast<std::uint8_t>(message.size());
    std::copy(message.begin(), message.end(), slot.text.begin());
    added_.store(number + 1, std::memory_order_release);
}

void MessageThread::awaitWritten(Count atMostLeft) {
    const Count added = added_.load(std::memory_order_relaxed);
    Patience patience(0);
    while (added - (knownWritten_ = written_.load(std::memory_order_acquire)) > atMostLeft) {
        patience.wait();
    }
}

/// Waits until there are more messages than `written`, and returns how many.
MessageThread::Count MessageThread::awaitAdded(Count written) const {
    constexpr int yields = 64;
    Patience patience(yields);
    while (true) {
        const Count added = added_.load(std::memory_order_acquire);
        if (added != written) {
            return added;
        }
        patience.wait();
    }
}

void MessageThread::run() {
    threads::ownDescriptors(descriptor_, descriptor_);
    for (Count written = 0;;) {
        const Count added = awaitAdded(written);
        const Count stop = written + std::min(added - written, messagesAtATime);
        for (; written != stop; ++written) {
            const Slot& slot = slots_[written % slotCount];
            if (slot.size == 0) {
                return;
            }
            writeMessage(descriptor_, {slot.text.data(), slot.size});
        }
        written_.store(written, std::memory_order_release);
    }
}
