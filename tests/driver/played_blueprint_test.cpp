#include "driver/played_blueprint.h"

#include "driver/blueprint_directory.h"
#include "driver/possible_state.h"
#include "game/text.h"
#include "support/rng.h"
#include "support/split_mix.h"

#include <algorithm>
#include <cmath>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

using Weights = BlueprintDirectory::Weights;

// The hands of two seats on one board, with a bucket of its own for each and for every round.
const std::array<std::string, 2> holes{"AsKd", "7c7h"};
const std::array<std::string, 4> boards{"", "Ks9h4c", "Ks9h4cJd", "Ks9h4cJd3s"};
const std::array<std::array<uint16_t, 4>, 2> known{{{17, 3, 6, 8}, {5, 6, 1, 2}}};

std::vector<BlueprintDirectory::KnownHand> knownHands() {
    std::vector<BlueprintDirectory::KnownHand> hands;
    for (size_t seat = 0; seat < 2; ++seat)
        for (size_t round = 0; round < 4; ++round)
            hands.push_back(
                {static_cast<int>(round), holes[seat] + boards[round], known[seat][round]});
    return hands;
}

// Some action for every node and bucket; a fold where it is not allowed weighs nothing.
Weights scattered(const std::string& actions, size_t bucket) {
    uint64_t sum = bucket + 1;
    for (const char action : actions)
        sum = mixBits(sum * 5 + static_cast<uint64_t>(action));
    Weights weights{};
    weights[mixBits(sum) % 3] = 1;
    return weights;
}

Weights onlyThis(ActionType action) {
    Weights weights{};
    weights[static_cast<size_t>(action)] = 1;
    return weights;
}

// After these actions, seen by the seat.
MatchState seenBy(const Game& game, size_t seat, const std::string& actions, size_t round) {
    const std::array<std::string, 4> shown{"", "/Ks9h4c", "/Ks9h4c/Jd", "/Ks9h4c/Jd/3s"};
    const std::string cards = seat == 0 ? holes[0] + "|" : "|" + holes[1];
    const std::string text =
        "MATCHSTATE:" + std::to_string(seat) + ":3:" + actions + ":" + cards + shown[round];
    MatchState seen = unseenState();
    EXPECT_GT(readMatchState(text.c_str(), &game, &seen), 0) << text;
    return seen;
}

std::unique_ptr<PlayedBlueprint> opened(const BlueprintDirectory& directory) {
    auto blueprint = PlayedBlueprint::open(limitBlueprint, ".", directory.game());
    EXPECT_TRUE(blueprint.ok()) << blueprint.error();
    return std::move(*blueprint);
}

TEST(PlayedBlueprint, PlaysEveryNodeWithTheBucketOfItsSeatAndRound) {
    const BlueprintDirectory directory(knownHands(), scattered);
    const auto blueprint = opened(directory);
    std::array<size_t, 3> drawn{};
    for (size_t n = 0; n < directory.tree().nodes().size(); ++n) {
        const auto& node = directory.tree().nodes()[n];
        const std::string actions = directory.tree().sequence(static_cast<int32_t>(n));
        const MatchState seen = seenBy(directory.game(), node.player, actions, node.round);
        ASSERT_EQ(nodeOf(directory.tree(), seen.state), static_cast<int32_t>(n)) << actions;
        const auto action = blueprint->draw(seen);
        ASSERT_TRUE(action.has_value()) << actions;
        EXPECT_EQ(action->size, 0);
        const Weights wanted = scattered(actions, known[node.player][node.round]);
        const auto wantedAction =
            static_cast<size_t>(std::ranges::max_element(wanted) - wanted.begin());
        ++drawn[static_cast<size_t>(action->type)];
        if (node.child[wantedAction] != CompiledTree::noChild)
            ASSERT_EQ(static_cast<size_t>(action->type), wantedAction) << actions;
        else
            ASSERT_NE(node.child[action->type], CompiledTree::noChild) << actions;
    }
    for (const size_t times : drawn)
        EXPECT_GT(times, 1000U);
}

// Hands change between two decisions without a word.
TEST(PlayedBlueprint, LooksEachNewHandUp) {
    const auto choose = [](const std::string&, size_t bucket) {
        return onlyThis(bucket == 17 || bucket == 3 ? actionRaise : actionCall);
    };
    const BlueprintDirectory directory(knownHands(), choose);
    const auto blueprint = opened(directory);
    const auto drawIn = [&](const std::string& text) {
        MatchState seen = unseenState();
        EXPECT_GT(readMatchState(text.c_str(), &directory.game(), &seen), 0);
        return blueprint->draw(seen)->type;
    };
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(drawIn("MATCHSTATE:0:0:c:AsKd|"), actionRaise);
        EXPECT_EQ(drawIn("MATCHSTATE:0:1:c:2s7d|"), actionCall);
        EXPECT_EQ(drawIn("MATCHSTATE:0:2:cc/:AsKd|/Ks9h4c"), actionRaise);
        EXPECT_EQ(drawIn("MATCHSTATE:0:2:cc/:AsKd|/Ks9h4d"), actionCall);
        EXPECT_EQ(drawIn("MATCHSTATE:0:2:cc/cc/:AsKd|/Ks9h4c/Jd"), actionCall);
        EXPECT_EQ(drawIn("MATCHSTATE:1:2::|AsKd"), actionRaise);
        EXPECT_EQ(drawIn("MATCHSTATE:1:2::|KsAd"), actionRaise) << "the same up to suits";
    }
}

TEST(PlayedBlueprint, SaysWhatItPlays) {
    const BlueprintDirectory directory({}, scattered);
    EXPECT_EQ(opened(directory)->describe(),
              "strategies/holdem.limit.2p/blueprint, over small, 4321 iterations");
}

TEST(PlayedBlueprint, HasNoAnswerOutsideTheTreeOrOutOfTurn) {
    const BlueprintDirectory directory({}, scattered);
    const auto blueprint = opened(directory);
    MatchState seen = seenBy(directory.game(), 0, "c", 0);
    EXPECT_TRUE(blueprint->draw(seen).has_value());
    EXPECT_FALSE(blueprint->draw(seenBy(directory.game(), 0, "", 0))) << "the other is to act";
    EXPECT_FALSE(nodeOf(directory.tree(), seenBy(directory.game(), 0, "f", 0).state)) << "over";
    const MatchState whole = seenBy(directory.game(), 0, "crrr", 0);
    EXPECT_TRUE(nodeOf(directory.tree(), whole.state));
    State broken = whole.state;
    broken.action[0][broken.numActions[0]++] = {actionRaise, 0};
    EXPECT_FALSE(nodeOf(directory.tree(), broken)) << "one raise more than there may be";
    broken = whole.state;
    broken.action[0][1] = {actionInvalid, 0};
    EXPECT_FALSE(nodeOf(directory.tree(), broken));
    broken = whole.state;
    broken.round = 1;
    EXPECT_FALSE(nodeOf(directory.tree(), broken)) << "the round before has not ended";
}

TEST(PlayedBlueprint, RefusesOtherGamesAndDamage) {
    const BlueprintDirectory directory(knownHands(), scattered);
    for (const char* name : {"holdem.limit.3p.game", "holdem.nolimit.2p.reverse_blinds.game"}) {
        const GamePtr other = readDefinitionFile(name);
        const auto refused = PlayedBlueprint::open(limitBlueprint, ".", *other);
        ASSERT_FALSE(refused.ok());
        EXPECT_EQ(refused.error(),
                  limitBlueprint + ": blueprints are played in limit games for two");
    }
    const auto error = [&] {
        const auto refused = PlayedBlueprint::open(limitBlueprint, ".", directory.game());
        return refused ? "" : refused.error();
    };
    EXPECT_EQ(error(), "");
    const uint64_t size = std::filesystem::file_size(limitBlueprint);
    BlueprintDirectory::flipBit(limitBlueprint, size / 2);
    EXPECT_EQ(error(), limitBlueprint + ": damaged, block 1 of 1 does not fit its checksum");
    BlueprintDirectory::flipBit(limitBlueprint, size / 2);
    EXPECT_EQ(error(), "");
    // A bucket of another hand, in range: only the checksum tells.
    for (int round = 0; round < holdemRounds; ++round) {
        const std::string file = BlueprintDirectory::abstractionFile(round);
        BlueprintDirectory::flipBit(file, std::filesystem::file_size(file) - 2);
        EXPECT_EQ(error(), limitBlueprint + " needs its card abstraction: " + file +
                               ": damaged, or of another abstraction: its checksum is not the one "
                               "that the file beside it holds");
        BlueprintDirectory::flipBit(file, std::filesystem::file_size(file) - 2);
    }
    std::filesystem::remove_all("lookup");
    EXPECT_TRUE(error().starts_with(limitBlueprint + " needs its card abstraction: "));
}

TEST(PlayedBlueprint, LiesBesideTheStrategy) {
    EXPECT_EQ(blueprintBeside("strategies/holdem.limit.2p/strategy"), limitBlueprint);
}

TEST(DrawAction, DrawsByTheShares) {
    global_urng().seed(5);
    const ActionShares shares{51 / 255.0, 77 / 255.0, 127 / 255.0};
    std::array<double, 3> drawn{};
    constexpr double draws = 100000;
    for (int i = 0; i < static_cast<int>(draws); ++i)
        ++drawn[static_cast<size_t>(drawAction(shares))];
    for (size_t a = 0; a < shares.size(); ++a)
        EXPECT_NEAR(drawn[a], draws * shares[a],
                    5 * std::sqrt(draws * shares[a] * (1 - shares[a])));
    for (int i = 0; i < 1000; ++i) {
        EXPECT_EQ(drawAction({0, 1, 0}), actionCall);
        EXPECT_EQ(drawAction({1, 0, 0}), actionFold);
        EXPECT_NE(drawAction({0.5, 0, 0.5}), actionCall);
        EXPECT_NE(drawAction({0, 0.5, 0.5}), actionFold);
        // What rounding leaves is the last one's that may be played.
        EXPECT_EQ(drawAction({0, 1e-300, 0}), actionCall);
    }
}

} // namespace
} // namespace tamarin::test
