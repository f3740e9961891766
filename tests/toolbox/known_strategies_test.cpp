#include "toolbox/known_strategies.h"

#include "game/games.h"
#include "toolbox/command.h"
#include "toolbox/tamarin_process.h"

namespace tamarin::test {
namespace {

TEST(KnownStrategies, AreNamedByPlayer) {
    const NamedStrategy named = parseNamedStrategy("me=run/strategies/a=b");
    EXPECT_EQ(named.name, "me");
    EXPECT_EQ(named.what, "run/strategies/a=b");
    for (const char* text : {"me", "=call", "me="})
        EXPECT_THROW(parseNamedStrategy(text), UsageError) << text;
}

TEST(KnownStrategies, OfSeatsAreThoseOfBotsAndOfThePlayer) {
    std::vector<Seat> seats;
    for (const char* text :
         {"a=bot:rule", "b=bot:random", "c=player", "d=./other --fast", "e=listen:0"})
        seats.push_back(*parseSeat(text));
    const auto known = knownOfSeats(seats);
    ASSERT_EQ(known.size(), 3U);
    EXPECT_EQ(known[0].name + known[0].what, "arule");
    EXPECT_EQ(known[1].name + known[1].what, "buniform");
    EXPECT_EQ(known[2].name + known[2].what, "cplayer");
}

TEST(KnownStrategies, AreToldByName) {
    const auto game = openGameFile("holdem.limit.2p.reverse_blinds.game", ".");
    ASSERT_TRUE(game.ok());
    const auto known = KnownStrategies::open(*game, ".", {{"a", "rule"}, {"b", "fold"}});
    ASSERT_TRUE(known.ok());
    EXPECT_TRUE((*known)->tell("b", 1));
    EXPECT_FALSE((*known)->tell("c", 0));
    EXPECT_TRUE((*known)->results().knows(1));
    EXPECT_FALSE((*known)->results().knows(0));
}

TEST(KnownStrategies, SayWhatIsMissing) {
    const Scratch scratch;
    const auto game = openGameFile("holdem.limit.2p.reverse_blinds.game", ".");
    ASSERT_TRUE(game.ok());
    const auto none = KnownStrategies::open(*game, scratch.path(), {{"a", "player"}});
    ASSERT_FALSE(none.ok());
    EXPECT_EQ(none.error(), "a: there is no strategy " +
                                (scratch / "strategies/holdem.limit.2p/strategy") +
                                "; 'tamarin prepare holdem.limit.2p.reverse_blinds.game' makes it");
    const auto three = openGameFile("holdem.limit.3p.game", ".");
    const auto refused = KnownStrategies::open(*three, ".", {{"a", "call"}});
    ASSERT_FALSE(refused.ok());
    EXPECT_EQ(refused.error(), "holdem.limit.3p.game: results are freed of luck in limit games for "
                               "two with two hole cards alone");
}

} // namespace
} // namespace tamarin::test
