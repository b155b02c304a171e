#include "converter/Threads.h"

#include <sched.h>
#include <sys/resource.h>
#include <unistd.h>

#include <linux/close_range.h>

bool threads::haveRoom() {
    rlimit space{};
    cpu_set_t allowed;
    // The second fails on machines with more processors than the set has room for.
    return ::getrlimit(RLIMIT_AS, &space) == 0 && space.rlim_cur == RLIM_INFINITY &&
           (::sched_getaffinity(0, sizeof allowed, &allowed) != 0 || CPU_COUNT(&allowed) > 1);
}

bool threads::ownDescriptors(int first, int last) {
    const auto behind = static_cast<unsigned>(last) + 1;
    if (::close_range(behind, ~0U, CLOSE_RANGE_UNSHARE) != 0) {
        return false;
    }
    if (first > 0) {
        ::close_range(0, static_cast<unsigned>(first) - 1, 0);
    }
    return true;
}
