#include "toolbox/manifest.h"

#include "toolbox/program.h"

#include <chrono>

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
    const std::string path = (directory / "manifest.json").string();
    for (const char* nonsense : {"", "{", "[]", "{\"files\":3}"}) {
        writeFile(path, nonsense);
        ::testing::internal::CaptureStderr();
        ASSERT_TRUE(recordFiles(directory.string(), {{"a", "x", "y"}}).ok()) << nonsense;
        EXPECT_EQ(::testing::internal::GetCapturedStderr(),
                  "tamarin: " + path + " could not be read as a manifest: it is kept as " + path +
                      ".bad, and a new one begun\n");
        EXPECT_EQ(files().back()["name"], "a");
        EXPECT_EQ(contentsOf(path + ".bad"), nonsense);
    }
    writeFile(path, "{\"files\":[3]}");
    ASSERT_TRUE(recordFiles(directory.string(), {{"a", "x", "y"}}).ok());
    EXPECT_EQ(files().back()["name"], "a");
}

TEST_F(Manifest, NeedsTheFiles) {
    EXPECT_FALSE(recordFiles(directory.string(), {{"absent", "x", "y"}}).ok());
    EXPECT_FALSE(hashOfFile((directory / "absent").string()).ok());
}

TEST_F(Manifest, EntersWhatWasAnnouncedAndWrittenSince) {
    const std::string place = directory.string();
    writeFile(directory / "old", "1");
    std::filesystem::last_write_time(
        directory / "old", std::filesystem::file_time_type::clock::now() - std::chrono::hours(1));
    const ManifestEntry old{"old", "seed 2", "y"};
    const ManifestEntry made{"made", "seed 2", "y"};
    ASSERT_TRUE(announceFiles(place, {old, made, {"never", "x", "y"}}).ok());
    EXPECT_EQ(files().size(), 0U);
    writeFile(directory / "made", "2"); // and the process is killed
    ASSERT_TRUE(recordAnnounced(place).ok());
    ASSERT_EQ(files().size(), 1U);
    EXPECT_EQ(files()[0]["name"], "made");
    EXPECT_EQ(files()[0]["made"], "seed 2");
    EXPECT_FALSE(nlohmann::json::parse(contentsOf(directory / "manifest.json")).contains("begun"));

    // The next announcement does the same, and recording takes files off the list.
    ASSERT_TRUE(announceFiles(place, {old}).ok());
    writeFile(directory / "old", "3");
    ASSERT_TRUE(announceFiles(place, {{"made", "seed 3", "y"}}).ok());
    EXPECT_EQ(files().size(), 2U);
    writeFile(directory / "made", "4");
    ASSERT_TRUE(recordFiles(place, {{"made", "seed 3", "y"}}).ok());
    EXPECT_EQ(files()[0]["made"], "seed 3");
    EXPECT_FALSE(nlohmann::json::parse(contentsOf(directory / "manifest.json")).contains("begun"));
}

TEST_F(Manifest, ComparesAndSaysWhyNot) {
    const std::string place = directory.string();
    std::vector<std::string> good;
    EXPECT_EQ(compareWithManifest(place, good).error(), "there is no " + place + "/manifest.json");
    writeFile(directory / "manifest.json", "[]");
    EXPECT_EQ(compareWithManifest(place, good).error(),
              place + "/manifest.json is no manifest: delete it");
    writeFile(directory / "manifest.json", R"({"files": [3, {"name": 4}, {"name": "absent"}]})");
    const auto none = compareWithManifest(place, good);
    ASSERT_TRUE(none.ok());
    EXPECT_TRUE(none->empty());
    writeFile(directory / "a", "1");
    writeFile(directory / "b", "2");
    ASSERT_TRUE(recordFiles(place, {{"a", "x", "y"}, {"b", "x", "y"}}).ok());
    writeFile(directory / "b", "3");
    const auto one = compareWithManifest(place, good);
    ASSERT_TRUE(one.ok());
    EXPECT_EQ(one->size(), 1U);
    EXPECT_EQ(good, std::vector<std::string>{"a"});
    const auto others =
        compareWithManifest(place, good, [](const std::string& name) { return name != "b"; });
    ASSERT_TRUE(others.ok());
    EXPECT_TRUE(others->empty());
    writeFile(directory / "b", "longer");
    const auto longer = compareWithManifest(place, good);
    ASSERT_TRUE(longer.ok());
    ASSERT_EQ(longer->size(), 1U);
    EXPECT_EQ(longer->front().name, "b");
    EXPECT_EQ(longer->front().problem, "it has 6 bytes, not 1 as in the manifest");
}

} // namespace
} // namespace tamarin::testing
