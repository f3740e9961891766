#include "directory/strategies.h"

#include "directory/manifest.h"
#include "support/temp_directory.h"
#include "support/tree_paths.h"

#include <algorithm>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

class Strategies : public ::testing::Test {
protected:
    Strategies() : game(std::move(*openSmallGame(inTree("games/kuhn.limit.3p.game"), "/"))) {}

    void write(const std::string& strategies, uint64_t iterations) const {
        const auto trainer = makeTrainer(*game.small, {});
        trainer->run(iterations);
        const Status written =
            writeStrategies(*game.small, *trainer, strategies, "trained here", game.name);
        ASSERT_TRUE(written) << written.error();
    }

    const NamedGame game;
    const TempDirectory scratch;
    const std::string here = scratch.file("a/b");
};

TEST_F(Strategies, LieBelowTheNameOfTheGame) {
    EXPECT_EQ(game.name, "kuhn.limit.3p.game");
    EXPECT_EQ(strategyDirectory("run", game.name), "run/strategies/kuhn.limit.3p");
    EXPECT_EQ(strategyDirectory("run", "my"), "run/strategies/my");
    EXPECT_EQ(strategyPath("run/strategies/my", 2), "run/strategies/my/strategy2");
}

TEST_F(Strategies, AreWrittenForEverySeatAndEntered) {
    write(here, 5);
    const auto compared = compareWithManifest(here);
    ASSERT_TRUE(compared.ok());
    ASSERT_EQ(compared->good.size(), 3U);
    for (size_t seat = 0; seat < 3; ++seat) {
        EXPECT_EQ(compared->good[seat].name, "strategy" + std::to_string(seat));
        EXPECT_EQ(compared->good[seat].from, "kuhn.limit.3p.game");
    }
}

TEST_F(Strategies, OfEachSeatAreItsOwn) {
    write(here, 5);
    const std::string other = scratch.file("other");
    write(other, 50);
    std::filesystem::copy_file(strategyPath(other, 1), strategyPath(here, 1),
                               std::filesystem::copy_options::overwrite_existing);
    const auto mixed = readStrategies(*game.small, here);
    const auto first = readStrategy(*game.small, strategyPath(here, 0));
    const auto second = readStrategy(*game.small, strategyPath(other, 1));
    ASSERT_TRUE(mixed.ok() && first.ok() && second.ok());
    EXPECT_NE(*first, *second);
    for (const CompiledTree::Node& node : game.small->tree().nodes())
        for (uint32_t field = 0; field < game.small->layout().numBuckets(node.slot); ++field) {
            const size_t set = game.small->layout().index(node, field);
            EXPECT_EQ((*mixed)[set], (node.player == 1 ? *second : *first)[set]) << set;
        }
}

TEST_F(Strategies, NameTheFileThatIsDamaged) {
    write(here, 5);
    std::filesystem::resize_file(strategyPath(here, 2), 100);
    const auto read = readStrategies(*game.small, here);
    ASSERT_FALSE(read.ok());
    EXPECT_EQ(read.error(),
              here + "/strategy2 has 100 bytes, not 5196: it is damaged or another game's");
}

TEST_F(Strategies, AreForGamesThatCanBeEnumerated) {
    const std::string holdem = inTree("games/holdem.limit.3p.game");
    const auto opened = openSmallGame(holdem, "/");
    ASSERT_FALSE(opened.ok());
    EXPECT_TRUE(opened.error().starts_with(holdem + ": ")) << opened.error();
}

} // namespace
} // namespace tamarin::test
