// Reads a file to its end in pieces of 2 KB and prints the sum of its bytes and the peak memory in
// KB: the work that bench/streams.py times. usage: stream_read fread|DRIVER FILE
//
// "fread" reads through plain stdio; any other word is a driver of the input server, with options
// behind a ":".

#include <array>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <memory>
#include <string>
#include <string_view>

#include "base/InputServer.h"

namespace {

constexpr std::size_t pieceSize = 2048;
using Piece = std::array<char, pieceSize>;

std::uint64_t sumOf(std::string_view bytes) {
    std::uint64_t sum = 0;
    for (const char byte : bytes) {
        sum += static_cast<unsigned char>(byte);
    }
    return sum;
}

std::uint64_t readPlain(const char* path) {
    std::FILE* const file = std::fopen(path, "rb");
    Piece piece;
    std::uint64_t sum = 0;
    std::size_t got = 0;
    while (file != nullptr && (got = std::fread(piece.data(), 1, piece.size(), file)) > 0) {
        sum += sumOf({piece.data(), got});
    }
    if (file != nullptr) {
        std::fclose(file);
    }
    return sum;
}

std::uint64_t readStream(const char* path, const std::string& driver) {
    const std::string name = std::string(path) + "::" + driver;
    const std::unique_ptr<vek::InputStream> stream(vek::InputServer::getInstance()->getFile(
        name.c_str(), vek::InputStream::BYTE_ORDER_NATIVE));
    Piece piece;
    std::uint64_t sum = 0;
    while (stream) {
        const long before = stream->offset();
        stream->bufread(piece.data(), piece.size());
        const long got = stream->offset() - before;
        if (got <= 0) {
            break;
        }
        sum += sumOf({piece.data(), static_cast<std::size_t>(got)});
    }
    return sum;
}

/// The most memory that the process has held, in KB.
std::string peakMemory() {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with("VmHWM:")) {
            return line.substr(line.find_first_of("0123456789"));
        }
    }
    return "?";
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fputs("usage: stream_read fread|DRIVER FILE\n", stderr);
        return 2;
    }
    const std::string how = argv[1];
    const std::uint64_t sum = how == "fread" ? readPlain(argv[2]) : readStream(argv[2], how);
    std::printf("%llu\n%s\n", static_cast<unsigned long long>(sum), peakMemory().c_str());
    return 0;
}
