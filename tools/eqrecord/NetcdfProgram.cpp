#include "tools/eqrecord/NetcdfProgram.h"

#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

namespace eqrecord {

void becomeNetcdfProgram(std::span<char* const> arguments) {
    std::string name = "eqrecord-netcdf";
    std::vector<char*> all{name.data()};
    all.insert(all.end(), arguments.begin(), arguments.end());
    all.push_back(nullptr);
    std::error_code unknown;
    const auto own = std::filesystem::read_symlink("/proc/self/exe", unknown);
    if (!unknown) {
        const std::string beside = (own.parent_path() / name).string();
        ::execv(beside.c_str(), all.data());
    }
    if (unknown || errno == ENOENT) {
        ::execvp(name.c_str(), all.data());
    }
    if (errno == ENOENT) {
        throw std::runtime_error("netCDF needs eqrecord-netcdf (package eqconvert-netcdf)");
    }
    throw std::system_error(errno, std::generic_category(), name);
}

}  // namespace eqrecord
