#pragma once

#include <string>

namespace eqrecode {

/// Reads the whole of a file, whatever its kind; "-" is standard input. Throws std::system_error,
/// also when it has more bytes than a document can.
std::string readFile(const std::string& path);

/// Reads an open file to its end; the messages call it `name`. Throws as readFile.
std::string readToEnd(int descriptor, const std::string& name);

}  // namespace eqrecode
