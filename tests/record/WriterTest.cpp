#include <array>
#include <bit>
#include <fstream>
#include <gtest/gtest.h>
#include <regex>
#include <string>
#include <vector>

#include "record/Layout.h"
#include "record/Writer.h"

namespace {

struct Collected : record::Sink {
    void write(std::string_view bytes) override { all += bytes; }
    std::string all;
};

// The page on the record is the layout's other half: "| number | name | ...".
TEST(Layout, IsThatOfThePageOnTheRecord) {
    std::ifstream page(RECORD_PAGE);
    std::string documented, laidOut;
    std::smatch row;
    for (std::string line; std::getline(page, line);) {
        if (std::regex_search(line, row, std::regex(R"(^\| (\d+) \| ([^|]+) \|)"))) {
            documented += row.str(1) + " " + row.str(2) + "\n";
        }
    }
    for (const record::Field& field : record::fields) {
        laidOut += std::to_string(field.number) + " " + std::string(field.name) + "\n";
    }
    EXPECT_EQ(documented, laidOut);
}

TEST(Writer, FillsUpToThePixels) {
    Collected sink;
    record::Writer writer(sink);
    const std::array<double, 3> values{1, 2, 3};
    writer.vector(values, -1);
    writer.vector(values, 2);
    writer.vector(std::span(values).first(1), 2000);
    std::vector<std::uint64_t> wanted(2002, 0x7FF8000000000000);
    for (const std::size_t i : {0U, 1U, 2U}) {
        wanted[i] = std::bit_cast<std::uint64_t>(values[i % 2]);
    }
    const auto* const bytes = reinterpret_cast<const char*>(wanted.data());
    EXPECT_TRUE(sink.all == std::string(bytes, wanted.size() * sizeof(double)));
}

}  // namespace
