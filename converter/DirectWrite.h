#pragma once

#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>

/// The system's `write`, called right here: returns how many bytes it took, or less than 0, the
/// negative error number. Not a point of cancellation.
///
/// The system may forget where functions return to, as the processor foresees it, with every call;
/// the returns from `write` and from the functions around it are guessed wrong then. For messages
/// that is a tenth of the time they take.
inline long writeDirectly(int descriptor, const char* bytes, std::size_t size) {
#ifdef __x86_64__
    long result = SYS_write;
    asm volatile("syscall"
                 : "+a"(result)
                 : "D"(static_cast<long>(descriptor)), "S"(bytes), "d"(size)
                 : "rcx", "r11", "memory", "cc");
    return result;
#else
    const long result = ::syscall(SYS_write, descriptor, bytes, size);
    return result < 0 ? -errno : result;
#endif
}
