#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <string_view>
#include <thread>

/// Writes short messages from a thread of its own, each in one system call and in their order; at
/// once while they come one after another, within milliseconds otherwise. There may be one at a
/// time, to be used from one thread.
class MessageThread {
  public:
    /// How long a message may be.
    static constexpr std::size_t mostBytes = 31;

    /// The descriptor is not owned and stays open. Throws std::system_error or std::bad_alloc when
    /// there is no thread to be had.
    explicit MessageThread(int descriptor);
    MessageThread(const MessageThread&) = delete;
    MessageThread& operator=(const MessageThread&) = delete;
    /// Waits until every message is written.
    ~MessageThread();

    /// Has a message written soon; waits first while too many others are still to be written.
    /// Requires: 0 < message.size() <= mostBytes.
    void add(std::string_view message);
    /// Waits until every message is written.
    void drain() { awaitWritten(0); }
    /// The same for the one that there is, if any; also from a signal handler.
    static void drainRunning();

  private:
    using Count = std::uint32_t;  // may wrap around
    static constexpr Count slotCount = 1 << 14;
    static constexpr std::size_t cacheLine = 64;

    struct alignas(mostBytes + 1) Slot {
        std::uint8_t size;  ///< 0 when there will be no more messages
        std::array<char, mostBytes> text;
    };

    void fill(std::string_view message);
    void awaitWritten(Count atMostLeft);
    Count awaitAdded(Count written) const;
    void run();

    inline static std::atomic<MessageThread*> running_ = nullptr;

    int descriptor_;
    Count knownWritten_ = 0;             ///< at least so many are written
    std::array<Slot, slotCount> slots_;  ///< its memory is touched as far as it is used
    alignas(cacheLine) std::atomic<Count> added_ = 0;
    alignas(cacheLine) std::atomic<Count> written_ = 0;
    std::thread thread_{&MessageThread::run, this};  // last: it uses the others
};
