#include "support/lock.h"
#include "support/tree_paths.h"
#include "toolbox/kuhn_game.h"
#include "toolbox/program.h"
#include "toolbox/tamarin_process.h"

#include <nlohmann/json.hpp>

namespace tamarin::test {
namespace {

namespace fs = std::filesystem;

class Prepare : public ProgramTest {
protected:
    fs::path strategies() const { return directory / "strategies/kuhn.limit.3p"; }
    std::string strategy(int seat) const {
        return contentsOf(strategies() / ("strategy" + std::to_string(seat)));
    }
};

TEST_F(Prepare, FillsAnEmptyPlayingDirectory) {
    const Outcome outcome = run({"prepare", kuhnGame, "--quiet"});
    ASSERT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_NE(outcome.out.find("has strategies for all 3 seats, made in"), std::string::npos)
        << outcome.out;
    EXPECT_TRUE(fs::exists(directory / kuhnGame));
    for (int seat = 0; seat < 3; ++seat)
        EXPECT_EQ(strategy(seat).size(), 5196U);
    EXPECT_TRUE(fs::exists(strategies() / "manifest.json"));
}

TEST_F(Prepare, LeavesGoodStrategiesAloneUnlessForced) {
    ASSERT_EQ(run({"prepare", kuhnGame, "--quiet"}).status, 0);
    const auto time = fs::last_write_time(strategies() / "strategy0");
    const std::string before = strategy(0);
    const Outcome again = run({"prepare", kuhnGame, "--quiet"});
    EXPECT_EQ(again.status, 0);
    EXPECT_NE(again.out.find("has good strategies for all 3 seats"), std::string::npos);
    EXPECT_EQ(fs::last_write_time(strategies() / "strategy0"), time);
    EXPECT_EQ(run({"prepare", kuhnGame, "--quiet", "--force"}).status, 0);
    EXPECT_NE(fs::last_write_time(strategies() / "strategy0"), time);
    EXPECT_EQ(strategy(0), before); // it is made the same way every time
}

TEST_F(Prepare, ReplacesDamagedAndPoorStrategies) {
    ASSERT_EQ(run({"prepare", kuhnGame, "--quiet"}).status, 0);
    const std::string good = strategy(1);
    writeFile(strategies() / "strategy1", good.substr(0, 777));
    const Outcome outcome = run({"prepare", kuhnGame, "--quiet"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_NE(outcome.err.find("777 bytes"), std::string::npos) << outcome.err;
    EXPECT_NE(outcome.err.find("strategy1 that was there is kept as"), std::string::npos);
    EXPECT_EQ(strategy(1), good);
    EXPECT_EQ(contentsOf(strategies() / "strategy1.bad"), good.substr(0, 777));
    ASSERT_EQ(run({"train", kuhnGame, "--iterations", "3", "--fresh", "--quiet"}).status, 0);
    ASSERT_NE(strategy(1), good);
    EXPECT_EQ(run({"prepare", kuhnGame, "--quiet"}).status, 0);
    EXPECT_EQ(strategy(1), good);
}

TEST_F(Prepare, WorksInAnotherDirectory) {
    fs::create_directory(directory / "run");
    ASSERT_EQ(run({"prepare", kuhnGame, "--dir", "run", "--quiet"}).status, 0);
    EXPECT_TRUE(fs::exists(directory / "run" / kuhnGame));
    EXPECT_TRUE(fs::exists(directory / "run/strategies/kuhn.limit.3p/strategy2"));
}

// A damaged file once went out of the way before anybody knew whether a new one would come.
TEST_F(Prepare, LeavesDamagedStrategiesWhereAnotherTrains) {
    ASSERT_EQ(run({"prepare", kuhnGame, "--quiet"}).status, 0);
    writeFile(strategies() / "strategy1", "damaged");
    const auto lock = FileLock::take((strategies() / "train.lock").string());
    ASSERT_TRUE(lock.ok());
    const Outcome outcome = run({"prepare", kuhnGame, "--quiet"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_NE(outcome.err.find("locked by process"), std::string::npos) << outcome.err;
    EXPECT_EQ(strategy(1), "damaged");
    EXPECT_FALSE(fs::exists(strategies() / "strategy1.bad"));
}

// One that cannot be read may be a good one.
TEST_F(Prepare, RefusesWhatItCannotRead) {
    ASSERT_EQ(run({"prepare", kuhnGame, "--quiet"}).status, 0);
    fs::remove(strategies() / "strategy2");
    fs::create_directory(strategies() / "strategy2");
    const Outcome outcome = run({"prepare", kuhnGame, "--quiet"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err, "tamarin: ./strategies/kuhn.limit.3p/strategy2: not a regular file\n");
    EXPECT_TRUE(fs::is_directory(strategies() / "strategy2"));
    EXPECT_FALSE(fs::exists(strategies() / "strategy2.bad"));
}

TEST_F(Prepare, SaysThatAllIsThereWhereNothingCanBeWritten) {
    ASSERT_EQ(run({"prepare", kuhnGame, "--quiet"}).status, 0);
    // By its name, and by the path of the same definition elsewhere.
    for (const std::string& definition : {kuhnGame, test::inTree("games/" + kuhnGame)}) {
        const auto ended = test::runOnReadOnly(
            directory.string(), {"prepare", definition, "--quiet", "--dir", directory.string()});
        if (!ended)
            GTEST_SKIP() << "may not mount a directory read-only";
        EXPECT_EQ(ended->status, 0) << ended->err;
        EXPECT_EQ(ended->err, "");
        EXPECT_NE(ended->out.find("has good strategies for all 3 seats"), std::string::npos);
    }
    fs::remove(strategies() / "strategy0");
    const auto missing = test::runOnReadOnly(
        directory.string(), {"prepare", kuhnGame, "--quiet", "--dir", directory.string()});
    EXPECT_EQ(missing->status, 1);
    EXPECT_NE(missing->err.find("train.lock: could not open the lock file: Read-only file system"),
              std::string::npos)
        << missing->err;
}

// The strategies were once written, and then the program ended for the sake of the manifest.
TEST_F(Prepare, TakesAGamesNameOfAnyBytes) {
    const std::string name = "k\xff.game";
    fs::copy_file(tamarin::test::inTree("games/" + kuhnGame), directory / name);
    for (const std::string command : {"prepare", "exploit", "show"}) {
        const Outcome outcome = run({command, name});
        EXPECT_EQ(outcome.status, 0) << command << ": " << outcome.err;
    }
    const auto manifest =
        nlohmann::json::parse(contentsOf(directory / "strategies/k\xff/manifest.json"));
    EXPECT_EQ(manifest["files"][0]["from"], "k\xEF\xBF\xBD.game");
    EXPECT_EQ(run({"verify", "--quiet", "--json"}).status, 0);
    EXPECT_EQ(run({"train", name, "--iterations", "9", "--fresh", "--quiet", "--json"}).status, 0);
}

} // namespace
} // namespace tamarin::test
