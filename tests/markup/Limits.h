#pragma once

#include <sys/resource.h>
#include <unistd.h>

#include <csignal>

/// Limits what the process may use, the size of files that it writes or the descriptors beyond
/// those it has; a negative number takes the limit away.
inline bool limitTo(decltype(RLIMIT_FSIZE) resource, int most) {
    std::signal(SIGXFSZ, SIG_IGN);
    const int next = dup(STDERR_FILENO);
    close(next);
    rlimit limit{};
    getrlimit(resource, &limit);
    const int least = resource == RLIMIT_NOFILE ? next : 0;
    limit.rlim_cur = most < 0 ? limit.rlim_max : static_cast<rlim_t>(least + most);
    return setrlimit(resource, &limit) == 0;
}
