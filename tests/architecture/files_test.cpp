// What may be in the tree: small files, and a test beside every source.
#include "architecture/tree.h"

#include <algorithm>
#include <fstream>
#include <set>

#include <gtest/gtest.h>

namespace fs = std::filesystem;
using namespace tamarin;

namespace {

const fs::path root = TAMARIN_SOURCE_DIR;

// tests/architecture/tested_elsewhere.txt: "src/room/file.cpp  where it is tested, or why not".
std::set<std::string> testedElsewhere() {
    std::ifstream file(root / "tests/architecture/tested_elsewhere.txt");
    std::set<std::string> names;
    for (std::string line; std::getline(file, line);)
        if (!line.empty() && line[0] != '#')
            names.insert(line.substr(0, line.find(' ')));
    return names;
}

std::string testOf(const std::string& source) { // src/room/file.cpp
    return "tests" + source.substr(3, source.size() - 3 - 4) + "_test.cpp";
}

} // namespace

TEST(Files, EverySourceHasItsTest) {
    const std::set<std::string> listed = testedElsewhere();
    for (const std::string& file : treeFiles(root)) {
        if (!file.starts_with("src/") || !file.ends_with(".cpp"))
            continue;
        const bool tested = fs::exists(root / testOf(file));
        EXPECT_TRUE(tested || listed.contains(file))
            << file << " has no " << testOf(file)
            << " and is not listed in tests/architecture/tested_elsewhere.txt";
        EXPECT_FALSE(tested && listed.contains(file))
            << file << " has its test; take it off tests/architecture/tested_elsewhere.txt";
    }
}

TEST(Files, ListOfExceptionsNamesSourcesThatExist) {
    for (const std::string& file : testedElsewhere())
        EXPECT_TRUE(fs::exists(root / file)) << file;
}

// Tables and strategies are generated, never committed.
TEST(Files, NoneIsLarge) {
    const std::vector<std::string> files = treeFiles(root);
    ASSERT_TRUE(std::find(files.begin(), files.end(), "CMakeLists.txt") != files.end());
    for (const std::string& file : files) {
        if (fs::is_regular_file(root / file)) {
            EXPECT_LE(fs::file_size(root / file), uintmax_t{1} << 20) << file;
        }
    }
}
