// Random operations on random streams, compared with the plain bytes.

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "base/InputServer.h"
#include "base/InputStreamStl.h"
#include "fuzz/Check.h"
#include "fuzz/FuzzInput.h"
#include "fuzz/MemoryFile.h"
#include "tests/base/StreamComparison.h"

namespace {

using vek::InputStream;
using enum StreamComparison::Kind;

// Descriptors, and with them the names of the files that a pattern matches.
constexpr int firstMember = 100;
constexpr const char* members = "/proc/self/fd/10[0-3]";
constexpr int onlyFile = 200;
constexpr const char* one = "/proc/self/fd/200";
constexpr int pipeEnd = 201;
constexpr const char* pipeName = "/proc/self/fd/201";

struct Source {
    StreamComparison::Kind kind;
    long back;         ///< how far a pipe can go back, -1 for what is no pipe
    const char* name;  ///< null for standard input
    const char* driver;
    const char* options;
};
// clang-format off
constexpr Source sources[] = {
    {basic, -1, one, "basic", nullptr}, {stl, -1, one, "fstream", nullptr}, {memory, -1, "", nullptr, nullptr},
    {window, -1, one, "memory", nullptr}, {window, -1, one, "buffer", "0"}, {window, -1, one, "buffer", "1"},
    {window, -1, one, "buffer", "5"}, {window, -1, one, "buffer", "-3"}, {window, -1, one, "bmulti", nullptr},
    {chain, -1, one, "multi", "basic"}, {chain, -1, members, "multi", nullptr}, {chain, -1, members, "multi", "basic"},
    {chain, -1, members, "multi", "fstream"}, {chain, -1, members, "memory", nullptr}, {chain, -1, members, "buffer", "1"},
    {window, -1, members, "bmulti", "1"}, {window, -1, members, "bmulti", "0"},
    {basic, 0, pipeName, "basic", nullptr}, {stl, 0, pipeName, "fstream", nullptr}, {chain, 0, pipeName, "multi", "basic"},
    {chain, 500, pipeName, "multi", nullptr}, {window, 500, pipeName, "memory", nullptr}, {window, 500, pipeName, "bmulti", nullptr},
    {window, 15000, pipeName, "buffer", "16"}, {basic, 0, nullptr, "basic", nullptr}, {window, 500, nullptr, "buffer", nullptr}};
// clang-format on

std::string makeData(FuzzInput& in) {
    static constexpr std::array<long, 4> most{3000, 12000, 5, 300};
    std::string data(static_cast<std::size_t>(in.pick(0, in.choose(most))), '\xFF');
    unsigned state = in.byte();
    for (char& c : data) {
        state = state * 1664525 + 1013904223;
        c = state >> 30 == 0 ? '\xFF' : static_cast<char>(state >> 16);
    }
    return data;
}

/// Fills a pipe, whose reading end becomes the descriptor, and returns the other.
int fillPipe(const std::string& data, int descriptor) {
    int ends[2];
    check(pipe(ends) == 0, "a pipe can be made");
    check(write(ends[1], data.data(), data.size()) == static_cast<ssize_t>(data.size()),
          "the pipe takes all");
    if (ends[0] != descriptor) {
        check(dup2(ends[0], descriptor) == descriptor, "the descriptor can be had");
        close(ends[0]);
    }
    return ends[1];
}

/// Opens the source over the data; `parts` receives what it chains.
std::unique_ptr<InputStream> open(const Source& source, const std::string& data, FuzzInput& in,
                                  std::vector<std::string>& parts) {
    static MemoryFile whole(onlyFile);
    static std::array<MemoryFile, 4> files{MemoryFile(firstMember), MemoryFile(firstMember + 1),
                                           MemoryFile(firstMember + 2),
                                           MemoryFile(firstMember + 3)};
    const auto order = static_cast<InputStream::ByteOrder>(static_cast<int>(in.upTo(2)) - 1);
    if (source.kind == memory) {
        return std::make_unique<vek::InputSStream>("text", order, data);
    }
    int writer = -1;
    if (source.back >= 0) {
        writer = fillPipe(data, source.name == nullptr ? 0 : pipeEnd);
    } else if (source.name == members) {
        parts.clear();
        std::size_t start = 0;
        for (MemoryFile& file : files) {
            const bool isLast = &file == &files.back();
            const auto left = static_cast<long>(data.size() - start);
            const auto size = static_cast<std::size_t>(isLast ? left : in.pick(0, left));
            parts.push_back(data.substr(start, size));
            file.put(parts.back());
            start += size;
        }
    } else {
        whole.put(data);
    }
    std::unique_ptr<InputStream> stream(vek::InputServer::getInstance()->getFile(
        source.name, order, source.driver, source.options));
    if (writer >= 0) {
        close(writer);  // kept until now, since no pipe opens without a writer
    }
    return stream;
}

}  // namespace

/// Which source, the size of the data and what they are, byte order and sizes of parts, then a byte
/// or two for each choice of an operation.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzInput in(data, size);
    const Source& source = in.choose(sources);
    const std::string bytes = makeData(in);
    std::vector<std::string> parts{bytes};
    const std::unique_ptr<InputStream> stream = open(source, bytes, in, parts);
    const auto choose = [&](long low, long high) {
        return low + (high - low < 256 ? in.byte() % (high - low + 1) : in.pick(0, high - low));
    };
    const auto agree = [&](bool holds, const char* what) {
        check(holds, what, "differs from the plain bytes");
    };
    StreamComparison comparison(*stream, source.kind, source.back, parts, choose, agree);
    constexpr int mostSteps = 200;
    for (int i = 0; i < mostSteps && !in.isEmpty(); ++i) {
        comparison.step(i);
    }
    return 0;
}
