#pragma once

#include <functional>
#include <string>

namespace companion {

/// Makes a file or folder with another name in the folder of `path`, and returns that name: calls
/// `make` with names until one is free. `make` returns false and leaves errno when it can't. Throws
/// std::system_error, which names `path`.
std::string makeBeside(const std::string& path, const std::function<bool(const char*)>& make);

/// Gives what was made its name. What has got that name in the meantime keeps it unless
/// `overwrites`. Throws std::system_error, which names `path`.
void giveName(const std::string& temporary, const std::string& path, bool overwrites);

}  // namespace companion
