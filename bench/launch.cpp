// Runs a program once and prints what it took: wall time in ns from before its start to its end,
// the most memory it held in KB, its exit status (-1 after a signal) and the bytes that it wrote to
// standard output. usage: launch OUTPUT PROGRAM [ARGUMENT...]
//
// Standard output goes to the file OUTPUT, written over in place: no truncation, so that the second
// and later runs find its pages there. Standard error goes to /dev/null. The launcher is this small
// because the kernel counts the memory of the process that starts a program as the program's.

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstring>

int main(int argc, char** argv) {
    if (argc < 3) {
        std::fputs("usage: launch OUTPUT PROGRAM [ARGUMENT...]\n", stderr);
        return 2;
    }
    const int output = ::open(argv[1], O_WRONLY | O_CREAT | O_CLOEXEC, 0644);
    const int null = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
    if (output < 0 || null < 0) {
        std::perror(argv[1]);
        return 1;
    }
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, null, STDERR_FILENO);

    pid_t child = 0;
    int status = 0;
    rusage usage{};
    const auto start = std::chrono::steady_clock::now();
    const int error = posix_spawn(&child, argv[2], &actions, nullptr, argv + 2, environ);
    if (error != 0 || ::wait4(child, &status, 0, &usage) != child) {
        std::fprintf(stderr, "%s: %s\n", argv[2], std::strerror(error));
        return 1;
    }
    const std::chrono::nanoseconds took = std::chrono::steady_clock::now() - start;
    // The descriptor shares its offset with the child's.
    std::printf("%lld %ld %d %lld\n", static_cast<long long>(took.count()), usage.ru_maxrss,
                WIFEXITED(status) ? WEXITSTATUS(status) : -1,
                static_cast<long long>(::lseek(output, 0, SEEK_CUR)));
    posix_spawn_file_actions_destroy(&actions);
    return 0;
}
