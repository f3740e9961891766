#include "toolbox/manifest.h"

#include "toolbox/program.h"

#include <nlohmann/json.hpp>

namespace tamarin::testing {
namespace {

class Manifest : public ProgramTest {
protected:
    nlohmann::json files() {
        return nlohmann::json::parse(contentsOf(directory / "manifest.json"))["files"];
    }
};

TEST_F(Manifest, TellsSizeHashAndOrigin) {
    writeFile(directory / "table", "");
    ASSERT_TRUE(recordFiles(directory.string(), {{"table", "by hand", "nothing"}}).ok());
    const auto entry = files().at(0);
    EXPECT_EQ(entry["name"], "table");
    EXPECT_EQ(entry["size"], 0);
    EXPECT_EQ(entry["xxh3"], "2d06800538d394c2"); // the published hash of nothing
    EXPECT_EQ(entry["made"], "by hand");
    EXPECT_EQ(entry["from"], "nothing");
    EXPECT_EQ(entry["when"].get<std::string>().size(), std::string("2026-01-01T00:00:00Z").size());
}

TEST_F(Manifest, ReplacesEntriesAndKeepsOthers) {
    writeFile(directory / "a", "1");
    writeFile(directory / "b", "2");
    ASSERT_TRUE(recordFiles(directory.string(), {{"a", "x", "y"}, {"b", "x", "y"}}).ok());
    writeFile(directory / "a", "longer");
    ASSERT_TRUE(recordFiles(directory.string(), {{"a", "z", "y"}}).ok());
    ASSERT_EQ(files().size(), 2U);
    EXPECT_EQ(files()[0]["size"], 6);
    EXPECT_EQ(files()[0]["made"], "z");
    EXPECT_EQ(files()[1]["made"], "x");
}

TEST_F(Manifest, StartsAnewWhereItMakesNoSense) {
    writeFile(directory / "a", "1");
    for (const char* nonsense : {"", "{", "[]", "{\"files\":3}", "{\"files\":[3]}"}) {
        writeFile(directory / "manifest.json", nonsense);
        ASSERT_TRUE(recordFiles(directory.string(), {{"a", "x", "y"}}).ok()) << nonsense;
        EXPECT_EQ(files().back()["name"], "a");
    }
}

TEST_F(Manifest, NeedsTheFiles) {
    EXPECT_FALSE(recordFiles(directory.string(), {{"absent", "x", "y"}}).ok());
    EXPECT_FALSE(hashOfFile((directory / "absent").string()).ok());
}

} // namespace
} // namespace tamarin::testing
