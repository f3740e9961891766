#include "directory/manifest.h"
#include "strategy/strategy_record.h"
#include "support/lock.h"
#include "table_builder/table_plan.h"
#include "toolbox/program.h"
#include "toolbox/tamarin_process.h"

#include <algorithm>
#include <cstring>
#include <random>
#include <sys/resource.h>
#include <thread>

#include <nlohmann/json.hpp>

namespace tamarin::test {
namespace {

namespace fs = std::filesystem;

const std::string limit = "holdem.limit.2p.reverse_blinds.game";
const std::string noLimit = "holdem.nolimit.2p.reverse_blinds.game";

// A playing directory whose tables are all there: random buckets before the flop and on it, and
// otherwise sparse files of the right sizes, whose first byte keeps them from being taken for
// damaged ones, which hold one value only.
class Holdem : public ProgramTest {
protected:
    Holdem() {
        fs::create_directories(directory / "lookup");
        std::minstd_rand0 engine(1);
        for (const TableFile& file : allTables()) {
            std::ofstream(directory / file.path, std::ios::binary) << '\1';
            fs::resize_file(directory / file.path, file.bytes);
            if (file.group != TableGroup::holdem || file.round > 1)
                continue;
            std::string buckets(file.bytes, '\0');
            for (char& bucket : buckets)
                bucket = static_cast<char>(engine() % 10);
            writeFile(directory / file.path, buckets);
        }
    }
    fs::path strategies() const { return directory / "strategies/holdem.limit.2p"; }
    fs::path strategy() const { return strategies() / "strategy"; }
    // Enters these tables in the manifest, as their builder does.
    void record(const std::vector<std::string>& tables) {
        std::vector<ManifestEntry> entries;
        for (const std::string& table : tables)
            entries.push_back({table, "cut into 10 buckets", "the utilities and equities"});
        ASSERT_TRUE(recordFiles((directory / "lookup").string(), entries).ok());
    }
    // Other buckets in a table.
    void change(const std::string& table) {
        std::string buckets = contentsOf(directory / "lookup" / table);
        for (char& bucket : buckets)
            bucket = static_cast<char>(9 - bucket);
        writeFile(directory / "lookup" / table, buckets);
    }
    // What lies in the directory that a program has put aside.
    std::vector<std::string> putAside() const {
        std::vector<std::string> names;
        for (const auto& entry : fs::recursive_directory_iterator(directory))
            if (entry.path().filename().string().find(".bad") != std::string::npos)
                names.push_back(entry.path().filename().string());
        return names;
    }
};

TEST_F(Holdem, TrainLeavesTheFileThatThePlayerReads) {
    const Outcome outcome = run({"train", limit, "--iterations", "200", "--quiet", "--json"});
    ASSERT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(outcome.err, "");
    const auto json = nlohmann::json::parse(outcome.out);
    EXPECT_EQ(json["algorithm"], "dcfr");
    EXPECT_EQ(json["informationSets"], 63780);
    EXPECT_GE(json["iteration"], 200);
    EXPECT_EQ(fs::file_size(strategy()), 63780 * sizeof(StrategyRecord) + 8 * 4);
    EXPECT_TRUE(fs::exists(strategies() / "training.checkpoint"));
    EXPECT_NE(contentsOf(strategies() / "convergence.jsonl").find("\"averageRegret\":"),
              std::string::npos);
    EXPECT_NE(contentsOf(strategies() / "manifest.json").find("tamarin train, dcfr with seed 1"),
              std::string::npos);
}

// Twelve of the 46 files are enough, and no other is made or missed.
TEST_F(Holdem, ATwoPlayerGameNeedsTheTablesThatItsPlayReads) {
    int needed = 0;
    for (const TableFile& file : allTables())
        if (playReads(file, 2))
            ++needed;
        else
            fs::remove(directory / file.path);
    EXPECT_EQ(needed, 12);
    for (const std::vector<std::string>& command :
         {std::vector<std::string>{"train", limit, "--iterations", "64", "--quiet"},
          std::vector<std::string>{"prepare", limit, "--quiet"},
          std::vector<std::string>{"exploit", limit, "--deals", "100", "--response-deals", "100"},
          std::vector<std::string>{"show", limit}}) {
        const Outcome outcome = run(command);
        EXPECT_EQ(outcome.status, 0) << command[0] << ": " << outcome.err;
    }
    for (const TableFile& file : allTables())
        EXPECT_EQ(fs::exists(directory / file.path), playReads(file, 2)) << file.path;
    fs::remove(directory / "lookup/holdem_turn_2p_1");
    const Outcome missing = run({"show", limit});
    EXPECT_EQ(missing.status, 1);
    EXPECT_NE(missing.err.find("lookup/holdem_turn_2p_1 is missing"), std::string::npos)
        << missing.err;
}

TEST_F(Holdem, TrainLeavesADirectoryAloneThatAnotherRunHolds) {
    fs::create_directories(strategies());
    const auto held = FileLock::take((strategies() / "train.lock").string());
    ASSERT_TRUE(held.ok()) << held.error();
    const Outcome outcome = run({"train", limit, "--iterations", "64", "--quiet"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_NE(outcome.err.find("locked by process"), std::string::npos) << outcome.err;
    EXPECT_FALSE(fs::exists(strategy()));
}

// The strategy is there, but a later run could not go on from it.
TEST_F(Holdem, AFailedLastCheckpointFailsTheStatus) {
    fs::create_directories(strategies() / "training.checkpoint");
    const Outcome outcome = run({"train", limit, "--iterations", "64", "--fresh", "--quiet"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_NE(outcome.err.find("training.checkpoint: could not write: it is a directory"),
              std::string::npos)
        << outcome.err;
    EXPECT_EQ(fs::file_size(strategy()), 63780 * sizeof(StrategyRecord) + 8 * 4);
}

TEST_F(Holdem, AResumedRunEndsInTheSameBytesWhateverTheThreads) {
    for (const std::string algorithm : {"player", "cfr", "cfr+", "lcfr", "dcfr"}) {
        const auto with = [&](std::vector<std::string> more) {
            std::vector<std::string> all = {"train", noLimit, "--algorithm", algorithm, "--quiet"};
            all.insert(all.end(), more.begin(), more.end());
            const Outcome outcome = run(all);
            EXPECT_EQ(outcome.status, 0) << outcome.err;
        };
        with({"--out", "whole", "--iterations", "6000", "--fresh", "--threads", "1"});
        with({"--out", "parts", "--iterations", "2000", "--fresh", "--threads", "3"});
        with({"--out", "parts", "--iterations", "6000", "--resume"});
        EXPECT_TRUE(contentsOf(directory / "whole/strategy") ==
                    contentsOf(directory / "parts/strategy"))
            << algorithm;
        EXPECT_NE(contentsOf(directory / "whole/strategy"), "");
    }
}

TEST_F(Holdem, ASignalSavesACheckpointAndAKillLosesOnlyWhatCameAfterOne) {
    for (const int signal : {SIGINT, SIGKILL}) {
        const pid_t child = start({"train", limit, "--seconds", "120", "--quiet", "--fresh",
                                   "--checkpoint-every", "64", "--out", "out"});
        const fs::path checkpoint = directory / "out/training.checkpoint";
        for (int i = 0; i < 1000 && !fs::exists(checkpoint); ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        EXPECT_FALSE(FileLock::take((directory / "out/train.lock").string()).ok())
            << "it is held while the training lasts";
        kill(child, signal);
        const Outcome outcome = finish(child);
        EXPECT_EQ(outcome.status, signal == SIGINT ? 130 : -SIGKILL) << outcome.err;
        EXPECT_FALSE(fs::exists(directory / "out/strategy"));
        EXPECT_EQ(run({"train", limit, "--iterations", "64", "--quiet", "--out", "out"}).status, 1)
            << "a checkpoint is not forgotten unasked";
        EXPECT_EQ(run({"train", limit, "--iterations", "64", "--quiet", "--resume", "--out", "out"})
                      .status,
                  0);
        EXPECT_TRUE(fs::exists(directory / "out/strategy"));
        fs::remove_all(directory / "out");
    }
}

TEST_F(Holdem, PrepareTrainsOnceAndTakesAStoppedRunUp) {
    ASSERT_EQ(run({"train", noLimit, "--iterations", "640", "--quiet"}).status, 0);
    const fs::path file = directory / "strategies/holdem.nolimit.2p/strategy";
    fs::remove(file);
    Outcome outcome = run({"prepare", noLimit, "--seconds", "0.2"});
    ASSERT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_NE(outcome.err.find("going on after iteration 640"), std::string::npos) << outcome.err;
    EXPECT_TRUE(fs::exists(file));
    EXPECT_TRUE(fs::exists(directory / noLimit));
    const std::string made = contentsOf(file);
    outcome = run({"prepare", noLimit, "--quiet"});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_NE(outcome.out.find("is there and whole"), std::string::npos) << outcome.out;
    EXPECT_TRUE(contentsOf(file) == made);
    outcome = run({"prepare", noLimit, "--dry-run"});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_NE(outcome.out.find("80 information sets"), std::string::npos) << outcome.out;
    EXPECT_NE(outcome.out.find("iterations/s"), std::string::npos) << outcome.out;
}

TEST_F(Holdem, PrepareKnowsWhatAStrategyWasTrainedFor) {
    ASSERT_EQ(run({"prepare", noLimit, "--seconds", "0.1", "--quiet"}).status, 0);
    const fs::path home = directory / "strategies/holdem.nolimit.2p";
    const std::string first = contentsOf(home / "strategy");
    // Other tables: the same game over other buckets.
    change("holdem_flop_2p_0");
    Outcome outcome = run({"prepare", noLimit, "--seconds", "0.1", "--quiet"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_NE(outcome.err.find("was trained for"), std::string::npos) << outcome.err;
    EXPECT_TRUE(contentsOf(home / "strategy.bad") == first);
    EXPECT_NE(outcome.err.find("strategy that was there is kept as "
                               "strategies/holdem.nolimit.2p/strategy.bad\n"),
              std::string::npos)
        << outcome.err;
    // The checkpoint is the other tables', too, and is not gone on from.
    EXPECT_NE(outcome.err.find("starting over"), std::string::npos) << outcome.err;
    EXPECT_TRUE(fs::exists(home / "training.checkpoint.bad"));
    // Another definition has a place of its own, whatever its name.
    const std::string dear = "d\xe9"
                             "ar.game";
    std::string definition = contentsOf(directory / noLimit);
    definition.replace(definition.find("100 50"), 6, "300 150");
    writeFile(directory / dear, definition);
    const std::string second = contentsOf(home / "strategy");
    ASSERT_EQ(run({"prepare", dear, "--seconds", "0.1", "--quiet"}).status, 0);
    EXPECT_TRUE(fs::exists(directory / "strategies/d\xe9"
                                       "ar/strategy"));
    EXPECT_TRUE(contentsOf(home / "strategy") == second);
    outcome = run({"show", dear});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    outcome = run({"prepare", dear, "--quiet"});
    EXPECT_NE(outcome.out.find("is there and whole"), std::string::npos) << outcome.err;
}

// It once went before the lock was taken and long before there was another.
TEST_F(Holdem, AStrategyOfOtherTablesStaysUntilItIsReplaced) {
    ASSERT_EQ(run({"prepare", noLimit, "--seconds", "0.1", "--quiet"}).status, 0);
    const fs::path home = directory / "strategies/holdem.nolimit.2p";
    const std::string first = contentsOf(home / "strategy");
    change("holdem_flop_2p_0");
    {
        const auto lock = FileLock::take((home / "train.lock").string());
        ASSERT_TRUE(lock.ok());
        const Outcome outcome = run({"prepare", noLimit, "--quiet"});
        EXPECT_EQ(outcome.status, 1);
        EXPECT_NE(outcome.err.find("locked by process"), std::string::npos) << outcome.err;
    }
    EXPECT_TRUE(contentsOf(home / "strategy") == first);
    EXPECT_EQ(putAside(), std::vector<std::string>());
    fs::remove(home / "convergence.jsonl");
    const pid_t child = start({"prepare", noLimit, "--seconds", "120", "--quiet"});
    for (int i = 0; i < 1000 && contentsOf(home / "convergence.jsonl").empty(); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_TRUE(contentsOf(home / "strategy") == first);
    kill(child, SIGINT);
    EXPECT_EQ(finish(child).status, 130);
    EXPECT_TRUE(contentsOf(home / "strategy") == first);
    EXPECT_EQ(putAside(), std::vector<std::string>{"training.checkpoint.bad"});
}

// A table that was damaged after it was made once trained a junk strategy, and the good one went.
TEST_F(Holdem, TablesThatAreNotWhatTheManifestSaysAreRefused) {
    record({"holdem_preflop_2p_0", "holdem_flop_2p_0", "holdem_flop_3p_2"});
    ASSERT_EQ(run({"prepare", noLimit, "--seconds", "0.1", "--quiet"}).status, 0);
    const fs::path home = directory / "strategies/holdem.nolimit.2p";
    const std::string strategy = contentsOf(home / "strategy");
    const std::string checkpoint = contentsOf(home / "training.checkpoint");
    // Two players do not look at the tables of three.
    change("holdem_flop_3p_2");
    const auto expectRefused = [&](const std::vector<std::string>& arguments,
                                   const std::string& table) {
        const Outcome outcome = run(arguments);
        EXPECT_EQ(outcome.status, 1);
        EXPECT_TRUE(outcome.err.starts_with("tamarin: lookup/" + table + ": its hash is "))
            << outcome.err;
        EXPECT_TRUE(outcome.err.ends_with("as in the manifest; move it away, and 'tamarin tables "
                                          "--dir .' makes it anew\n"))
            << outcome.err;
    };
    const std::string three = "holdem.limit.3p.game";
    EXPECT_EQ(run({"prepare", noLimit, "--quiet"}).status, 0);
    EXPECT_EQ(run({"exploit", noLimit, "--deals", "9", "--response-deals", "9"}).status, 0);
    expectRefused({"train", three, "--seconds", "1", "--quiet"}, "holdem_flop_3p_2");
    change("holdem_flop_3p_2"); // back to what it was
    change("holdem_flop_2p_0");
    expectRefused({"prepare", noLimit, "--quiet"}, "holdem_flop_2p_0");
    expectRefused({"prepare", noLimit, "--force", "--quiet"}, "holdem_flop_2p_0");
    expectRefused({"train", noLimit, "--fresh", "--quiet"}, "holdem_flop_2p_0");
    expectRefused({"train", three, "--seconds", "1", "--quiet"}, "holdem_flop_2p_0");
    expectRefused({"exploit", noLimit}, "holdem_flop_2p_0");
    EXPECT_TRUE(contentsOf(home / "strategy") == strategy);
    EXPECT_TRUE(contentsOf(home / "training.checkpoint") == checkpoint);
    EXPECT_EQ(putAside(), std::vector<std::string>());
}

// Nobody knows what is in it, so nobody is told to move it away.
TEST_F(Holdem, ATableThatCannotBeReadIsNotCalledDamaged) {
    record({"holdem_flop_2p_0"});
    ASSERT_EQ(run({"train", noLimit, "--iterations", "64", "--quiet"}).status, 0);
    fs::permissions(directory / "lookup/holdem_flop_2p_0", fs::perms::none);
    std::vector<std::string> command = test::tamarinCommand({"exploit", noLimit});
    if (geteuid() == 0) // whom no permission stops
        for (const char* word : {"--clear-groups", "--reuid=65534", "setpriv"})
            command.insert(command.begin(), word);
    test::Process process(command, directory.string());
    EXPECT_EQ(process.wait(), 1);
    const std::string table = "lookup/holdem_flop_2p_0: ";
    EXPECT_EQ(process.err(), "tamarin: " + table + "cannot be read: " + table +
                                 "could not open: Permission denied\n");
}

// Whatever a process may not open, it must not take for nonsense.
TEST_F(Holdem, TooFewDescriptorsLoseNothing) {
    record({"holdem_preflop_2p_0", "holdem_flop_2p_0", "holdem_turn_2p_1"});
    ASSERT_EQ(run({"prepare", noLimit, "--seconds", "0.1", "--quiet"}).status, 0);
    const fs::path home = directory / "strategies/holdem.nolimit.2p";
    const std::string manifest = contentsOf(directory / "lookup/manifest.json");
    const std::string strategies = contentsOf(home / "manifest.json");
    const std::string strategy = contentsOf(home / "strategy");
    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &before), 0);
    int done = 0;
    for (rlim_t files = 3; files < 10; ++files) {
        const rlimit few{files, before.rlim_max};
        ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &few), 0);
        const pid_t child = start({"prepare", noLimit, "--quiet"});
        ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &before), 0);
        const Outcome outcome = finish(child);
        done += outcome.status == 0;
        EXPECT_TRUE(outcome.status == 0 || outcome.status == 1 || outcome.status == 127);
        EXPECT_TRUE(contentsOf(directory / "lookup/manifest.json") == manifest) << files;
        EXPECT_TRUE(contentsOf(home / "manifest.json") == strategies) << files;
        EXPECT_TRUE(contentsOf(home / "strategy") == strategy) << files << outcome.err;
        EXPECT_EQ(putAside(), std::vector<std::string>()) << files;
    }
    EXPECT_LT(done, 7);
}

TEST_F(Holdem, PrepareSaysThatAllIsThereWhereNothingCanBeWritten) {
    ASSERT_EQ(run({"prepare", noLimit, "--seconds", "0.1", "--quiet"}).status, 0);
    const auto ended = test::runOnReadOnly(
        directory.string(), {"prepare", noLimit, "--quiet", "--dir", directory.string()});
    if (!ended)
        GTEST_SKIP() << "may not mount a directory read-only";
    EXPECT_EQ(ended->status, 0) << ended->err;
    EXPECT_EQ(ended->err, "");
    EXPECT_NE(ended->out.find("is there and whole"), std::string::npos);
}

// Nor a checkpoint that cannot be read for one that makes no sense.
TEST_F(Holdem, PrepareRefusesACheckpointThatItCannotRead) {
    const fs::path checkpoint = directory / "strategies/holdem.nolimit.2p/training.checkpoint";
    fs::create_directories(checkpoint);
    const Outcome outcome = run({"prepare", noLimit, "--seconds", "0.1", "--quiet"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_TRUE(outcome.err.ends_with("tamarin: strategies/holdem.nolimit.2p/training.checkpoint: "
                                      "not a regular file\n"))
        << outcome.err;
    EXPECT_TRUE(fs::exists(checkpoint));
}

TEST_F(Holdem, PrepareKeepsTheCheckpointOfAnotherTraining) {
    ASSERT_EQ(
        run({"train", noLimit, "--algorithm", "lcfr", "--iterations", "6400", "--quiet"}).status,
        0);
    const fs::path checkpoint = directory / "strategies/holdem.nolimit.2p/training.checkpoint";
    const std::string theirs = contentsOf(checkpoint);
    fs::remove(directory / "strategies/holdem.nolimit.2p/manifest.json");
    const Outcome outcome = run({"prepare", noLimit, "--seconds", "0.1", "--quiet"});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_NE(outcome.err.find("algorithm is lcfr there and dcfr here"), std::string::npos)
        << outcome.err;
    EXPECT_TRUE(contentsOf(checkpoint.string() + ".bad") == theirs);
}

TEST_F(Holdem, ACheckpointOfAnOlderFormatIsRefusedAndKept) {
    ASSERT_EQ(run({"train", noLimit, "--iterations", "6400", "--quiet"}).status, 0);
    const fs::path checkpoint = directory / "strategies/holdem.nolimit.2p/training.checkpoint";
    std::string older = contentsOf(checkpoint);
    older[8] = 2;
    writeFile(checkpoint, older);
    fs::remove(directory / "strategies/holdem.nolimit.2p/manifest.json");
    const std::string why = "made by an older version of this program, format 2";
    Outcome outcome = run({"train", noLimit, "--iterations", "9600", "--resume", "--quiet"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_TRUE(outcome.err.ends_with("training.checkpoint: " + why + "\n")) << outcome.err;
    EXPECT_EQ(run({"train", noLimit, "--iterations", "9600", "--quiet"}).status, 1);
    EXPECT_TRUE(contentsOf(checkpoint) == older);
    outcome = run({"prepare", noLimit, "--seconds", "0.1", "--quiet"});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_NE(outcome.err.find(why + "; starting over, it is kept as "), std::string::npos)
        << outcome.err;
    EXPECT_TRUE(contentsOf(checkpoint.string() + ".bad") == older);
}

TEST_F(Holdem, DamagedStrategiesAreRefused) {
    ASSERT_EQ(run({"train", noLimit, "--iterations", "640", "--quiet"}).status, 0);
    const fs::path file = directory / "strategies/holdem.nolimit.2p/strategy";
    const std::string whole = contentsOf(file);
    const auto refused = [&](const char* command, size_t at, const std::string& bytes) {
        std::string damaged = whole;
        damaged.replace(at, bytes.size(), bytes);
        writeFile(file, damaged);
        const Outcome outcome = run({command, noLimit});
        EXPECT_EQ(outcome.status, 1) << outcome.out;
        return outcome.err;
    };
    const double negative = -1.0;
    const std::string sum(reinterpret_cast<const char*>(&negative), sizeof negative);
    const size_t record = 4 + 3 * sizeof(StrategyRecord);
    const size_t sums = record + offsetof(StrategyRecord, strategySum);
    EXPECT_NE(refused("exploit", record, std::string(60, '\0')).find("damaged"), std::string::npos);
    EXPECT_NE(refused("exploit", sums, sum).find("damaged"), std::string::npos);
    EXPECT_NE(refused("exploit", sums, std::string(8, '\xff')).find("damaged"), std::string::npos);
    // Every node allows a raise, which no-limit's tree does not have.
    std::string raises = whole;
    for (size_t at = 0; at < whole.size();) {
        StrategyCount count = 0;
        std::memcpy(&count, whole.data() + at, sizeof count);
        at += sizeof count;
        for (; count > 0; --count, at += sizeof(StrategyRecord))
            raises.replace(at + offsetof(StrategyRecord, regretSum) + 16, 8, std::string(8, '\0'));
    }
    writeFile(file, raises);
    const Outcome outcome = run({"show", noLimit});
    EXPECT_EQ(outcome.status, 1) << outcome.status;
    EXPECT_NE(outcome.err.find("which the rules do not"), std::string::npos) << outcome.err;
}

TEST_F(Holdem, ExploitReportsValuesThatSumToZeroAndGains) {
    ASSERT_EQ(run({"train", noLimit, "--iterations", "5000", "--quiet"}).status, 0);
    const std::vector<std::string> command = {"exploit",          noLimit, "--deals", "2000",
                                              "--response-deals", "2000",  "--quiet", "--json"};
    const Outcome outcome = run(command);
    ASSERT_EQ(outcome.status, 0) << outcome.err;
    const auto json = nlohmann::json::parse(outcome.out);
    EXPECT_NEAR(json["seats"][0]["value"].get<double>() + json["seats"][1]["value"].get<double>(),
                0.0, 1e-9);
    EXPECT_GT(json["seats"][0]["interval95"], 0.0);
    EXPECT_EQ(json["deals"], 2000);
    const double trained = json["gains"];
    EXPECT_EQ(run(command).out, outcome.out); // repeats with its seed
    std::vector<std::string> uniform = command;
    uniform.push_back("--uniform");
    const auto before = nlohmann::json::parse(run(uniform).out);
    EXPECT_GT(before["gains"].get<double>(), trained + before["gainsInterval95"].get<double>());
    const Outcome text = run({"exploit", noLimit, "--deals", "100", "--response-deals", "100"});
    EXPECT_NE(text.out.find("lower bound"), std::string::npos) << text.out;
}

// With equities of 0 the player folds to every raise: on the flop the small blind, who has called,
// takes the big one, and the big blind the small one or, after a call, as much as it.
TEST_F(Holdem, LocalResponsePlaysAgainstPotOddsInNoLimit) {
    ASSERT_EQ(run({"train", noLimit, "--iterations", "64", "--quiet"}).status, 0);
    const std::vector<std::string> command{"exploit", noLimit, "--local", "--hands", "20",
                                           "--from",  "1",     "--quiet", "--json"};
    const Outcome outcome = run(command);
    ASSERT_EQ(outcome.status, 0) << outcome.err;
    const auto json = nlohmann::json::parse(outcome.out);
    EXPECT_EQ(json["menu"], "pot");
    EXPECT_EQ(json["seats"][1]["localResponse"], 100);
    EXPECT_EQ(json["seats"][1]["interval95"], 0);
    const double big = json["seats"][0]["localResponse"];
    EXPECT_GT(big, 50);
    EXPECT_LT(big, 100);
}

TEST_F(Holdem, ShowDrawsTheFirstDecisions) {
    ASSERT_EQ(run({"train", limit, "--iterations", "64", "--quiet"}).status, 0);
    Outcome outcome = run({"show", limit});
    ASSERT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_TRUE(outcome.out.starts_with("seat 1 first to act\n")) << outcome.out.substr(0, 80);
    EXPECT_NE(outcome.out.find("seat 0 after raise"), std::string::npos);
    outcome = run({"show", limit, "--json", "--html", "page.html"});
    ASSERT_EQ(outcome.status, 0) << outcome.err;
    const auto json = nlohmann::json::parse(outcome.out);
    ASSERT_EQ(json["preflop"].size(), 5U); // "", c, cr, r, rr
    EXPECT_EQ(json["preflop"][0]["bucketOfHand"].size(), 169U);
    double share = 0.0;
    for (const auto& bucket : json["preflop"][0]["buckets"]) {
        share += bucket["share"].get<double>();
        double sum = 0.0;
        for (const auto& [action, probability] : bucket["strategy"].items())
            sum += probability.get<double>();
        EXPECT_NEAR(sum, 1.0, 1e-9);
    }
    EXPECT_NEAR(share, 1.0, 1e-9);
    // The grid holds each of the table's 169 entries once.
    std::string table = contentsOf(directory / "lookup/holdem_preflop_2p_1");
    std::string drawn;
    for (const auto& [hand, bucket] : json["preflop"][0]["bucketOfHand"].items())
        drawn += static_cast<char>(bucket.get<int>());
    std::sort(table.begin(), table.end());
    std::sort(drawn.begin(), drawn.end());
    EXPECT_EQ(drawn, table);
    const std::string page = contentsOf(directory / "page.html");
    EXPECT_NE(page.find("AKs"), std::string::npos);
    EXPECT_EQ(page.find("http"), std::string::npos); // fetches nothing
}

TEST_F(Holdem, SaysWhatIsWrong) {
    Outcome outcome = run({"exploit", limit});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_NE(outcome.err.find("there is no strategy strategies/holdem.limit.2p/strategy; "
                               "'tamarin prepare"),
              std::string::npos)
        << outcome.err;
    outcome = run({"train", limit, "--until-nashconv", "1"});
    EXPECT_EQ(outcome.status, 2);
    EXPECT_NE(outcome.err.find("tamarin exploit"), std::string::npos) << outcome.err;
    EXPECT_EQ(run({"train", limit, "--algorithm", "pcfr+"}).status, 2);
    outcome = run({"train", limit, "--resume", "--iterations", "10", "--quiet"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_NE(outcome.err.find("nothing to resume"), std::string::npos) << outcome.err;
    fs::create_directories(strategies());
    writeFile(strategy(), std::string(1000, '\0'));
    EXPECT_EQ(run({"exploit", limit}).status, 1);
    EXPECT_EQ(run({"show", limit}).status, 1);
    const fs::path turn = directory / "lookup/holdem_turn_2p_0";
    fs::resize_file(turn, 5);
    outcome = run({"show", limit});
    EXPECT_NE(outcome.err.find("lookup/holdem_turn_2p_0 has 5 bytes, not 13960050; 'tamarin"),
              std::string::npos)
        << outcome.err;
    fs::remove(turn);
    outcome = run({"show", limit});
    EXPECT_NE(outcome.err.find("lookup/holdem_turn_2p_0 is missing"), std::string::npos)
        << outcome.err;
    fs::create_directory(turn);
    outcome = run({"show", limit});
    EXPECT_EQ(outcome.err, "tamarin: lookup/holdem_turn_2p_0 is a directory: move it away, a table "
                           "belongs there\n");
}

} // namespace
} // namespace tamarin::test
