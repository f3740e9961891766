#include "support/lock.h"
#include "toolbox/kuhn_game.h"
#include "toolbox/program.h"

#include <sstream>
#include <sys/resource.h>
#include <sys/stat.h>
#include <thread>

namespace tamarin::test {
namespace {

namespace fs = std::filesystem;

class Train : public ProgramTest {
protected:
    fs::path strategies() const { return directory / "strategies/kuhn.limit.3p"; }
};

TEST_F(Train, LeavesStrategiesLogCheckpointAndManifest) {
    const Outcome outcome = run({"train", kuhnGame, "--iterations", "300", "--quiet"});
    ASSERT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(outcome.err, "");
    EXPECT_NE(outcome.out.find("dcfr after 300 iterations"), std::string::npos) << outcome.out;
    EXPECT_NE(outcome.out.find("NashConv "), std::string::npos);
    for (const char* name : {"strategy0", "strategy1", "strategy2"})
        EXPECT_EQ(fs::file_size(strategies() / name), 5196U);
    EXPECT_TRUE(fs::exists(strategies() / "checkpoint.00000000000000000300"));
    const std::string log = contentsOf(strategies() / "convergence.jsonl");
    EXPECT_TRUE(log.starts_with("{\"iteration\":1,\"seconds\":")) << log.substr(0, 100);
    EXPECT_NE(log.find("{\"iteration\":300,"), std::string::npos);
    const std::string manifest = contentsOf(strategies() / "manifest.json");
    EXPECT_NE(manifest.find("\"size\": 5196"), std::string::npos);
    EXPECT_NE(manifest.find("tamarin train --algorithm dcfr --seed 1, 300 iterations"),
              std::string::npos);
}

TEST_F(Train, EveryAlgorithmWorks) {
    for (const char* algorithm : {"cfr", "cfr+", "lcfr", "dcfr", "pcfr+", "player"}) {
        const Outcome outcome = run({"train", kuhnGame, "--algorithm", algorithm, "--iterations",
                                     "50", "--out", algorithm, "--quiet", "--json"});
        EXPECT_EQ(outcome.status, 0) << outcome.err;
        EXPECT_NE(outcome.out.find("\"nashConv\": "), std::string::npos);
        EXPECT_NE(outcome.out.find(std::string("\"algorithm\": \"") + algorithm),
                  std::string::npos);
    }
}

TEST_F(Train, AStoppedAndResumedRunEndsLikeAnUnbrokenOne) {
    for (const std::string algorithm : {"dcfr", "pcfr+", "player"}) {
        const auto with = [&](std::vector<std::string> more) {
            std::vector<std::string> all = {"train", kuhnGame, "--algorithm", algorithm, "--quiet"};
            all.insert(all.end(), more.begin(), more.end());
            const Outcome outcome = run(all);
            EXPECT_EQ(outcome.status, 0) << outcome.err;
        };
        const std::string scale = algorithm == "player" ? "00000" : "0";
        with({"--out", "whole", "--iterations", "9" + scale, "--fresh"});
        with({"--out", "parts", "--iterations", "2" + scale, "--fresh"});
        with({"--out", "parts", "--iterations", "5" + scale, "--resume"});
        with({"--out", "parts", "--iterations", "9" + scale, "--resume"});
        EXPECT_EQ(contentsOf(directory / "whole/strategy1"),
                  contentsOf(directory / "parts/strategy1"))
            << algorithm;
        EXPECT_NE(contentsOf(directory / "whole/strategy1"), "");
    }
}

TEST_F(Train, ASignalSavesWhatIsThereAndTheRunGoesOnFromIt) {
    const pid_t child = start({"train", kuhnGame, "--seconds", "120", "--quiet"});
    const fs::path log = strategies() / "convergence.jsonl";
    for (int i = 0; i < 500 && (!fs::exists(log) || fs::file_size(log) < 200); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    kill(child, SIGINT);
    const Outcome outcome = finish(child);
    EXPECT_EQ(outcome.status, 130) << outcome.err;
    EXPECT_NE(outcome.out.find("stopped by a signal"), std::string::npos) << outcome.out;
    EXPECT_EQ(fs::file_size(strategies() / "strategy0"), 5196U);
    EXPECT_EQ(run({"exploit", kuhnGame}).status, 0);
    EXPECT_EQ(run({"train", kuhnGame, "--resume", "--until-nashconv", "0.01", "--quiet"}).status,
              0);
}

TEST_F(Train, ADamagedCheckpointFallsBackToTheOneBefore) {
    ASSERT_EQ(run({"train", kuhnGame, "--iterations", "60", "--checkpoint-every", "20", "--quiet"})
                  .status,
              0);
    writeFile(strategies() / "checkpoint.00000000000000000060", "rubbish");
    const Outcome outcome = run({"train", kuhnGame, "--iterations", "60", "--resume", "--quiet",
                                 "--out", strategies().string()});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_NE(outcome.err.find("not a checkpoint; passed over"), std::string::npos) << outcome.err;
}

// The strategies are there, but a later run could not go on from them.
TEST_F(Train, AFailedLastCheckpointFailsTheStatus) {
    fs::create_directories(strategies() / "checkpoint.00000000000000000300");
    const Outcome outcome = run({"train", kuhnGame, "--iterations", "300", "--quiet"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_NE(outcome.err.find("checkpoint.00000000000000000300: could not write"),
              std::string::npos)
        << outcome.err;
    EXPECT_EQ(fs::file_size(strategies() / "strategy2"), 5196U);
}

TEST_F(Train, StrayNamesDoNotCostTheNewCheckpoint) {
    ASSERT_EQ(run({"train", kuhnGame, "--iterations", "20", "--quiet"}).status, 0);
    fs::create_directories(strategies() / "checkpoint.99999999999999999998");
    ASSERT_EQ(mkfifo((strategies() / "checkpoint.99999999999999999999").c_str(), 0600), 0);
    const Outcome outcome = run({"train", kuhnGame, "--iterations", "40", "--resume", "--quiet"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.err, "");
    EXPECT_TRUE(fs::exists(strategies() / "checkpoint.00000000000000000040"));
    EXPECT_EQ(run({"train", kuhnGame, "--iterations", "60", "--resume", "--quiet"}).status, 0);
}

// Where one seat's file cannot be written, no seat has a new one, and the cause is told.
TEST_F(Train, TheSeatsStrategiesAreAllNewOrAllOld) {
    ASSERT_EQ(run({"train", kuhnGame, "--iterations", "20", "--quiet"}).status, 0);
    const std::string before = contentsOf(strategies() / "strategy0");
    fs::remove(strategies() / "strategy2");
    fs::create_directories(strategies() / "strategy2");
    const Outcome outcome = run({"train", kuhnGame, "--iterations", "40", "--resume", "--quiet"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_NE(outcome.err.find("strategy2: could not write: it is a directory"), std::string::npos)
        << outcome.err;
    EXPECT_TRUE(contentsOf(strategies() / "strategy0") == before);
    EXPECT_TRUE(contentsOf(strategies() / "strategy1") == before);
    size_t litter = 0;
    for (const auto& entry : fs::directory_iterator(strategies()))
        litter += entry.path().filename().string().find(".tmp.") != std::string::npos;
    EXPECT_EQ(litter, 0U);
}

// No room for the strategies: the message says so, and of which file. (The checkpoint before them
// is smaller.)
TEST_F(Train, AFullDiskIsNamed) {
    ASSERT_EQ(run({"train", kuhnGame, "--iterations", "20", "--quiet"}).status, 0);
    const std::string before = contentsOf(strategies() / "strategy0");
    rlimit usual{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &usual), 0);
    const rlimit small{5100, usual.rlim_max};
    setrlimit(RLIMIT_FSIZE, &small);
    const pid_t child = start({"train", kuhnGame, "--iterations", "40", "--resume", "--quiet"});
    setrlimit(RLIMIT_FSIZE, &usual);
    const Outcome outcome = finish(child);
    EXPECT_EQ(outcome.status, 1);
    EXPECT_NE(outcome.err.find("strategy0: could not write: File too large"), std::string::npos)
        << outcome.err;
    for (const char* name : {"strategy0", "strategy1", "strategy2"})
        EXPECT_TRUE(contentsOf(strategies() / name) == before);
}

TEST_F(Train, RefusesToResumeAnotherConfiguration) {
    ASSERT_EQ(run({"train", kuhnGame, "--iterations", "5", "--quiet"}).status, 0);
    const Outcome outcome =
        run({"train", kuhnGame, "--resume", "--algorithm", "cfr", "--iterations", "9", "--quiet"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_NE(outcome.err.find("algorithm is dcfr there and cfr here"), std::string::npos)
        << outcome.err;
}

TEST_F(Train, ACheckpointOfAnOlderFormatIsRefusedAndKept) {
    ASSERT_EQ(run({"train", kuhnGame, "--iterations", "5", "--quiet"}).status, 0);
    const fs::path checkpoint = strategies() / "checkpoint.00000000000000000005";
    std::string older = contentsOf(checkpoint);
    older[8] = 1;
    writeFile(checkpoint, older);
    const Outcome resumed = run({"train", kuhnGame, "--resume", "--iterations", "9", "--quiet"});
    EXPECT_EQ(resumed.status, 1);
    EXPECT_NE(resumed.err.find("05: made by an older version of this program, format 1; passed "
                               "over\n"),
              std::string::npos)
        << resumed.err;
    EXPECT_EQ(run({"train", kuhnGame, "--iterations", "9", "--quiet"}).status, 1);
    EXPECT_TRUE(contentsOf(checkpoint) == older);
    EXPECT_EQ(run({"train", kuhnGame, "--iterations", "9", "--quiet", "--fresh"}).status, 0);
}

TEST_F(Train, DoesNotOverwriteAnEarlierRunUnasked) {
    ASSERT_EQ(run({"train", kuhnGame, "--iterations", "5", "--quiet"}).status, 0);
    const std::string before = contentsOf(strategies() / "strategy0");
    const Outcome outcome = run({"train", kuhnGame, "--iterations", "9", "--quiet"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_NE(outcome.err.find("--resume"), std::string::npos);
    EXPECT_EQ(contentsOf(strategies() / "strategy0"), before);
    EXPECT_EQ(run({"train", kuhnGame, "--iterations", "9", "--quiet", "--fresh"}).status, 0);
    EXPECT_FALSE(fs::exists(strategies() / "checkpoint.00000000000000000005"));
}

TEST_F(Train, LeavesTheCheckpointsOfARunThatGoesOn) {
    const pid_t running = start({"train", kuhnGame, "--seconds", "60", "--checkpoint-every",
                                 "20000", "--until-nashconv", "1e-300", "--quiet"});
    const auto checkpoints = [&] {
        int count = 0;
        if (fs::exists(strategies()))
            for (const auto& entry : fs::directory_iterator(strategies()))
                count += entry.path().filename().string().starts_with("checkpoint.");
        return count;
    };
    for (int i = 0; i < 1000 && checkpoints() == 0; ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    kill(running, SIGSTOP);
    ASSERT_GT(checkpoints(), 0);
    const pid_t other = start({"train", kuhnGame, "--iterations", "9", "--quiet", "--fresh"});
    const Outcome refused = finish(other);
    EXPECT_EQ(refused.status, 1);
    EXPECT_NE(refused.err.find("locked by process"), std::string::npos) << refused.err;
    EXPECT_GT(checkpoints(), 0);
    EXPECT_FALSE(FileLock::take((strategies() / "train.lock").string()).ok()) << "as prepare takes";
    kill(running, SIGCONT);
    kill(running, SIGKILL);
    finish(running);
}

TEST_F(Train, ALogOfAKilledAndResumedRunNamesEachIterationOnce) {
    const pid_t running = start({"train", kuhnGame, "--seconds", "60", "--checkpoint-every", "5000",
                                 "--until-nashconv", "1e-300", "--quiet"});
    const auto log = [&] { return contentsOf(strategies() / "convergence.jsonl"); };
    const auto last = [&]() -> uint64_t {
        const std::string text = log();
        const size_t at = text.rfind("{\"iteration\":");
        return at == std::string::npos ? 0 : std::stoull(text.substr(at + 13));
    };
    for (int i = 0; i < 1000 && last() < 20'000; ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    kill(running, SIGKILL);
    finish(running);
    const uint64_t goal = last() + 20'000;
    ASSERT_EQ(run({"train", kuhnGame, "--resume", "--quiet", "--iterations", std::to_string(goal)})
                  .status,
              0);
    std::istringstream lines(log());
    uint64_t before = 0;
    for (std::string line; std::getline(lines, line);) {
        const uint64_t iteration = std::stoull(line.substr(13));
        EXPECT_GT(iteration, before);
        before = iteration;
    }
    EXPECT_EQ(before, goal);
}

TEST_F(Train, WrongUsageIsStatusTwo) {
    EXPECT_EQ(run({"train"}).status, 2);
    EXPECT_EQ(run({"train", kuhnGame, "--algorithm", "magic"}).status, 2);
    EXPECT_EQ(run({"train", kuhnGame, "--iterations", "-3"}).status, 2);
    EXPECT_EQ(run({"train", "no.such.game"}).status, 1);
}

TEST_F(Train, DryRunTellsTheCostAndWritesNothing) {
    const Outcome outcome = run({"train", kuhnGame, "--dry-run"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_NE(outcome.out.find("24 deals, 12 decision nodes, 48 information sets"),
              std::string::npos)
        << outcome.out;
    EXPECT_TRUE(fs::is_empty(directory));
}

} // namespace
} // namespace tamarin::test
