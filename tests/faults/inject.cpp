// Preloaded into a program under test: disturbs the calls of one kind that the environment names
// and tells what the program left behind. FAULT is "KIND FIRST LAST ERRNO": of these calls, counted
// from 1 where main begins, the FIRST to the LAST fail with that error number. 0 lets them come
// short instead, and EINTR hits only every other one, so that trying again helps. FAULT_REPORT
// names a file of the size of a Report.
//
// What stdio does inside the C library can't be had by name: fopen gives streams that read, write
// and seek by calls in here.

#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <stdio_ext.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

extern "C" {
// The C library's own, for which those that programs call stand in below.
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void __libc_free(void* block);
void __libc_freeres();
}

namespace {

struct Report {
    long calls;        // of the kind
    long blocks;       // from malloc that nobody has freed
    long descriptors;  // open at the end, beyond the three standard ones
    long hasEnded;
};

Report untilLoaded{};
Report* report = &untilLoaded;
char kindHit[16];
long first, last;
int error;
int (*realMain)(int, char**, char**) = nullptr;
bool isInMain = false;

bool isHit(const char* kind) {
    if (!isInMain || std::strcmp(kind, kindHit) != 0) {
        return false;
    }
    const long call = std::atomic_ref(report->calls).fetch_add(1) + 1;
    const bool isHit = call >= first && call <= last && (error != EINTR || call % 2 != 0);
    errno = isHit ? error : errno;
    return isHit;
}

template <class Function>
Function* next(const char* name, Function*) {
    return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

void* counted(void* block) {
    std::atomic_ref(report->blocks) += block != nullptr ? 1 : 0;
    return block;
}

template <class Data>
ssize_t transfer(const char* kind, long call, int file, Data* data, std::size_t size) {
    if (!isHit(kind)) {
        return ::syscall(call, file, data, size);
    }
    return error == 0 ? ::syscall(call, file, data, size != 0 ? 1 : 0) : -1;
}

int fileOf(void* cookie) {
    return static_cast<int>(reinterpret_cast<std::intptr_t>(cookie));
}

FILE* streamOf(int file, const char* mode) {
    cookie_io_functions_t calls{};
    calls.read = [](void* cookie, char* data, std::size_t size) {
        return ::read(fileOf(cookie), data, size);
    };
    // Going on after a short one would be up to stdio.
    calls.write = [](void* cookie, const char* data, std::size_t size) -> ssize_t {
        return error != 0 && isHit("write") ? 0 : ::syscall(SYS_write, fileOf(cookie), data, size);
    };
    calls.seek = [](void* cookie, off64_t* offset, int whence) {
        *offset = isHit("seek") ? -1 : ::lseek64(fileOf(cookie), *offset, whence);
        return *offset < 0 ? -1 : 0;
    };
    calls.close = [](void* cookie) { return ::close(fileOf(cookie)); };
    FILE* const stream = ::fopencookie(reinterpret_cast<void*>(std::intptr_t{file}), mode, calls);
    static_cast<void>(stream == nullptr && ::close(file) != 0);
    return stream;
}

__attribute__((constructor)) void readPlan() {
    const int file = ::open(std::getenv("FAULT_REPORT"), O_RDWR);
    constexpr int access = PROT_READ | PROT_WRITE;
    report = static_cast<Report*>(::mmap(nullptr, sizeof(Report), access, MAP_SHARED, file, 0));
    ::close(file);
    std::sscanf(std::getenv("FAULT"), "%15s %ld %ld %d", kindHit, &first, &last, &error);
}

__attribute__((destructor)) void reportEnd() {
    __libc_freeres();
    for (int file = 3; file < 64; ++file) {
        report->descriptors += ::fcntl(file, F_GETFD) >= 0 ? 1 : 0;
    }
    report->hasEnded = 1;
}

int mainWithFaults(int argc, char** argv, char** environment) {
    isInMain = true;
    const int status = realMain(argc, argv, environment);
    isInMain = false;
    return status;
}

}  // namespace

extern "C" {

int __libc_start_main(int (*program)(int, char**, char**), int argc, char** argv, void (*init)(),
                      void (*fini)(), void (*loaderFini)(), void* stackEnd) {
    realMain = program;
    return next("__libc_start_main", &__libc_start_main)(mainWithFaults, argc, argv, init, fini,
                                                         loaderFini, stackEnd);
}

void* malloc(std::size_t size) {
    return isHit("alloc") ? nullptr : counted(__libc_malloc(size));
}

void* calloc(std::size_t count, std::size_t size) {
    return isHit("alloc") ? nullptr : counted(__libc_calloc(count, size));
}

void* realloc(void* block, std::size_t size) {
    void* const moved = isHit("alloc") ? nullptr : __libc_realloc(block, size);
    return block == nullptr ? counted(moved) : moved;
}

void free(void* block) {
    std::atomic_ref(report->blocks) -= block != nullptr ? 1 : 0;
    __libc_free(block);
}

ssize_t read(int file, void* data, std::size_t size) {
    return transfer("read", SYS_read, file, data, size);
}

/// Messages are spared: failures could not be told without them.
ssize_t write(int file, const void* data, std::size_t size) {
    return file == STDERR_FILENO ? ::syscall(SYS_write, file, data, size)
                                 : transfer("write", SYS_write, file, data, size);
}

FILE* fopen(const char* path, const char* mode) {
    const int flags = *mode == 'r' ? O_RDONLY : O_WRONLY | O_CREAT | O_TRUNC;
    const int file = isHit("open") ? -1 : ::open(path, flags, 0666);
    return file < 0 ? nullptr : streamOf(file, mode);
}

/// Readers keep their buffer: a stream of this kind would be read byte by byte without.
int setvbuf(FILE* stream, char* buffer, int mode, std::size_t size) noexcept {
    return __freading(stream) != 0 ? 0 : next("setvbuf", &setvbuf)(stream, buffer, mode, size);
}

int fclose(FILE* stream) {
    const int status = next("fclose", &fclose)(stream);
    return isHit("close") ? EOF : status;
}

dirent* readdir(DIR* folder) {
    return isHit("list") ? nullptr : next("readdir", &readdir)(folder);
}
}
