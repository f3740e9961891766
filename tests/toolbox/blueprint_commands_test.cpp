// What verify, show and analyse do with blueprints.
#include "toolbox/known_strategies.h"
#include "toolbox/small_blueprint.h"

namespace tamarin::test {
namespace {

class BlueprintCommands : public SmallBlueprint {
protected:
    // What verify says of the blueprint.
    static nlohmann::json verified(int status) {
        const ToolboxRun ran = callTamarin({"verify", "--json", "--quiet"});
        EXPECT_EQ(ran.status, status) << ran.err;
        const auto json = ran.json();
        for (const auto& file : json["strategies"])
            if (std::string(file["file"]).ends_with("/blueprint"))
                return file;
        return {};
    }
};

TEST_F(BlueprintCommands, VerifySaysThatABlueprintIsSound) {
    auto file = verified(0);
    EXPECT_EQ(file["good"], true);
    EXPECT_EQ(file["result"], "good, as the manifest says; sound, small.game over few, 5 "
                              "iterations with seed 3");
    std::filesystem::remove("strategies/small/manifest.json");
    file = verified(0);
    EXPECT_TRUE(std::string(file["result"])
                    .ends_with("; sound, small.game over few, 5 iterations "
                               "with seed 3"));
}

TEST_F(BlueprintCommands, VerifySaysWhatIsDamagedAndWhere) {
    damage(blueprint);
    auto file = verified(1);
    EXPECT_EQ(file["good"], false);
    EXPECT_EQ(file["result"], "damaged, block 1 of 1 does not fit its checksum");
    std::filesystem::remove("strategies/small/manifest.json");
    EXPECT_EQ(verified(1)["good"], false) << "without a manifest, too";
    damage(blueprint);
    EXPECT_EQ(verified(0)["good"], true);
    std::ofstream("strategies/small/manifest.json") << "nonsense";
    EXPECT_TRUE(std::string(verified(1)["result"]).starts_with("nothing to compare with; sound, "));
    damage("lookup/few/flop");
    file = verified(1);
    EXPECT_TRUE(std::string(file["result"])
                    .starts_with("needs its card abstraction: lookup/few/flop: damaged"))
        << file["result"];
}

TEST_F(BlueprintCommands, ShowSaysWhatABlueprintIs) {
    const ToolboxRun ran = callTamarin({"show", blueprint});
    ASSERT_EQ(ran.status, 0) << ran.err;
    const std::string bytes = std::to_string(std::filesystem::file_size(blueprint));
    EXPECT_TRUE(ran.out.starts_with(std::string(blueprint) +
                                    ": small.game over few, 5 iterations with seed 3, "))
        << ran.out;
    EXPECT_NE(ran.out.find("\n\nseat 1 before the flop, first to act\n100.0% of its hands come "
                           "here\n  fold  "),
              std::string::npos)
        << ran.out;
    EXPECT_EQ(callTamarin({"show", "small.game"}).out, ran.out) << "there is no other strategy";
    const auto json = callTamarin({"show", blueprint, "--json"}).json();
    EXPECT_EQ(json["game"], "small.game");
    EXPECT_EQ(json["cards"], "few");
    EXPECT_EQ(json["iterations"], 5);
    EXPECT_EQ(json["seed"], 3);
    EXPECT_EQ(std::to_string(json["bytes"].get<uint64_t>()), bytes);
    EXPECT_EQ(json["decision"]["classes"].size(), 169U);
}

TEST_F(BlueprintCommands, ShowWalksTheTree) {
    const auto json =
        callTamarin({"show", blueprint, "--actions", "rc/c", "--board", "AsKd7c", "--json"}).json();
    EXPECT_EQ(json["decision"]["actions"], "rc/c");
    EXPECT_EQ(json["decision"]["seat"], 1);
    EXPECT_EQ(json["decision"]["hands"].size(), 1176U);
    EXPECT_EQ(
        callTamarin({"show", "small.game", "--actions", "rc/c", "--board", "AsKd7c", "--json"})
            .json()["decision"],
        json["decision"]);
    EXPECT_EQ(callTamarin({"show", blueprint, "--actions", "cc"}).status, 2);
    EXPECT_EQ(callTamarin({"show", blueprint, "--actions", "rrr"}).status, 2);
    EXPECT_EQ(callTamarin({"show", blueprint, "--board", "AsAs"}).status, 2);
    EXPECT_EQ(callTamarin({"show", blueprint, "--html", "page.html"}).status, 2);
    const ToolboxRun none = callTamarin({"show", "small.gam", "--actions", "r"});
    EXPECT_EQ(none.status, 1);
    EXPECT_NE(none.err.find("there is no blueprint small.gam"), std::string::npos) << none.err;
}

// The playing directory is where the file says, unless another one is named.
TEST_F(BlueprintCommands, ShowFindsTheAbstractionBesideTheStrategies) {
    const auto here = std::filesystem::current_path();
    std::filesystem::create_directories("elsewhere/other");
    std::filesystem::current_path("elsewhere");
    const std::string path = (here / blueprint).string();
    EXPECT_EQ(callTamarin({"show", path}).status, 0);
    EXPECT_EQ(callTamarin({"show", blueprint, "--dir", here.string()}).status, 0);
    EXPECT_EQ(callTamarin({"show", path, "--dir", "other"}).status, 1);
    std::filesystem::current_path(here);
}

TEST_F(BlueprintCommands, ThePlayersBlueprintIsItsKnownStrategy) {
    const auto game = openGameFile("small.game", ".");
    ASSERT_TRUE(game.ok());
    EXPECT_TRUE(KnownStrategies::open(*game, ".", {{"a", "player"}}).ok());
    EXPECT_TRUE(KnownStrategies::open(*game, ".", {{"a", blueprint}}).ok());
    // One that is not played is not known.
    damage(blueprint);
    const auto old = KnownStrategies::open(*game, ".", {{"a", "player"}});
    ASSERT_FALSE(old.ok());
    EXPECT_NE(old.error().find("a: there is no strategy strategies/small/strategy"),
              std::string::npos)
        << old.error();
    const auto named = KnownStrategies::open(*game, ".", {{"a", blueprint}});
    ASSERT_FALSE(named.ok());
    EXPECT_NE(named.error().find("does not fit its checksum"), std::string::npos);
}

} // namespace
} // namespace tamarin::test
