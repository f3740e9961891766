#include "blueprint/dealt_board.h"

#include "blueprint/short_game.h"

#include <map>
#include <set>

#include <gtest/gtest.h>

namespace tamarin {
namespace {

const std::string holdem = test::shortGame(4, 13, "1 1 1 1", "10 10 20 20", "0 3 1 1");

TEST(DealtBoard, HandsAreThoseLeftAndSorted) {
    for (const auto& text : {holdem, test::shortGame(3, 6, "1 1", "10 20", "0 2")}) {
        const auto rounds = static_cast<size_t>(test::parseGame(text)->numRounds);
        const test::ShortTraining training(text, std::vector<uint32_t>(rounds, 9));
        const auto cards = training.dealer.draw(3, 77);
        const DealtBoard board = training.dealer.prepare(cards);
        EXPECT_EQ(board.cards, cards);
        const size_t left = training.deck.cards().size() - cards.size();
        EXPECT_EQ(board.hands.size(), left * (left - 1) / 2);
        EXPECT_EQ(board.hands.size(), training.dealer.numHands());
        CardSet set = 0;
        for (const uint8_t card : cards)
            set |= cardBit(card);
        std::vector<int> ranks;
        std::set<std::pair<int, int>> seen;
        for (const auto& hand : board.hands) {
            const CardSet hole = cardBit(training.deck.cards()[hand.low]) |
                                 cardBit(training.deck.cards()[hand.high]);
            EXPECT_EQ(hole & set, 0U);
            EXPECT_TRUE(seen.emplace(hand.low, hand.high).second);
            ranks.push_back(rankCardSet(set | hole));
        }
        EXPECT_TRUE(std::ranges::is_sorted(ranks));
        std::vector<size_t> ends;
        for (size_t i = 0; i < ranks.size(); ++i)
            if (i + 1 == ranks.size() || ranks[i] != ranks[i + 1])
                ends.push_back(i + 1);
        EXPECT_EQ(board.groupEnds, ends);
    }
}

TEST(DealtBoard, BucketsAreThoseOfTheRoundsCards) {
    const test::ShortTraining training(holdem, {30, 17, 40, 500});
    const auto cards = training.dealer.draw(9, 1);
    const DealtBoard board = training.dealer.prepare(cards);
    const std::array<size_t, 4> dealt{0, 3, 4, 5};
    for (size_t round = 0; round < 4; ++round) {
        const auto& buckets = board.rounds[round];
        EXPECT_TRUE(std::ranges::is_sorted(buckets.present));
        std::set<uint16_t> used;
        for (size_t i = 0; i < board.hands.size(); ++i) {
            const HoleCards hole{training.deck.cards()[board.hands[i].low],
                                 training.deck.cards()[board.hands[i].high]};
            EXPECT_EQ(buckets.present[buckets.places[i]],
                      training.buckets.bucket(static_cast<int>(round),
                                              std::span(cards).first(dealt[round]), hole));
            used.insert(buckets.places[i]);
        }
        EXPECT_EQ(used.size(), buckets.present.size());
    }
}

TEST(DealtBoard, BoardsDependOnSeedAndStepAlone) {
    const test::ShortTraining training(holdem, {1, 1, 1, 1});
    EXPECT_EQ(training.dealer.draw(4, 9), training.dealer.draw(4, 9));
    EXPECT_NE(training.dealer.draw(4, 9), training.dealer.draw(4, 10));
    EXPECT_NE(training.dealer.draw(4, 9), training.dealer.draw(5, 9));
    EXPECT_NE(training.dealer.draw(4, 9), training.dealer.draw(5, 8));
    // The same on every machine, for good: strategies and checkpoints hang on it.
    EXPECT_EQ(training.dealer.draw(1, 1), (std::vector<uint8_t>{17, 32, 48, 39, 21}));
}

// Each card comes as often as any other, in each place.
TEST(DealtBoard, DrawsAreFair) {
    const test::ShortTraining training(test::shortGame(2, 5, "1 1", "10 20", "0 3"), {1, 1});
    std::map<std::pair<size_t, uint8_t>, int> counts;
    constexpr int draws = 20'000;
    for (uint64_t t = 0; t < draws; ++t) {
        const auto cards = training.dealer.draw(6, t);
        for (size_t place = 0; place < 3; ++place)
            ++counts[{place, cards[place]}];
    }
    EXPECT_EQ(counts.size(), 30U);
    for (const auto& [place, count] : counts)
        EXPECT_NEAR(count, draws / 10, 200); // 42 is the standard deviation
}

} // namespace
} // namespace tamarin
