#include "converter/Threads.h"

#include <sched.h>
#include <unistd.h>

#include <linux/close_range.h>

bool threads::canRunTogether() {
    cpu_set_t allowed;
    // Fails on machines with more processors than the set has room for.
    return ::sched_getaffinity(0, sizeof allowed, &allowed) != 0 || CPU_COUNT(&allowed) > 1;
}

void threads::ownDescriptors(int first, int last) {
    const auto behind = static_cast<unsigned>(last) + 1;
    if (::close_range(behind, ~0U, CLOSE_RANGE_UNSHARE) == 0 && first > 0) {
        ::close_range(0, static_cast<unsigned>(first) - 1, 0);
    }
}
