#include "bots/random_choice.h"

#include "game/games.h"
#include "game/random_hand.h"

#include <cmath>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

namespace tamarin::test {

namespace {

constexpr const char* noLimitFile = "holdem.nolimit.2p.reverse_blinds.game";

State stateOf(const Game& game, const char* text) {
    MatchState state{};
    EXPECT_GT(readMatchState(text, &game, &state), 0);
    return state.state;
}

} // namespace

RC_GTEST_PROP(RandomChoice, IsAlwaysLegal, (uint32_t seed)) {
    for (const char* name : {"kuhn.limit.3p.game", "holdem.limit.3p.game", noLimitFile}) {
        const GamePtr game = test::loadGameFile(name);
        rng_state_t generator;
        init_genrand(&generator, seed);
        test::playRandomHand(*game, seed, [&](const State& state) {
            if (state.finished)
                return;
            Action action = randomChoice(game.get(), &state, &generator);
            RC_ASSERT(isValidAction(game.get(), &state, 0, &action) == 1);
        });
    }
}

TEST(RandomChoice, TakesEachKindAsOften) {
    const GamePtr game = test::loadGameFile("holdem.limit.2p.reverse_blinds.game");
    rng_state_t generator;
    init_genrand(&generator, 1);
    const auto count = [&](const char* text) {
        const State state = stateOf(*game, text);
        std::array<int, 3> counts{};
        for (int i = 0; i < 9000; ++i)
            ++counts[static_cast<size_t>(randomChoice(game.get(), &state, &generator).type)];
        return counts;
    };
    for (const int times : count("MATCHSTATE:1:0::|AsKs"))
        EXPECT_NEAR(times, 3000, 4 * std::sqrt(2000));
    const auto checks = count("MATCHSTATE:0:0:c:AsKs|"); // nothing is owed: no folds
    EXPECT_EQ(checks[actionFold], 0);
    EXPECT_NEAR(checks[actionRaise], 4500, 4 * std::sqrt(2250));
}

TEST(RandomChoice, RaisesAreLogUniform) {
    const GamePtr game = test::loadGameFile(noLimitFile);
    const State state = stateOf(*game, "MATCHSTATE:1:0::|AsKs"); // from 200 to 20000
    rng_state_t generator;
    init_genrand(&generator, 1);
    int raises = 0;
    int small = 0;
    int32_t least = INT32_MAX;
    int32_t most = 0;
    for (int i = 0; i < 30000; ++i) {
        const Action action = randomChoice(game.get(), &state, &generator);
        if (action.type != actionRaise)
            continue;
        ++raises;
        small += action.size < 2000;
        least = std::min(least, action.size);
        most = std::max(most, action.size);
    }
    EXPECT_NEAR(small, raises / 2, 4 * std::sqrt(raises / 4.0));
    EXPECT_GE(least, 200);
    EXPECT_LT(least, 210);
    EXPECT_GT(most, 19000);
    EXPECT_LE(most, 20000);
}

TEST(RandomChoice, RepeatsWithItsSeed) {
    const GamePtr game = test::loadGameFile(noLimitFile);
    const State state = stateOf(*game, "MATCHSTATE:1:0::|AsKs");
    rng_state_t first;
    rng_state_t second;
    init_genrand(&first, 7);
    init_genrand(&second, 7);
    for (int i = 0; i < 100; ++i) {
        const Action a = randomChoice(game.get(), &state, &first);
        const Action b = randomChoice(game.get(), &state, &second);
        EXPECT_EQ(a.type, b.type);
        EXPECT_EQ(a.size, b.size);
    }
}

} // namespace tamarin::test
