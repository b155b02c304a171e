#include "converter/Processors.h"

#include <sched.h>

bool processors::areSeveral() {
    cpu_set_t allowed;
    // Fails on machines with more processors than the set has room for.
    return ::sched_getaffinity(0, sizeof allowed, &allowed) != 0 || CPU_COUNT(&allowed) > 1;
}
