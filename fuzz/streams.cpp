// Random operations on random streams, compared with the plain bytes.

#include <unistd.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz/FuzzInput.h"
#include "fuzz/MemoryFile.h"
#include "tests/base/StreamComparison.h"

namespace {

enum Place { file, folder, fifo, standardInput };
// What is opened, by descriptors: the first file, all of them, a pipe.
const std::string names[] = {"/proc/self/fd/100", "/proc/self/fd/10[0-3]", "/proc/self/fd/200"};

/// Fills a pipe, whose reading end becomes the descriptor, and returns the other.
int fillPipe(std::string_view data, int descriptor) {
    int ends[2];
    require(pipe(ends) == 0 && dup2(ends[0], descriptor) == descriptor, "a pipe can be made");
    const ssize_t written = write(ends[1], data.data(), data.size());
    require(written == static_cast<ssize_t>(data.size()), "the pipe takes all");
    static_cast<void>(ends[0] != descriptor && close(ends[0]));
    return ends[1];
}

}  // namespace

/// The place, the driver, the size of the data and what they are, the sizes of parts, then the
/// choices of the operations.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static std::array<MemoryFile, 4> files{MemoryFile(100), MemoryFile(101), MemoryFile(102),
                                           MemoryFile(103)};
    FuzzInput in(data, size);
    const int place = in.pick(file, standardInput);
    const std::string name = names[place % standardInput] + in.choose(StreamComparison::drivers);
    std::string bytes(in.raw<std::uint16_t>() % (in.pick(0, 1) == 0 ? 300 : 12000), '\xFF');
    std::minstd_rand random(in.raw<std::uint8_t>());
    for (char& c : bytes) {
        c = random() % 3 == 0 ? c : static_cast<char>(random());
    }
    std::vector<std::string> parts;
    std::string_view left = bytes;
    for (MemoryFile& part : files) {
        const bool isCut = place == folder && &part != &files.back();
        const auto most = static_cast<long>(left.size());
        parts.emplace_back(
            left.substr(0, static_cast<std::size_t>(in.pick(isCut ? 0 : most, most))));
        left.remove_prefix(parts.back().size());
        part.put(parts.back());
    }
    const int writer = place < fifo ? -1 : fillPipe(bytes, place == fifo ? 200 : 0);
    StreamComparison comparison(place == standardInput ? nullptr : name.c_str(), place >= fifo,
                                parts, [&](long low, long high) { return in.pick(low, high); });
    close(writer);  // kept until now, since no pipe opens without a writer
    for (int i = 0; i < 200 && !in.isEmpty(); ++i) {
        comparison.step(i);
    }
    return 0;
}
