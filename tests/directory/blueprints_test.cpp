#include "directory/blueprints.h"

#include "toolbox/small_blueprint.h"

namespace tamarin::test {
namespace {

class Blueprints : public SmallBlueprint {};

TEST_F(Blueprints, TellTheirGame) {
    // The same under another name, later in the order; and one that is no game.
    std::filesystem::copy_file("small.game", "zmall.game");
    std::ofstream("a.game") << "GAMEDEF\nnonsense\n";
    testing::internal::CaptureStderr(); // what is wrong with the one that is none
    const auto opened = openBlueprint(blueprint, ".");
    testing::internal::GetCapturedStderr();
    ASSERT_TRUE(opened.ok()) << opened.error();
    EXPECT_EQ(opened->describe(), "small.game over few, 5 iterations with seed 3");
    EXPECT_EQ(opened->path, blueprint);
    EXPECT_EQ(opened->origin().abstraction, "few");
    EXPECT_EQ(opened->tree->nodes().size(), CompiledTree(*opened->game.rules).nodes().size());
    EXPECT_EQ(openBlueprint(blueprint, ".", "zmall.game")->game.name, "zmall.game");
}

TEST_F(Blueprints, OfUnknownAndOtherGamesAreRefused) {
    const auto other = openBlueprint(blueprint, ".", "holdem.limit.2p.reverse_blinds.game");
    ASSERT_FALSE(other.ok());
    EXPECT_EQ(other.error(), std::string(blueprint) + ": made for another game than this one");
    const auto three = openBlueprint(blueprint, ".", "holdem.limit.3p.game");
    ASSERT_FALSE(three.ok());
    EXPECT_EQ(three.error(),
              std::string(blueprint) + ": format 1, not 2: a blueprint of limit for two");
    std::filesystem::remove("small.game");
    const auto unknown = openBlueprint(blueprint, ".");
    ASSERT_FALSE(unknown.ok());
    EXPECT_EQ(unknown.error(), std::string(blueprint) + ": damaged, or made for a game of which "
                                                        "there is no definition in .");
}

TEST_F(Blueprints, DamageIsTold) {
    damage(blueprint);
    const auto damaged = openBlueprint(blueprint, ".");
    ASSERT_FALSE(damaged.ok());
    EXPECT_EQ(damaged.error(),
              std::string(blueprint) + ": damaged, block 1 of 1 does not fit its checksum");
}

TEST_F(Blueprints, AreKnownByTheirBeginning) {
    EXPECT_TRUE(isBlueprint(blueprint));
    EXPECT_FALSE(isBlueprint("small.game"));
    EXPECT_FALSE(isBlueprint("lookup"));
    EXPECT_FALSE(isBlueprint("absent"));
}

} // namespace
} // namespace tamarin::test
