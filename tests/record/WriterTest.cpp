#include <array>
#include <bit>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <vector>

#include "record/Layout.h"
#include "record/Writer.h"

namespace {

class Collected : public record::Sink {
  public:
    void write(std::string_view bytes) override { all += bytes; }
    std::string all;
};

// The page on the record is the layout's other half: "| number | name | ...".
TEST(Layout, IsThatOfThePageOnTheRecord) {
    std::ifstream page(RECORD_PAGE);
    std::vector<std::string> rows;
    for (std::string line; std::getline(page, line);) {
        std::istringstream cells(line);
        std::string number;
        if (line.starts_with("| ") && std::getline(cells.ignore(2), number, '|') &&
            number.find_first_not_of("0123456789 ") == std::string::npos) {
            std::string name;
            std::getline(cells.ignore(1), name, '|');
            rows.push_back(number + name);
        }
    }
    ASSERT_EQ(rows.size(), record::fields.size());
    for (std::size_t i = 0; i < rows.size(); ++i) {
        EXPECT_EQ(rows[i], std::to_string(record::fields[i].number) + " " +
                               std::string(record::fields[i].name) + " ");
    }
}

TEST(Writer, FillsUpToTheWidthAndThePixels) {
    Collected sink;
    record::Writer writer(sink);
    writer.begin("");
    writer.fileCount(123);
    writer.file(255, std::string(9, 'n'));
    writer.file(0, std::string(100, 'n'));
    EXPECT_EQ(sink.all, "ZEDA 5VORN/123\xFF\x30\x39nnnnnnnnn" + std::string(1, '\0') + "100" +
                            std::string(100, 'n'));
    sink.all.clear();
    const std::array<double, 3> values{1, 2, 3};
    writer.vector(values, -1);
    EXPECT_EQ(sink.all, "");
    writer.vector(values, 2);
    writer.vector(std::span(values).first(1), 2000);
    ASSERT_EQ(sink.all.size(), 2002 * sizeof(double));
    std::vector<double> got(2002);
    sink.all.copy(reinterpret_cast<char*>(got.data()), sink.all.size());
    EXPECT_EQ(std::vector<double>(got.begin(), got.begin() + 3), (std::vector<double>{1, 2, 1}));
    for (std::size_t i = 3; i < got.size(); ++i) {
        ASSERT_EQ(std::bit_cast<std::uint64_t>(got[i]), 0x7FF8000000000000U);
    }
}

}  // namespace
