#include "directory/manifest.h"

#include "toolbox/program.h"

#include <chrono>
#include <sys/resource.h>

#include <nlohmann/json.hpp>

namespace tamarin::test {
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
    std::string kept = path + ".bad";
    int number = 1;
    for (const char* nonsense : {"", "{", "[]", "{\"files\":3}"}) {
        writeFile(path, nonsense);
        ::testing::internal::CaptureStderr();
        ASSERT_TRUE(recordFiles(directory.string(), {{"a", "x", "y"}}).ok()) << nonsense;
        EXPECT_EQ(::testing::internal::GetCapturedStderr(),
                  "tamarin: " + path + " makes no sense as a manifest: it is kept as " + kept +
                      ", and a new one begun\n");
        EXPECT_EQ(files().back()["name"], "a");
        EXPECT_EQ(contentsOf(kept), nonsense);
        kept = path + ".bad." + std::to_string(++number);
    }
    writeFile(path, "{\"files\":[3]}");
    ASSERT_TRUE(recordFiles(directory.string(), {{"a", "x", "y"}}).ok());
    EXPECT_EQ(files().back()["name"], "a");
}

// A good manifest was once put aside, all hashes with it, when a process could open no more files.
TEST_F(Manifest, ThatCannotBeReadIsLeftAlone) {
    const std::string place = directory.string();
    const std::string path = place + "/manifest.json";
    writeFile(directory / "a", "1");
    const auto expectLeft = [&](const std::string& cause) {
        for (const Status& status :
             {recordFiles(place, {{"a", "x", "y"}}), announceFiles(place, {{"a", "x", "y"}}),
              recordAnnounced(place)}) {
            ASSERT_FALSE(status.ok());
            EXPECT_EQ(status.error(), path + ": " + cause);
        }
        EXPECT_EQ(compareWithManifest(place).error(), path + ": " + cause);
        EXPECT_FALSE(std::filesystem::exists(path + ".bad"));
    };
    writeFile(path, "{\"files\": []}");
    std::filesystem::resize_file(path, (size_t{16} << 20) + 1);
    expectLeft("more than 16777216 bytes");
    std::filesystem::remove(path);
    std::filesystem::create_directory(path);
    expectLeft("not a regular file");
    std::filesystem::remove(path);
    std::filesystem::create_symlink("manifest.json", path);
    expectLeft("could not examine: Too many levels of symbolic links");
    std::filesystem::remove(path);
    ASSERT_TRUE(recordFiles(place, {{"a", "x", "y"}}).ok());
    const rlimit before = [] {
        rlimit limit{};
        getrlimit(RLIMIT_NOFILE, &limit);
        return limit;
    }();
    const rlimit none{0, before.rlim_max};
    setrlimit(RLIMIT_NOFILE, &none);
    const Status status = recordFiles(place, {{"a", "x", "y"}});
    setrlimit(RLIMIT_NOFILE, &before);
    ASSERT_FALSE(status.ok());
    EXPECT_EQ(status.error(), path + ": could not open: Too many open files");
    EXPECT_EQ(files().size(), 1U);
}

// The new file is there, and the process that made it was killed before it could say so.
TEST_F(Manifest, DoesNotJudgeWhatWasMadeSince) {
    const std::string place = directory.string();
    writeFile(directory / "a", "1");
    writeFile(directory / "b", "1");
    ASSERT_TRUE(recordFiles(place, {{"a", "x", "y"}, {"b", "x", "y"}}).ok());
    std::filesystem::last_write_time(
        directory / "b", std::filesystem::file_time_type::clock::now() - std::chrono::hours(1));
    ASSERT_TRUE(announceFiles(place, {{"a", "x", "y"}, {"b", "x", "y"}}).ok());
    writeFile(directory / "a", "2");
    const auto compared = compareWithManifest(place);
    ASSERT_TRUE(compared.ok());
    EXPECT_TRUE(compared->differences.empty());
    ASSERT_EQ(compared->good.size(), 1U);
    EXPECT_EQ(compared->good[0].name, "b");
}

TEST_F(Manifest, TakesNamesOfAnyBytes) {
    writeFile(directory / "a", "1");
    ASSERT_TRUE(recordFiles(directory.string(), {{"a", "x", "k\xff.game"}}).ok());
    EXPECT_EQ(files()[0]["from"], "k\xEF\xBF\xBD.game");
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
    EXPECT_EQ(compareWithManifest(place)->state, ManifestState::absent);
    writeFile(directory / "manifest.json", "[]");
    EXPECT_EQ(compareWithManifest(place)->state, ManifestState::nonsense);
    writeFile(directory / "manifest.json", R"({"files": [3, {"name": 4}, {"name": "absent"}]})");
    const auto none = compareWithManifest(place);
    ASSERT_TRUE(none.ok());
    EXPECT_EQ(none->state, ManifestState::read);
    EXPECT_TRUE(none->differences.empty());
    EXPECT_TRUE(none->good.empty());
    writeFile(directory / "a", "1");
    writeFile(directory / "b", "2");
    ASSERT_TRUE(recordFiles(place, {{"a", "x", "y"}, {"b", "x", "y"}}).ok());
    writeFile(directory / "b", "3");
    const auto one = compareWithManifest(place);
    ASSERT_TRUE(one.ok());
    ASSERT_EQ(one->differences.size(), 1U);
    EXPECT_EQ(one->differences[0].name, "b");
    EXPECT_FALSE(one->differences[0].unread);
    ASSERT_EQ(one->good.size(), 1U);
    ASSERT_NE(one->find("a"), nullptr);
    EXPECT_EQ(one->find("a")->from, "y");
    EXPECT_EQ(one->find("b"), nullptr);
    const auto others =
        compareWithManifest(place, [](const std::string& name) { return name != "b"; });
    ASSERT_TRUE(others.ok());
    EXPECT_TRUE(others->differences.empty());
    writeFile(directory / "b", "longer");
    const auto longer = compareWithManifest(place);
    ASSERT_TRUE(longer.ok());
    ASSERT_EQ(longer->differences.size(), 1U);
    EXPECT_EQ(longer->differences[0].name, "b");
    EXPECT_EQ(longer->differences[0].problem, "it has 6 bytes, not 1 as in the manifest");
    writeFile(directory / "manifest.json", R"({"files": [{"name": "sub"}, {"name": "../a"}]})");
    std::filesystem::create_directory(directory / "sub");
    const auto unread = compareWithManifest(place);
    ASSERT_EQ(unread->differences.size(), 1U);
    EXPECT_TRUE(unread->differences[0].unread);
    EXPECT_EQ(unread->differences[0].problem,
              "cannot be read: " + place + "/sub: not a regular file");
}

} // namespace
} // namespace tamarin::test
