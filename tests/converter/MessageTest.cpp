#include <fcntl.h>
#include <sys/time.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <gtest/gtest.h>
#include <string>
#include <thread>

#include "converter/Message.h"

namespace {

/// Everything that comes out of a pipe until it is closed, taken slowly and with no signals.
void readSlowly(int pipe, std::string& text) {
    std::array<char, 1000> buffer;
    for (ssize_t got = 1; got > 0;) {
        got = read(pipe, buffer.data(), buffer.size());
        text.append(buffer.data(), static_cast<std::size_t>(got));
        std::this_thread::yield();
    }
}

// A signal ends a write to a full pipe, with what had room before or with nothing.
TEST(Messages, ArriveWholeWhenWritingIsInterrupted) {
    static volatile std::sig_atomic_t signals;
    signals = 0;
    struct sigaction action {};
    action.sa_handler = [](int) { signals = signals + 1; };
    sigaction(SIGALRM, &action, nullptr);
    sigset_t alarm;
    sigemptyset(&alarm);
    sigaddset(&alarm, SIGALRM);
    std::array<int, 2> ends{};
    ASSERT_EQ(pipe(ends.data()), 0);
    ASSERT_EQ(fcntl(ends[1], F_SETPIPE_SZ, 4096), 4096);
    pthread_sigmask(SIG_BLOCK, &alarm, nullptr);
    std::string got;
    std::thread reader([&] { readSlowly(ends[0], got); });
    pthread_sigmask(SIG_UNBLOCK, &alarm, nullptr);

    const itimerval often{{0, 50}, {0, 50}};
    setitimer(ITIMER_REAL, &often, nullptr);
    std::string wanted;
    for (std::size_t size = 0; signals < 100 || wanted.size() < 1'000'000;
         size = (size + 997) % 20'000) {
        const std::string message(size, static_cast<char>('a' + size % 26));
        writeMessage(ends[1], message);
        wanted += message;
    }
    const itimerval never{};
    setitimer(ITIMER_REAL, &never, nullptr);
    close(ends[1]);
    reader.join();
    close(ends[0]);
    EXPECT_TRUE(got == wanted) << got.size() << " of " << wanted.size();
}

}  // namespace
