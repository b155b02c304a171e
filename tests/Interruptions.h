#pragma once

#include <sys/time.h>

#include <csignal>

/// How often a signal has interrupted the process.
inline volatile std::sig_atomic_t interruptions = 0;

/// Has a signal interrupt the process all the time; 0 ends that.
inline void interruptEvery(long microseconds) {
    struct sigaction action {};
    action.sa_handler = [](int) { interruptions = interruptions + 1; };
    sigaction(SIGALRM, &action, nullptr);
    const itimerval timer{{0, microseconds}, {0, microseconds}};
    setitimer(ITIMER_REAL, &timer, nullptr);
}
