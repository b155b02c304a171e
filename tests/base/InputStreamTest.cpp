// Every driver against the plain bytes, on files, chains and pipes, while signals interrupt it.

#include <gtest/gtest.h>
#include <random>
#include <string>

#include "tests/Interruptions.h"
#include "tests/base/Sandbox.h"
#include "tests/base/StreamComparison.h"

namespace {

std::mt19937 generator;

long choose(long low, long high) {
    return std::uniform_int_distribution(low, high)(generator);
}

void compare(const char* name, bool isPipe, const std::vector<std::string>& members) {
    SCOPED_TRACE(name == nullptr ? "standard input" : name);
    StreamComparison comparison(name, isPipe, members, choose);
    interruptEvery(250);
    for (int i = 0; i < 1000 || comparison.mustGoOn(); ++i) {
        comparison.step(i);
    }
    interruptEvery(0);
}

TEST(InputStream, GivesTheBytesWhateverTheDriver) {
    for (const int size : {0, 1, 2, 1023, 1024, 1025, 2048, 2049, 4096, 4097, 100000}) {
        std::string data(static_cast<std::size_t>(size), '\xFF');
        for (char& c : data) {
            c = choose(0, 2) == 0 ? c : static_cast<char>(choose(0, 255));
        }
        const std::string first = data.substr(0, data.size() / 2), last = data.substr(first.size());
        Sandbox box;
        ASSERT_TRUE(box.put("one", data) && box.put("d/a", first) && box.put("d/b", "") &&
                    box.put("d/c@", "not read") && box.put("d/d", last) && box.put("d/e", "") &&
                    box.put("d/.f", "not read"));
        for (const std::string driver : StreamComparison::drivers) {
            compare(("one" + driver).c_str(), false, {data});
            compare(("d/*" + driver).c_str(), false, {first, "", "02c@", last, ""});
            compare(("d/[!e]*" + driver).c_str(), false, {first, "", "02c@", last});
            ASSERT_TRUE(std::filesystem::remove("p") == !driver.empty() && box.pipe("p", data));
            compare(("p" + driver).c_str(), true, {data});
        }
        ASSERT_TRUE(box.pipe("-", data));
        compare(nullptr, true, {data});
    }
}

}  // namespace
