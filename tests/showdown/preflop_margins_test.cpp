#include "showdown/preflop_margins.h"

#include "eval/preflop_equity.h"
#include "game/games.h"

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

class PreflopMarginsOfAll : public testing::Test {
protected:
    static void SetUpTestSuite() {
        game = loadGameFile("holdem.limit.2p.reverse_blinds.game");
        deck = std::make_unique<PublicDeck>(*game);
        auto counted = PreflopMargins::count(*deck, {});
        ASSERT_TRUE(counted.ok());
        margins = std::make_unique<PreflopMargins>(std::move(*counted));
    }
    static void TearDownTestSuite() { margins.reset(); }

    static std::array<uint8_t, 2> holeOf(const char* text) {
        std::array<uint8_t, 2> cards{};
        int consumed = 0;
        EXPECT_EQ(readCards(text, 2, cards.data(), &consumed), 2);
        return cards;
    }
    static int32_t net(const char* own, const char* other) {
        const auto a = holeOf(own);
        const auto b = holeOf(other);
        return margins->net(deck->numberOf(a[0], a[1]), deck->numberOf(b[0], b[1]));
    }
    static inline GamePtr game{};
    static inline std::unique_ptr<PublicDeck> deck;
    static inline std::unique_ptr<PreflopMargins> margins;
};

TEST_F(PreflopMarginsOfAll, AreThoseOfTheCountByClassesOfBoards) {
    const char* const pairs[][2] = {{"AhAc", "KdKs"}, {"AhAs", "KhKs"}, {"7c2d", "QsQd"},
                                    {"JhTh", "2c2h"}, {"AsKs", "AdKd"}, {"9c8d", "Tc3c"}};
    for (const auto& [own, other] : pairs) {
        const auto a = holeOf(own);
        const auto b = holeOf(other);
        const std::array<CardSet, 2> hands{cardBit(a[0]) | cardBit(a[1]),
                                           cardBit(b[0]) | cardBit(b[1])};
        const DealCounts counts = exactPreflopEquity(hands, 0);
        const int64_t won = static_cast<int64_t>(counts.best[0]);
        const int64_t tied = static_cast<int64_t>(counts.best[1]);
        EXPECT_EQ(net(own, other), 2 * won + tied - PreflopMargins::boards()) << own << other;
        EXPECT_EQ(net(other, own), -net(own, other));
    }
    EXPECT_EQ(net("AhAc", "KdKs"), 1388072 - 317694);
    EXPECT_EQ(net("KsAh", "KsQs"), 0); // a card that both have
}

} // namespace
} // namespace tamarin::test
