#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <string>

#include "base/Exception.h"
#include "base/FileUtils.h"

using vek::FileUtils;
namespace fs = std::filesystem;

namespace {

// Runs each test inside a folder of its own.
class FileUtilsTest : public testing::Test {
  protected:
    void SetUp() override {
        std::string name = testing::TempDir() + "fileutilsXXXXXX";
        ASSERT_NE(mkdtemp(name.data()), nullptr);
        folder_ = name;
        fs::current_path(folder_);
        ASSERT_TRUE(FileUtils::makePath("d/sub/deep", 0755));
        for (const char* file : {"d/b.xml", "d/a.xml", "d/.h.xml", "d/n.txt", "d/sub/c.xml"}) {
            std::ofstream(file) << "x";
        }
        ASSERT_EQ(mkfifo("d/pipe", 0600), 0);
        fs::create_symlink("nowhere", "d/dangling.xml");
        fs::create_directory_symlink(".", "d/sub/loop1");
        fs::create_directory_symlink("../../d", "d/sub/loop2");
    }
    void TearDown() override {
        fs::current_path(home_);
        fs::remove_all(folder_);
    }

  private:
    fs::path home_ = fs::current_path();
    fs::path folder_;
};

std::string check(const char* file, const char* dir) {
    try {
        return FileUtils::pathNameCheck(file, dir).c_str();
    } catch (const vek::Exception& error) {
        return std::to_string(error.code()) + " " + error.msg().c_str();
    }
}

}  // namespace

TEST(FileUtils, SplitsAndJoinsNames) {
    const struct {
        const char *path, *base, *strippedBase, *dir, *strippedDir;
    } rows[] = {
        {"a/b/c", "c", "c", "a/b", "a/b"}, {"/c", "c", "c", "/", "/"}, {"c", "c", "c", "/", "/"},
        {"a/b/", "", "b", "a/b", "a"},     {"a/", "", "a", "a", "/"},  {"/", "", "/", "/", "/"},
        {"//", "", "", "/", "/"},          {"a//", "", "", "a/", "a"}, {"", "", "", "/", "/"},
        {nullptr, "", "", "/", "/"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(FileUtils::baseName(row.path, false).cmp(row.base), 0) << row.base;
        EXPECT_EQ(FileUtils::baseName(row.path, true).cmp(row.strippedBase), 0) << row.base;
        EXPECT_STREQ(FileUtils::dirName(row.path, false).c_str(), row.dir);
        EXPECT_STREQ(FileUtils::dirName(row.path, true).c_str(), row.strippedDir);
    }
    EXPECT_STREQ(FileUtils::pathName("f", "d/").c_str(), "d/f");
    EXPECT_STREQ(FileUtils::pathName("/x", "d").c_str(), "d//x");
}

TEST_F(FileUtilsTest, ChecksNames) {
    EXPECT_EQ(check("a.xml", "d") + check("d/pipe", nullptr), "d/a.xmld/pipe");
    EXPECT_EQ(check("", "d") + check(nullptr, "d"),
              "2 invalid blank filename2 invalid blank filename");
    EXPECT_EQ(check("x", "d") + check("d", ""), "2 \"d/x\"2 \"d\"");
    EXPECT_TRUE(FileUtils::checkDirectory("d") && !FileUtils::checkDirectory("d/pipe"));
    EXPECT_FALSE(FileUtils::checkDirectory(nullptr) || FileUtils::checkFile(nullptr));
}

TEST_F(FileUtilsTest, MakesPaths) {
    for (const char* path : {"p/q/r", "p/q/r", "", ".", "/", "./s//t/", "d/a.xml"}) {
        EXPECT_TRUE(FileUtils::makePath(path, 0755)) << path;
    }
    EXPECT_TRUE(FileUtils::checkDirectory("p/q/r") && FileUtils::checkDirectory("s/t"));
    EXPECT_FALSE(FileUtils::makePath(nullptr, 0755) || FileUtils::makePath("d/a.xml/u", 0755));
    EXPECT_FALSE(FileUtils::makePath(std::string(5000, 'x').c_str(), 0755));
}

TEST_F(FileUtilsTest, ListsFiles) {
    const char* const tree = " d/.h.xml d/a.xml d/b.xml d/n.txt d/pipe d/sub/c.xml";
    const struct {
        const char *dir, *pattern;
        bool recursive;
        std::string expected;
    } rows[] = {
        {"d", "*.xml", false, " d/.h.xml d/a.xml d/b.xml"},
        {"d/", "[!.]*.xml", true, " d/a.xml d/b.xml"},
        {"d", "*", true, tree},
        {"d", nullptr, true, tree},
        {nullptr, nullptr, false, ""},
        {nullptr, "[ad]*", true, " d/a.xml"},
    };
    for (const auto& row : rows) {
        vek::ObjAppendListP<vek::String> list;
        list.append(new vek::String("first"));
        const int count = FileUtils::listFiles(row.dir, row.pattern, row.recursive, list);
        EXPECT_EQ(FileUtils::listFiles("none", nullptr, true, list), 0);
        EXPECT_EQ(count, list.count());
        std::string names;
        for (long i = 1; i < list.count(); ++i) {
            names += std::string(" ") + list[i]->c_str();
        }
        EXPECT_EQ(names, row.expected);
    }
}
