// What a person sees when making tables goes wrong: one clear line, no wrong table under a table's
// name, and a run afterwards that puts everything right. The program itself runs, in directories
// that have all tables but the quick ones.
#include "directory/manifest.h"
#include "support/lock.h"
#include "table_builder/later_rounds.h"
#include "toolbox/tamarin_process.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <fstream>
#include <functional>
#include <sched.h>
#include <sstream>
#include <sys/mount.h>
#include <thread>

#include <nlohmann/json.hpp>

namespace tamarin::test {
namespace {

namespace fs = std::filesystem;
using test::Ended;
using test::Process;
using test::runTamarin;
using test::tamarinCommand;

std::string contentsOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

// A small file system on lookup/, seen by this process and its children alone.
struct SmallDisk {
    explicit SmallDisk(const char* size)
        : mounted(unshare(CLONE_NEWNS) == 0 &&
                  mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
                  mount("tmpfs", "lookup", "tmpfs", 0, size) == 0) {}
    SmallDisk(const SmallDisk&) = delete;
    SmallDisk& operator=(const SmallDisk&) = delete;
    ~SmallDisk() {
        if (mounted)
            umount2("lookup", MNT_DETACH);
    }
    const bool mounted;
};

class Trouble : public PlayingDirectory {
protected:
    void SetUp() override {
        PlayingDirectory::SetUp();
        home = fs::current_path().string();
    }
    static bool waitFor(const std::function<bool()>& condition) {
        for (int i = 0; i < 3000; ++i) {
            if (condition())
                return true;
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        return false;
    }
    static size_t temporaries() {
        return static_cast<size_t>(std::count_if(
            fs::directory_iterator("lookup"), fs::directory_iterator(), [](const auto& entry) {
                return entry.path().string().find(".tmp.") != std::string::npos;
            }));
    }
    static std::vector<std::string> inManifest(const char* list) {
        const auto manifest =
            nlohmann::json::parse(contentsOf("lookup/manifest.json"), nullptr, false);
        std::vector<std::string> names;
        if (manifest.is_object() && manifest.contains(list))
            for (const auto& entry : manifest[list])
                names.push_back(entry["name"]);
        return names;
    }
    static long lines(const std::string& text) {
        return std::count(text.begin(), text.end(), '\n');
    }
    Ended tamarin(const std::vector<std::string>& arguments) { return runTamarin(arguments, home); }

    std::string home;
};

TEST_F(Trouble, CtrlCKeepsWhatIsDoneAndTheManifestKnowsIt) {
    writeLaterRounds();
    {
        // Of all groups it would look into gigabytes first.
        Process builder(tamarinCommand({"tables", "--only", "holdem", "--threads", "1"}), home);
        ASSERT_TRUE(waitFor([&] {
            return !inManifest("begun").empty() && inManifest("begun")[0] == "utility_preflop_2p_0";
        }));
        kill(builder.pid(), SIGINT);
        EXPECT_EQ(builder.wait(), 130);
        EXPECT_NE(builder.err().find("stopped; what is done is kept, and the same command goes on "
                                     "from there\n"),
                  std::string::npos)
            << builder.err();
    }
    EXPECT_EQ(inManifest("files"), std::vector<std::string>{"preflop_2p_c"});
    EXPECT_FALSE(fs::exists(utilityPath(2, 0, 0)));
    EXPECT_EQ(temporaries(), 0U);
    const Ended plan = tamarin({"tables", "--only", "holdem", "--dry-run"});
    EXPECT_NE(plan.out.find("clusters: nothing to do"), std::string::npos) << plan.out;
    EXPECT_NE(plan.out.find("utility: would make 2 of 2 files"), std::string::npos) << plan.out;
}

TEST_F(Trouble, SecondBuilderWaitsAndCanBeStopped) {
    writeLaterRounds();
    auto lock = FileLock::take("lookup/.lock");
    ASSERT_TRUE(lock.ok());
    {
        Process second(tamarinCommand({"tables", "--only", "clusters"}), home);
        ASSERT_TRUE(waitFor([&] {
            return contentsOf("stderr.txt").find("waiting: lookup/.lock: locked by process ") !=
                   std::string::npos;
        }));
        EXPECT_FALSE(fs::exists(clusterPath(2, 0)));
        kill(second.pid(), SIGTERM);
        EXPECT_EQ(second.wait(), 143);
    }
    Process third(tamarinCommand({"tables", "--only", "clusters"}), home);
    ASSERT_TRUE(
        waitFor([&] { return contentsOf("stderr.txt").find("waiting") != std::string::npos; }));
    { const FileLock given = std::move(*lock); }
    EXPECT_EQ(third.wait(), 0) << third.err();
    EXPECT_TRUE(fs::exists(clusterPath(2, 0)));
}

TEST_F(Trouble, SomethingElseInATablesPlaceStopsBeforeTheWork) {
    writeLaterRounds();
    fs::remove(equityPath(3, 0));
    fs::create_directory(equityPath(3, 0));
    const Ended ended = tamarin({"tables", "--only", "clusters"});
    EXPECT_EQ(ended.status, 1);
    EXPECT_EQ(ended.err, "tamarin: lookup/preflop_3p is a directory: move it away, a table belongs "
                         "there\n");
    EXPECT_FALSE(fs::exists(clusterPath(2, 0)));
    EXPECT_TRUE(fs::is_directory(equityPath(3, 0)));

    fs::remove(equityPath(3, 0));
    fs::create_symlink("preflop_3p", equityPath(3, 0)); // a link to itself
    EXPECT_EQ(
        tamarin({"tables", "--only", "clusters"}).err,
        "tamarin: lookup/preflop_3p cannot be looked at: Too many levels of symbolic links\n");
    EXPECT_FALSE(fs::exists(clusterPath(2, 0)));
}

TEST_F(Trouble, UnreadableTableStopsBeforeTheWork) {
    writeLaterRounds();
    fs::permissions(equityPath(2, 0), fs::perms::none);
    std::vector<std::string> command =
        tamarinCommand({"tables", "--only", "clusters", "--dir", home});
    if (geteuid() == 0) // whom no permission stops
        for (const char* word : {"--clear-groups", "--reuid=65534", "setpriv"})
            command.insert(command.begin(), word);
    Process builder(command, home);
    EXPECT_EQ(builder.wait(), 1);
    EXPECT_EQ(builder.err(), "tamarin: " + home +
                                 "/lookup/preflop_2p cannot be read: Permission denied: allow it, "
                                 "or delete the file\n");
    EXPECT_FALSE(fs::exists(clusterPath(2, 0)));
}

TEST_F(Trouble, TableCutInTheMiddleIsMadeAgain) {
    writeLaterRounds();
    ASSERT_EQ(tamarin({"tables", "--only", "clusters", "--quiet"}).status, 0);
    const std::string whole = contentsOf(clusterPath(2, 0));
    fs::resize_file(clusterPath(2, 0), 80);
    const Ended ended = tamarin({"tables", "--only", "clusters", "--quiet"});
    EXPECT_EQ(ended.status, 0);
    EXPECT_EQ(ended.err, "ERROR: lookup/preflop_2p_c has 80 bytes, not 169: rebuilding it\n");
    EXPECT_EQ(contentsOf(clusterPath(2, 0)), whole);
    EXPECT_EQ(contentsOf(clusterPath(2, 0) + ".bad"), whole.substr(0, 80));
}

TEST_F(Trouble, TooLittleDiskIsRefusedBeforeTheWork) {
    const SmallDisk disk("size=64m");
    if (!disk.mounted)
        GTEST_SKIP() << "may not mount a small file system";
    const Ended ended = tamarin({"tables", "--only", "tpt"});
    EXPECT_EQ(ended.status, 1);
    EXPECT_TRUE(ended.err.starts_with("tamarin: this needs 130.1 MB of disk at lookup, and "))
        << ended.err;
    EXPECT_EQ(lines(ended.err), 1);
}

TEST_F(Trouble, DiskThatFillsUpMeanwhileLeavesNoPart) {
    const SmallDisk disk("size=140m");
    if (!disk.mounted)
        GTEST_SKIP() << "may not mount a small file system";
    {
        Process builder(tamarinCommand({"tables", "--only", "tpt", "--quiet"}), home);
        ASSERT_TRUE(waitFor([&] { return !inManifest("begun").empty(); }));
        std::ofstream("lookup/other") << std::string(size_t{60} << 20, 'x');
        EXPECT_EQ(builder.wait(), 1);
        EXPECT_EQ(builder.err(), "tamarin: lookup/tpt: could not write: No space left on device: "
                                 "free some space and start again\n");
    }
    EXPECT_FALSE(fs::exists("lookup/tpt"));
    EXPECT_EQ(temporaries(), 0U);
    fs::remove("lookup/other");
    EXPECT_EQ(tamarin({"tables", "--only", "tpt", "--quiet"}).status, 0);
    EXPECT_EQ(inManifest("files"), (std::vector<std::string>{"tpt", "tpt.indexes"}));
    EXPECT_EQ(inManifest("begun").size(), 0U);
}

TEST_F(Trouble, FileSizeLimitIsNamed) {
    Process builder(
        {"sh", "-c",
         "ulimit -f 1000; exec " + tamarinCommand({})[0] + " tables --only tpt --quiet"},
        home);
    EXPECT_EQ(builder.wait(), 1);
    EXPECT_EQ(builder.err(), "tamarin: lookup/tpt: could not write: File too large: raise the "
                             "limit on file sizes and start again\n");
    EXPECT_FALSE(fs::exists("lookup/tpt"));
    EXPECT_EQ(temporaries(), 0U);
}

TEST_F(Trouble, MemoryThatDoesNotDoIsRefused) {
    const Ended ended = tamarin({"tables", "--only", "equity", "--memory", "100MB"});
    EXPECT_EQ(ended.status, 1);
    EXPECT_TRUE(ended.err.starts_with("tamarin: this needs ")) << ended.err;
    EXPECT_NE(ended.err.find("of memory at least, more than the 100.0 MB allowed"),
              std::string::npos)
        << ended.err;
    EXPECT_EQ(lines(ended.err), 1);
    EXPECT_EQ(tamarin({"tables", "--memory", "lots"}).status, 2);
}

TEST_F(Trouble, VerifyFindsAFlippedBitByItsHash) {
    writeSparse<double>(utilityPath(2, 0, 0), roundSizes[0], {0.25, -0.5});
    writeSparse<uint8_t>("lookup/other", 3);
    const auto record = [](const char* name, const char* hash) {
        return nlohmann::json{{"name", name}, {"size", 1352}, {"xxh3", hash}};
    };
    // Hashes of what lies there; a manifest that a person has spoilt as well.
    std::ofstream("lookup/manifest.json") << "{\"files\": [{\"name\": 3}, {\"name\": \"absent\"}]}";
    EXPECT_EQ(tamarin({"verify", "--quiet"}).status, 0);
    std::ofstream("lookup/manifest.json")
        << nlohmann::json{{"files", {record("utility_preflop_2p_0", "0000000000000000")}}};
    Ended ended = tamarin({"verify", "--quiet"});
    EXPECT_EQ(ended.status, 1);
    const std::string label = "lookup/utility_preflop_2p_0: its hash is ";
    const size_t at = ended.out.find(label);
    ASSERT_NE(at, std::string::npos) << ended.out;
    const std::string right = ended.out.substr(at + label.size(), 16);
    std::ofstream("lookup/manifest.json")
        << nlohmann::json{{"files", {record("utility_preflop_2p_0", right.c_str())}}};
    ended = tamarin({"verify", "--quiet"});
    EXPECT_EQ(ended.status, 0);
    EXPECT_NE(ended.out.find("utility_preflop_2p_0: good, as the manifest says\n"),
              std::string::npos)
        << ended.out;
    std::fstream(utilityPath(2, 0, 0), std::ios::in | std::ios::out).seekp(1000).put(1);
    ended = tamarin({"verify", "--quiet"});
    EXPECT_EQ(ended.status, 1);
    EXPECT_NE(ended.out.find(", not " + right + " as in the manifest\n"), std::string::npos)
        << ended.out;
}

TEST_F(Trouble, VerifySaysThatAManifestMakesNoSense) {
    std::ofstream("lookup/manifest.json") << "{\"files\": ";
    const Ended ended = tamarin({"tables", "--verify", "--quiet"});
    EXPECT_EQ(ended.status, 1);
    EXPECT_NE(ended.out.find("no hashes to compare with: lookup/manifest.json is no manifest: "
                             "delete it\n"),
              std::string::npos)
        << ended.out;
}

// --only and --force were once ignored beside --verify.
TEST_F(Trouble, VerifyLooksOnlyAtWhatItIsAskedFor) {
    writeSparse<uint8_t>(clusterPath(2, 0), 5);
    writeSparse<uint8_t>(holdemPath(2, 0, 0), roundSizes[0], {1});
    std::ofstream("lookup/manifest.json")
        << R"({"files": [{"name": "preflop_2p_c", "size": 169, "xxh3": "0"}]})";
    Ended ended = tamarin({"tables", "--verify", "--only", "holdem", "--quiet"});
    EXPECT_EQ(ended.status, 0) << ended.out;
    EXPECT_EQ(lines(ended.out), 20) << ended.out;
    EXPECT_EQ(ended.out.find("preflop_2p_c"), std::string::npos) << ended.out;
    ended = tamarin({"tables", "--verify", "--only", "clusters", "--quiet"});
    EXPECT_EQ(ended.status, 1);
    EXPECT_NE(ended.out.find("lookup/preflop_2p_c: it has 5 bytes, not 169 as in the manifest\n"),
              std::string::npos)
        << ended.out;
    ended = tamarin({"tables", "--verify", "--only", "nonsense"});
    EXPECT_EQ(ended.status, 2);
    ended = tamarin({"tables", "--verify", "--force"});
    EXPECT_EQ(ended.status, 2);
    EXPECT_EQ(ended.err, "tamarin: --verify excludes --force; try 'tamarin tables --help'\n");
}

// Only tables were once looked at.
TEST_F(Trouble, VerifyComparesStrategiesWithTheirManifests) {
    const auto write = [](const std::string& name, const std::string& contents) {
        fs::create_directories(fs::path(name).parent_path());
        std::ofstream(name, std::ios::binary) << contents;
    };
    write("strategies/own/strategy0", "one");
    write("strategies/own/convergence.jsonl", "");
    write("strategies/game/strategy0", "one");
    write("strategies/game/strategy1", "two");
    write("strategies/game/strategy2", "three");
    write("strategies/game/strategy2.bad", "");
    write("strategies/game/strategy3", "four");
    ASSERT_TRUE(
        recordFiles("strategies/game",
                    {{"strategy0", "x", "y"}, {"strategy1", "x", "y"}, {"strategy2", "x", "y"}})
            .ok());
    Ended ended = tamarin({"verify", "--quiet"});
    EXPECT_EQ(ended.status, 0) << ended.out;
    EXPECT_NE(ended.out.find("strategies/game/strategy0: good, as the manifest says\n"
                             "strategies/game/strategy1: good, as the manifest says\n"
                             "strategies/game/strategy2: good, as the manifest says\n"
                             "strategies/game/strategy3: not in the manifest\n"
                             "strategies/own/strategy0: no manifest to compare with; what the "
                             "player trains itself has none\n"),
              std::string::npos)
        << ended.out;
    write("strategies/game/strategy1", "Two");
    write("strategies/game/strategy2", "longer than it was");
    ended = tamarin({"verify", "--quiet", "--json"});
    EXPECT_EQ(ended.status, 1);
    const auto report = nlohmann::json::parse(ended.out);
    EXPECT_EQ(report["wrong"], 2);
    ASSERT_EQ(report["strategies"].size(), 5U);
    EXPECT_TRUE(report["strategies"][1]["result"].get<std::string>().starts_with("its hash is "));
    EXPECT_EQ(report["strategies"][2]["result"], "it has 18 bytes, not 5 as in the manifest");
    write("strategies/game/manifest.json", "{");
    ended = tamarin({"verify", "--quiet"});
    EXPECT_EQ(ended.status, 1);
    EXPECT_NE(ended.out.find("strategies/game/manifest.json: is no manifest: delete it\n"),
              std::string::npos)
        << ended.out;
    EXPECT_EQ(tamarin({"tables", "--verify", "--quiet"}).status, 0);
}

TEST_F(Trouble, VerifyNamesWhatIsInATablesPlace) {
    fs::create_directory(equityPath(2, 0));
    writeSparse<uint8_t>(clusterPath(2, 0), 5);
    const Ended ended = tamarin({"verify", "--quiet"});
    EXPECT_EQ(ended.status, 1);
    EXPECT_NE(ended.out.find("lookup/preflop_2p: is a directory: move it away, a table belongs "
                             "there\n"),
              std::string::npos)
        << ended.out;
    EXPECT_NE(ended.out.find("lookup/preflop_2p_c: has 5 bytes, not 169\n"), std::string::npos);
}

} // namespace
} // namespace tamarin::test
