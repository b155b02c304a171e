#pragma once

#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>

/// A new, empty folder as the current one; it goes with the object, and all that is in it.
class EmptyFolder {
  public:
    EmptyFolder() {
        EXPECT_NE(mkdtemp(folder_.data()), nullptr);
        std::filesystem::current_path(folder_);
    }
    EmptyFolder(const EmptyFolder&) = delete;
    EmptyFolder& operator=(const EmptyFolder&) = delete;
    ~EmptyFolder() {
        std::filesystem::current_path(home_);
        std::filesystem::remove_all(folder_);
    }

  private:
    std::filesystem::path home_ = std::filesystem::current_path();
    std::string folder_ = testing::TempDir() + "baseXXXXXX";
};
