#include "index/hand_index.h"

#include "index/hand_index_tables.h"
#include "index/random_hand.h"
#include "index/slow_index.h"
#include "index/suit_configurations.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <vector>

#include <gtest/gtest.h>

namespace tamarin::test {

namespace {

using Structure = std::vector<uint8_t>;

bool accepted(unsigned rounds, const Structure& structure) {
    hand_indexer_t indexer;
    std::memset(&indexer, 0xAB, sizeof indexer);
    const bool built = hand_indexer_init(rounds, structure.data(), &indexer);
    if (!built) {
        const hand_indexer_t none = {};
        EXPECT_EQ(std::memcmp(&indexer, &none, sizeof none), 0) << "something left of a refusal";
    }
    hand_indexer_free(&indexer);
    return built;
}

uint64_t indexOf(const Structure& structure, const Structure& cards) {
    const OwnedIndexer owned(structure);
    return hand_index_last(&owned.indexer, cards.data());
}

// card(2, 'c') is 0, card(14, 's') is 51.
constexpr uint8_t card(unsigned rank, char suit) {
    return static_cast<uint8_t>((rank - 2) * 4 + (suit == 'c'   ? 0U
                                                  : suit == 'd' ? 1U
                                                  : suit == 'h' ? 2U
                                                                : 3U));
}

void checkAgainstOracle(const Structure& structure, unsigned hands) {
    const OwnedIndexer owned(structure);
    const SlowIndexer slow(structure);
    ASSERT_EQ(owned.size(), slow.size()) << show(structure);
    RandomHands random(owned.cards(), 1);
    for (unsigned i = 0; i < hands; ++i) {
        const uint8_t* cards = random.next();
        ASSERT_EQ(hand_index_last(&owned.indexer, cards), slow.index(cards))
            << show(structure) << ", hand " << i;
    }
}

// Every hand the definition lists, in its order, has the next index; and the index gives it back.
void checkWholeOrder(const Structure& structure) {
    const OwnedIndexer owned(structure);
    const SlowIndexer slow(structure);
    uint64_t hands = 0;
    uint64_t wrong = 0;
    std::array<uint8_t, 52> back{};
    slow.forEachHand([&](uint64_t index, const std::vector<uint8_t>& cards) {
        ++hands;
        wrong += hand_index_last(&owned.indexer, cards.data()) != index;
        wrong += !hand_unindex(&owned.indexer, owned.rounds() - 1, index, back.data());
        wrong += hand_index_last(&owned.indexer, back.data()) != index;
    });
    EXPECT_EQ(wrong, 0U) << show(structure);
    EXPECT_EQ(hands, owned.size()) << show(structure);
}

} // namespace

TEST(HandIndexSize, HoldemByTable) {
    EXPECT_EQ(OwnedIndexer({2}).size(), 169U);
    EXPECT_EQ(OwnedIndexer({2, 3}).size(), 1286792U);
    EXPECT_EQ(OwnedIndexer({2, 4}).size(), 13960050U);
    EXPECT_EQ(OwnedIndexer({2, 5}).size(), 123156254U);
}

TEST(HandIndexSize, HoldemRoundByRound) {
    const OwnedIndexer owned({2, 3, 1, 1});
    const uint64_t sizes[] = {169, 1286792, 55190538, 2428287420};
    for (unsigned round = 0; round < 4; ++round)
        EXPECT_EQ(hand_indexer_size(&owned.indexer, round), sizes[round]);
}

TEST(HandIndexSize, IsTheNumberOfClassesByBurnside) {
    for (const Structure& structure : {Structure{1},
                                       {4},
                                       {7},
                                       {26},
                                       {52},
                                       {0},
                                       {0, 2},
                                       {1, 1, 1, 1},
                                       {2, 2, 2},
                                       {5, 5},
                                       {13, 3},
                                       {4, 1, 1, 1},
                                       {8, 4},
                                       {48, 4}})
        EXPECT_EQ(OwnedIndexer(structure).size(), countClasses(structure)) << show(structure);
}

TEST(HandIndexInit, RefusesNoRoundAndAFifth) {
    EXPECT_FALSE(accepted(0, {2}));
    EXPECT_FALSE(accepted(5, {1, 1, 1, 1, 1}));
    EXPECT_TRUE(accepted(4, {2, 3, 1, 1}));
}

TEST(HandIndexInit, RefusesMoreThanADeck) {
    EXPECT_FALSE(accepted(1, {53}));
    EXPECT_FALSE(accepted(2, {50, 3}));
    EXPECT_FALSE(accepted(4, {50, 1, 1, 1}));
    EXPECT_FALSE(accepted(2, {255, 255})); // would be a small number in eight bits
    EXPECT_TRUE(accepted(1, {52}));
}

TEST(HandIndexInit, RefusesWhatSixtyFourBitsCannotNumber) {
    EXPECT_FALSE(accepted(2, {17, 17})); // some 4e21
    EXPECT_TRUE(accepted(2, {10, 10}));
}

TEST(HandIndexInit, FillsTheRecord) {
    const OwnedIndexer owned({2, 3, 1, 1});
    const hand_indexer_t& indexer = owned.indexer;
    EXPECT_EQ(indexer.rounds, 4U);
    const unsigned starts[] = {0, 2, 5, 6};
    const uint64_t permutations[] = {10, 200, 800, 3200}; // 10 splits of 2 cards, 20 of 3, 4 of 1
    for (unsigned round = 0; round < 4; ++round) {
        EXPECT_EQ(indexer.cards_per_round[round], owned.cardsPerRound[round]);
        EXPECT_EQ(indexer.round_start[round], starts[round]);
        EXPECT_EQ(indexer.permutations[round], permutations[round]);
    }
    // Two hole cards: 1100 before 2000; words carry the first round in their highest field.
    EXPECT_EQ(indexer.configurations[0], 2U);
    EXPECT_EQ(indexer.configuration[0][0][0], 0x1000U);
    EXPECT_EQ(indexer.configuration[0][0][1], 0x1000U);
    EXPECT_EQ(indexer.configuration[0][1][0], 0x2000U);
    EXPECT_EQ(indexer.configuration_to_equal[0][0], 0b101);
    EXPECT_EQ(indexer.configuration_to_equal[0][1], 0b110);
    EXPECT_EQ(indexer.configuration_to_suit_size[0][0][1], 13U);
    EXPECT_EQ(indexer.configuration_to_suit_size[0][1][0], 78U);
    EXPECT_EQ(indexer.configuration_to_offset[0][1], 91U);
}

TEST(HandIndexInit, ConfigurationsAscendAndTileTheRound) {
    const OwnedIndexer owned({2, 3, 1, 1});
    const hand_indexer_t& indexer = owned.indexer;
    for (unsigned round = 0; round < 4; ++round) {
        EXPECT_EQ(indexer.configuration_to_offset[round][0], 0U);
        for (size_t c = 1; c < indexer.configurations[round]; ++c) {
            const uint32_t* before = indexer.configuration[round][c - 1];
            const uint32_t* after = indexer.configuration[round][c];
            EXPECT_TRUE(std::lexicographical_compare(before, before + 4, after, after + 4));
            EXPECT_TRUE(std::is_sorted(after, after + 4, std::greater<>()));
            EXPECT_LT(indexer.configuration_to_offset[round][c - 1],
                      indexer.configuration_to_offset[round][c]);
        }
        EXPECT_LT(indexer.configuration_to_offset[round][indexer.configurations[round] - 1],
                  indexer.round_size[round]);
    }
}

TEST(HandIndexInit, FreeLeavesAnIndexerOfNoRounds) {
    hand_indexer_t indexer;
    const uint8_t structure[] = {2, 5};
    ASSERT_TRUE(hand_indexer_init(2, structure, &indexer));
    hand_indexer_free(&indexer);
    hand_indexer_free(&indexer);
    EXPECT_EQ(indexer.rounds, 0U);
    const uint8_t cards[7] = {};
    hand_index_t indices[4] = {77, 77, 77, 77};
    EXPECT_EQ(hand_index_last(&indexer, cards), 0U);
    EXPECT_EQ(hand_index_all(&indexer, cards, indices), 0U);
    EXPECT_EQ(indices[0], 77U);
    uint8_t back[7];
    EXPECT_FALSE(hand_unindex(&indexer, 0, 0, back));
}

// Worked by hand: two cards of two suits come first, as pairs x1 <= x2 with number
// x1 + x2 (x2 + 1) / 2; two of one suit follow, from 91.
TEST(HandIndex, HoleCardsByHand) {
    EXPECT_EQ(indexOf({2}, {card(2, 'c'), card(2, 'd')}), 0U);
    EXPECT_EQ(indexOf({2}, {card(2, 'c'), card(3, 'd')}), 1U);
    EXPECT_EQ(indexOf({2}, {card(3, 'h'), card(2, 's')}), 1U);
    EXPECT_EQ(indexOf({2}, {card(3, 'c'), card(3, 's')}), 2U);
    EXPECT_EQ(indexOf({2}, {card(14, 's'), card(13, 'h')}), 89U);
    EXPECT_EQ(indexOf({2}, {card(14, 's'), card(14, 'h')}), 90U);
    EXPECT_EQ(indexOf({2}, {card(3, 'c'), card(2, 'c')}), 91U);
    EXPECT_EQ(indexOf({2}, {card(2, 'h'), card(4, 'h')}), 92U);
    EXPECT_EQ(indexOf({2}, {card(13, 's'), card(14, 's')}), 168U);
}

TEST(HandIndex, HoleCardsAreThirteenPairsAnd78SuitedAnd78Not) {
    const OwnedIndexer owned({2});
    std::array<int, 169> hands{};
    for (uint8_t a = 0; a < 52; ++a)
        for (uint8_t b = 0; b < a; ++b) {
            const uint8_t cards[] = {a, b};
            ++hands.at(hand_index_last(&owned.indexer, cards));
        }
    EXPECT_EQ(std::count(hands.begin(), hands.end(), 6), 13);
    EXPECT_EQ(std::count(hands.begin(), hands.end(), 4), 78);
    EXPECT_EQ(std::count(hands.begin(), hands.end(), 12), 78);
}

TEST(HandIndex, FollowsTheDefinedOrderThroughout) {
    for (const Structure& structure : {Structure{0},
                                       {1},
                                       {2},
                                       {3},
                                       {4},
                                       {5},
                                       {51},
                                       {52},
                                       {1, 1},
                                       {2, 1},
                                       {1, 2},
                                       {0, 2},
                                       {2, 0},
                                       {2, 2},
                                       {3, 1},
                                       {1, 1, 1},
                                       {1, 0, 2},
                                       {1, 1, 1, 1},
                                       {49, 2}})
        checkWholeOrder(structure);
}

TEST(HandIndex, FollowsTheDefinedOrderOverTheWholeFlop) {
    checkWholeOrder({2, 3});
}

TEST(HandIndex, AgreesWithTheSlowForm) {
    for (const Structure& structure :
         {Structure{2, 3}, {2, 4}, {2, 5}, {2, 3, 1, 1}, {4, 4}, {8}, {10, 2}})
        checkAgainstOracle(structure, 2000);
}

TEST(HandIndex, RoundByRoundAllAndLastAgree) {
    const OwnedIndexer owned({2, 3, 1, 1});
    const OwnedIndexer preflop({2});
    const OwnedIndexer flop({2, 3});
    const OwnedIndexer turn({2, 3, 1});
    RandomHands random(7, 2);
    for (int hand = 0; hand < 10000; ++hand) {
        const uint8_t* cards = random.next();
        hand_index_t all[4];
        ASSERT_EQ(hand_index_all(&owned.indexer, cards, all), all[3]);
        ASSERT_EQ(hand_index_last(&owned.indexer, cards), all[3]);
        hand_indexer_state_t state;
        std::memset(&state, 0xAB, sizeof state);
        hand_indexer_state_init(&owned.indexer, &state);
        for (unsigned round = 0; round < 4; ++round) {
            ASSERT_EQ(state.round, round);
            ASSERT_EQ(hand_index_next_round(&owned.indexer,
                                            cards + owned.indexer.round_start[round], &state),
                      all[round]);
        }
        // A round's index does not depend on the rounds to come.
        ASSERT_EQ(hand_index_last(&preflop.indexer, cards), all[0]);
        ASSERT_EQ(hand_index_last(&flop.indexer, cards), all[1]);
        ASSERT_EQ(hand_index_last(&turn.indexer, cards), all[2]);
    }
}

TEST(HandIndex, StateStartsEmptyWithMultipliersOfOne) {
    const hand_indexer_t indexer = {};
    hand_indexer_state_t state;
    std::memset(&state, 0xAB, sizeof state);
    hand_indexer_state_init(&indexer, &state);
    for (unsigned suit = 0; suit < 4; ++suit) {
        EXPECT_EQ(state.suit_index[suit], 0U);
        EXPECT_EQ(state.suit_multiplier[suit], 1U);
        EXPECT_EQ(state.used_ranks[suit], 0U);
    }
    EXPECT_EQ(state.round, 0U);
    EXPECT_EQ(state.permutation_index, 0U);
    EXPECT_EQ(state.permutation_multiplier, 1U);
}

TEST(HandIndex, StateHoldsTheHandSoFar) {
    const OwnedIndexer owned({2, 3});
    hand_indexer_state_t state;
    hand_indexer_state_init(&owned.indexer, &state);
    const uint8_t hole[] = {card(3, 'c'), card(4, 'c')};
    hand_index_next_round(&owned.indexer, hole, &state);
    EXPECT_EQ(state.round, 1U);
    EXPECT_EQ(state.used_ranks[0], 0b110U);
    EXPECT_EQ(state.used_ranks[1], 0U);
    EXPECT_EQ(state.suit_index[0], 2U); // after {2, 3} and {2, 4}
    EXPECT_EQ(state.suit_multiplier[0], 78U);
    EXPECT_EQ(state.suit_multiplier[1], 1U);
    EXPECT_EQ(state.permutation_multiplier, 10U);
}

TEST(HandUnindex, IsInverseOverEveryPreflopAndFlopIndex) {
    const OwnedIndexer owned({2, 3, 1, 1});
    std::array<uint8_t, 7> cards{};
    for (unsigned round = 0; round < 2; ++round) {
        const OwnedIndexer prefix(
            Structure(owned.cardsPerRound.begin(), owned.cardsPerRound.begin() + round + 1));
        uint64_t wrong = 0;
        for (hand_index_t i = 0; i < prefix.size(); ++i)
            wrong += !hand_unindex(&owned.indexer, round, i, cards.data()) ||
                     hand_index_last(&prefix.indexer, cards.data()) != i;
        EXPECT_EQ(wrong, 0U);
    }
}

TEST(HandUnindex, IsInverseOnAMillionRandomRiverIndices) {
    for (const Structure& structure : {Structure{2, 5}, {2, 3, 1, 1}}) {
        const OwnedIndexer owned(structure);
        std::mt19937_64 random(3);
        std::array<uint8_t, 7> cards{};
        uint64_t wrong = 0;
        for (int i = 0; i < 1000000; ++i) {
            const hand_index_t index = random() % owned.size();
            wrong += !hand_unindex(&owned.indexer, owned.rounds() - 1, index, cards.data()) ||
                     hand_index_last(&owned.indexer, cards.data()) != index;
        }
        EXPECT_EQ(wrong, 0U);
    }
}

// Round, suit and rank upwards, the canonical suits in the order c, d, h, s.
TEST(HandUnindex, RepresentativesByHand) {
    const OwnedIndexer owned({2, 3});
    std::array<uint8_t, 5> cards{};
    ASSERT_TRUE(hand_unindex(&owned.indexer, 0, 89, cards.data()));
    EXPECT_EQ(cards[0], card(13, 'c'));
    EXPECT_EQ(cards[1], card(14, 'd'));
    ASSERT_TRUE(hand_unindex(&owned.indexer, 0, 168, cards.data()));
    EXPECT_EQ(cards[0], card(13, 'c'));
    EXPECT_EQ(cards[1], card(14, 'c'));
    ASSERT_TRUE(hand_unindex(&owned.indexer, 1, 1286791, cards.data()));
    EXPECT_EQ(cards, (std::array{card(13, 'c'), card(14, 'c'), card(10, 'c'), card(11, 'c'),
                                 card(12, 'c')}));
}

TEST(HandUnindex, WritesTheRoundsAskedForAndNoMore) {
    const OwnedIndexer owned({2, 3, 1, 1});
    const unsigned cardsThrough[] = {2, 5, 6, 7};
    for (unsigned round = 0; round < 4; ++round) {
        std::array<uint8_t, 8> cards;
        cards.fill(0xAB);
        ASSERT_TRUE(hand_unindex(&owned.indexer, round,
                                 hand_indexer_size(&owned.indexer, round) - 1, cards.data()));
        for (size_t i = 0; i < cards.size(); ++i)
            EXPECT_EQ(cards[i] == 0xAB, i >= cardsThrough[round]);
    }
}

TEST(HandUnindex, OutOfRangeIsRefused) {
    const OwnedIndexer owned({2, 3});
    std::array<uint8_t, 5> cards;
    cards.fill(0xAB);
    const auto untouched = cards;
    EXPECT_FALSE(hand_unindex(&owned.indexer, 0, 169, cards.data()));
    EXPECT_FALSE(hand_unindex(&owned.indexer, 1, 1286792, cards.data()));
    EXPECT_FALSE(hand_unindex(&owned.indexer, 1, UINT64_MAX, cards.data()));
    EXPECT_FALSE(hand_unindex(&owned.indexer, 2, 0, cards.data()));
    EXPECT_FALSE(hand_unindex(&owned.indexer, 4, 0, cards.data()));
    EXPECT_EQ(cards, untouched);
    EXPECT_TRUE(hand_unindex(&owned.indexer, 0, 168, cards.data()));
    EXPECT_TRUE(hand_unindex(&owned.indexer, 1, 1286791, cards.data()));
}

class HandIndexDeathTest : public testing::Test {
protected:
    OwnedIndexer owned{{2, 3}};
};

TEST_F(HandIndexDeathTest, CardBeyondTheDeck) {
    for (const uint8_t wrong : std::array<uint8_t, 4>{52, 55, 64, 255}) {
        const uint8_t hole[] = {wrong, 1, 2, 3, 4};
        EXPECT_DEATH(hand_index_last(&owned.indexer, hole), R"(hand_index.*`cards\[i\] < 52')");
        const uint8_t board[] = {0, 1, 2, 3, wrong};
        EXPECT_DEATH(hand_index_last(&owned.indexer, board), R"(hand_index.*`cards\[i\] < 52')");
    }
}

TEST_F(HandIndexDeathTest, CardTwiceInARound) {
    const uint8_t hole[] = {9, 9, 2, 3, 4};
    EXPECT_DEATH(hand_index_last(&owned.indexer, hole),
                 R"(hand_index.*`!\(ranks\[suit\]&rank_bit\)')");
    const uint8_t board[] = {0, 1, 2, 3, 2};
    EXPECT_DEATH(hand_index_last(&owned.indexer, board),
                 R"(hand_index.*`!\(ranks\[suit\]&rank_bit\)')");
}

TEST_F(HandIndexDeathTest, CardTwiceAcrossRounds) {
    const uint8_t cards[] = {0, 1, 2, 1, 4};
    EXPECT_DEATH(hand_index_last(&owned.indexer, cards),
                 R"(hand_index.*`!\(state->used_ranks\[i\]&ranks\[i\]\)')");
    hand_index_t indices[2];
    EXPECT_DEATH(hand_index_all(&owned.indexer, cards, indices),
                 R"(hand_index.*`!\(state->used_ranks\[i\]&ranks\[i\]\)')");
}

TEST_F(HandIndexDeathTest, FirstBrokenPromiseIsNamed) {
    const uint8_t twiceThenBeyond[] = {0, 1, 2, 2, 52};
    EXPECT_DEATH(hand_index_last(&owned.indexer, twiceThenBeyond), "rank_bit");
    const uint8_t beyondThenTwice[] = {0, 1, 52, 2, 2};
    EXPECT_DEATH(hand_index_last(&owned.indexer, beyondThenTwice), R"(cards\[i\] < 52)");
}

TEST_F(HandIndexDeathTest, RoundBeyondTheIndexers) {
    EXPECT_DEATH((void)hand_indexer_size(&owned.indexer, 2),
                 "hand_index.*`round < indexer->rounds'");
    const uint8_t cards[] = {0, 1, 2, 3, 4, 5};
    hand_indexer_state_t state;
    hand_indexer_state_init(&owned.indexer, &state);
    hand_index_next_round(&owned.indexer, cards, &state);
    hand_index_next_round(&owned.indexer, cards + 2, &state);
    EXPECT_DEATH(hand_index_next_round(&owned.indexer, cards + 5, &state),
                 "hand_index.*`round < indexer->rounds'");
}

TEST_F(HandIndexDeathTest, SuitOfTooManyRankSets) {
    hand_indexer_t indexer;
    const uint8_t threes[] = {3, 3, 3, 3};
    EXPECT_DEATH((void)hand_indexer_init(4, threes, &indexer),
                 R"(hand_index.*`size\+4-1 < 0x100000')");
    const uint8_t thirteens[] = {13, 13, 13, 13};
    EXPECT_DEATH((void)hand_indexer_init(4, thirteens, &indexer),
                 R"(hand_index.*`size\+4-1 < 0x100000')");
}

// What the record promises of every way that cards can fall on suits: the configuration it has once
// the suits are sorted, and the ordering that sorts them, equal suits in their own order.
TEST(HandIndexer, PermutationTablesSortTheSuits) {
    for (const Structure& structure : {Structure{2}, {2, 3}, {2, 5}, {2, 3, 1, 1}}) {
        const OwnedIndexer owned(structure);
        const hand_indexer_t& indexer = owned.indexer;
        std::vector<Splits> splits;
        uint32_t permutations = 1;
        for (const uint8_t cards : structure) {
            splits.emplace_back(cards);
            const uint32_t count = splits.back().count();
            splits.back().scale(permutations);
            permutations *= count;
        }
        std::vector<uint64_t> seen(structure.size());
        forEachPermutation(
            structure, splits, [&](unsigned round, uint32_t permutation, const SuitWords& words) {
                ASSERT_LT(permutation, indexer.permutations[round]);
                const uint32_t configuration =
                    indexer.permutation_to_configuration[round][permutation];
                ASSERT_LT(configuration, indexer.configurations[round]);
                const uint8_t order = indexer.permutation_to_order[round][permutation];
                ASSERT_LT(order, 24U);
                const auto& suits = handIndexTables.suit_permutations[order];
                for (unsigned i = 0; i < 4; ++i) {
                    EXPECT_EQ(words[suits[i]], indexer.configuration[round][configuration][i]);
                    EXPECT_TRUE(
                        i == 0 || words[suits[i - 1]] > words[suits[i]] ||
                        (words[suits[i - 1]] == words[suits[i]] && suits[i - 1] < suits[i]));
                }
                ++seen[round];
            });
        EXPECT_EQ(seen.back(), structure.size() == 4   ? 3200U
                               : structure.back() == 5 ? 560U
                               : structure.back() == 3 ? 200U
                                                       : 10U)
            << show(structure);
    }
}

} // namespace tamarin::test
