// What may be in the tree: small files, and a test beside every source.
#include "architecture/tree.h"
#include "support/tree_paths.h"

#include <algorithm>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace fs = std::filesystem;

namespace tamarin::test {

namespace {

const fs::path root = test::inTree("");

// tests/architecture/tested_elsewhere.txt: "src/room/file.cpp tests/room/other_test.cpp".
std::map<std::string, std::string> testedElsewhere() {
    std::ifstream file(root / "tests/architecture/tested_elsewhere.txt");
    std::map<std::string, std::string> where;
    for (std::string line; std::getline(file, line);) {
        std::istringstream words(line);
        std::string source;
        if (!line.empty() && line[0] != '#' && words >> source)
            words >> where[source];
    }
    return where;
}

std::string testOf(const std::string& source) { // src/room/file.cpp
    return "tests" + source.substr(3, source.size() - 3 - 4) + "_test.cpp";
}

} // namespace

TEST(Files, EverySourceHasItsTest) {
    const std::map<std::string, std::string> listed = testedElsewhere();
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

TEST(Files, ListOfExceptionsNamesFilesThatExist) {
    for (const auto& [source, test] : testedElsewhere()) {
        EXPECT_TRUE(fs::is_regular_file(root / source)) << source;
        EXPECT_TRUE(test.starts_with("tests/") && fs::is_regular_file(root / test))
            << source << " is said to be tested in '" << test << "'";
    }
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

// An exception that leaves the body of a parallel region ends the process. A region says, in the
// line before it, that nothing in it throws, or runs its bodies through ParallelErrors (support/).
TEST(Files, NoExceptionLeavesAParallelRegion) {
    int regions = 0;
    for (const std::string& file : treeFiles(root)) {
        if (!file.starts_with("src/"))
            continue;
        std::ifstream in(root / file);
        std::vector<std::string> lines;
        for (std::string line; std::getline(in, line);)
            lines.push_back(line);
        for (size_t i = 1; i < lines.size(); ++i) {
            if (!lines[i].starts_with("#pragma omp parallel"))
                continue;
            ++regions;
            bool guarded = lines[i - 1].ends_with("// Nothing in here throws.");
            for (size_t j = i; j < std::min(i + 24, lines.size()); ++j)
                guarded = guarded || lines[j].find("errors.run(") != std::string::npos;
            EXPECT_TRUE(guarded) << file << ':' << i + 1;
        }
    }
    EXPECT_GT(regions, 15);
}

} // namespace tamarin::test
