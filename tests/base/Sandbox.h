#pragma once

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <vector>

/// A new, empty folder as the current one, for files, and for pipes that other processes feed; all
/// goes with the object, which leaves "/" as the current folder.
class Sandbox {
  public:
    Sandbox() {
        EXPECT_NE(mkdtemp(folder_.data()), nullptr);
        std::filesystem::current_path(folder_);
    }
    Sandbox(const Sandbox&) = delete;
    Sandbox& operator=(const Sandbox&) = delete;
    ~Sandbox() {
        dup2(stdin_, 0);
        close(stdin_);
        for (const pid_t feeder : feeders_) {
            kill(feeder, SIGKILL);
            waitpid(feeder, nullptr, 0);
        }
        std::filesystem::current_path("/");
        std::filesystem::remove_all(folder_);
    }
    static bool put(const std::filesystem::path& name, std::string_view data) {
        std::filesystem::create_directories(absolute(name).parent_path());
        return bool(std::ofstream(name, std::ios::binary) << data);
    }
    /// A pipe, "-" as standard input, filled slowly and in odd pieces.
    bool pipe(const std::string& name, std::string_view data) {
        const bool isMade = mkfifo(name.c_str(), 0600) == 0;
        feeders_.push_back(fork());
        if (feeders_.back() == 0) {
            const int out = open(name.c_str(), O_WRONLY);
            for (std::size_t at = 0, size = 1; at < data.size(); size = (size * 7 + 3) % 997) {
                usleep(500);
                const std::string_view piece = data.substr(at, size);
                at += write(out, piece.data(), piece.size()) < 0 ? data.size() : piece.size();
            }
            _exit(0);
        }
        return isMade && (name != "-" || (close(0) == 0 && open(name.c_str(), O_RDONLY) == 0));
    }

  private:
    std::string folder_ = testing::TempDir() + "baseXXXXXX";
    int stdin_ = dup(0);
    std::vector<pid_t> feeders_;
};
