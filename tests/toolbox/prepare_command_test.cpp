#include "toolbox/program.h"

namespace tamarin::testing {
namespace {

namespace fs = std::filesystem;

const std::string game = "kuhn.limit.3p.game";

class Prepare : public ProgramTest {
protected:
    fs::path strategies() const { return directory / "strategies/kuhn.limit.3p"; }
    std::string strategy(int seat) const {
        return contentsOf(strategies() / ("strategy" + std::to_string(seat)));
    }
};

TEST_F(Prepare, FillsAnEmptyPlayingDirectory) {
    const Outcome outcome = run({"prepare", game, "--quiet"});
    ASSERT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_NE(outcome.out.find("has strategies for all 3 seats, made in"), std::string::npos)
        << outcome.out;
    EXPECT_TRUE(fs::exists(directory / game));
    for (int seat = 0; seat < 3; ++seat)
        EXPECT_EQ(strategy(seat).size(), 5196U);
    EXPECT_TRUE(fs::exists(strategies() / "manifest.json"));
}

TEST_F(Prepare, LeavesGoodStrategiesAloneUnlessForced) {
    ASSERT_EQ(run({"prepare", game, "--quiet"}).status, 0);
    const auto time = fs::last_write_time(strategies() / "strategy0");
    const std::string before = strategy(0);
    const Outcome again = run({"prepare", game, "--quiet"});
    EXPECT_EQ(again.status, 0);
    EXPECT_NE(again.out.find("has good strategies for all 3 seats"), std::string::npos);
    EXPECT_EQ(fs::last_write_time(strategies() / "strategy0"), time);
    EXPECT_EQ(run({"prepare", game, "--quiet", "--force"}).status, 0);
    EXPECT_NE(fs::last_write_time(strategies() / "strategy0"), time);
    EXPECT_EQ(strategy(0), before); // it is made the same way every time
}

TEST_F(Prepare, ReplacesDamagedAndPoorStrategies) {
    ASSERT_EQ(run({"prepare", game, "--quiet"}).status, 0);
    const std::string good = strategy(1);
    writeFile(strategies() / "strategy1", good.substr(0, 777));
    const Outcome outcome = run({"prepare", game, "--quiet"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_NE(outcome.err.find("777 bytes"), std::string::npos) << outcome.err;
    EXPECT_EQ(strategy(1), good);
    EXPECT_EQ(contentsOf(strategies() / "strategy1.bad"), good.substr(0, 777));
    ASSERT_EQ(run({"train", game, "--iterations", "3", "--fresh", "--quiet"}).status, 0);
    ASSERT_NE(strategy(1), good);
    EXPECT_EQ(run({"prepare", game, "--quiet"}).status, 0);
    EXPECT_EQ(strategy(1), good);
}

TEST_F(Prepare, WorksInAnotherDirectory) {
    fs::create_directory(directory / "run");
    ASSERT_EQ(run({"prepare", game, "--dir", "run", "--quiet"}).status, 0);
    EXPECT_TRUE(fs::exists(directory / "run" / game));
    EXPECT_TRUE(fs::exists(directory / "run/strategies/kuhn.limit.3p/strategy2"));
}

} // namespace
} // namespace tamarin::testing
