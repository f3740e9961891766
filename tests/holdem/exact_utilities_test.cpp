#include "holdem/exact_utilities.h"

#include "eval/hand_evaluator.h"
#include "solver/auxiliary_fixture.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <numeric>
#include <optional>
#include <set>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

// The game of a round, trained a little on scrambled clusters: no two buckets play alike.
class Round {
public:
    explicit Round(int number)
        : round(number), game(auxiliaryGameOf(2, number)), quick(2, number), auxiliary(*game) {
        std::array<double, AuxiliaryGame::numBuckets> chances;
        for (size_t b = 0; b < chances.size(); ++b)
            chances[b] = static_cast<double>(b) / 100.0; // some may not fold, some not call
        auxiliary.start(chances);
        std::minstd_rand0 engine(17);
        AuxiliaryTraining(auxiliary, lookup()).run(20, engine);
        values.emplace(auxiliary);
    }

    const hand_indexer_t* indexer() { return quick.tables.indexer(round); }
    const uint8_t* clusters() { return quick.tables.getClusterTable(2, round); }
    ClusterLookup lookup() { return {indexer(), clusters()}; }

    int round;
    GamePtr game;
    QuickTables quick;
    AuxiliaryGame auxiliary;
    std::optional<AuxiliaryGame::Values> values;
};

CardSet setOf(std::span<const uint8_t> cards) {
    CardSet set = 0;
    for (const uint8_t card : cards)
        set |= cardBit(card);
    return set;
}

// A board's holdings: what they are ranked by, and their indices.
struct Board {
    Board(Round& of, std::vector<uint8_t> boardCards) : cards(std::move(boardCards)) {
        left.resize(deckCards);
        left.resize(cardsWithout(cards.data(), static_cast<int>(cards.size()), left.data()));
        // Two cards alone are not ranked by the evaluator; the rules rank all.
        std::set<int> ranks;
        std::vector<int> rank;
        for (size_t high = 1; high < left.size(); ++high)
            for (size_t low = 0; low < high; ++low) {
                rank.push_back(
                    rankCardSet(setOf(cards) | cardBit(left[low]) | cardBit(left[high])));
                ranks.insert(rank.back());
                std::vector<uint8_t> hand{left[low], left[high]};
                hand.insert(hand.end(), cards.begin(), cards.end());
                indices.push_back(
                    static_cast<uint32_t>(hand_index_last(of.indexer(), hand.data())));
            }
        for (const int value : rank)
            values.push_back(
                static_cast<uint16_t>(std::distance(ranks.begin(), ranks.find(value))));
    }

    std::vector<uint8_t> cards;
    std::vector<uint8_t> left;
    std::vector<uint16_t> values;
    std::vector<uint32_t> indices;
};

std::vector<double> exactly(const ExactUtilities& exact, const Board& board, size_t seat) {
    std::vector<double> utilities(board.values.size());
    exact.ofBoard(HoldingOrder(board.values.data(), board.left.size()), board.indices.data(), seat,
                  utilities.data());
    return utilities;
}

// The mean over the opponents, each as likely as likelihood(low, high) of its places says.
template <class Likelihood>
double plainUtility(Round& of, const Board& board, size_t a, size_t b, size_t seat,
                    const Likelihood& likelihood) {
    const size_t own = holdingNumber(a, b);
    double sum = 0;
    double weights = 0;
    for (size_t high = 1; high < board.left.size(); ++high)
        for (size_t low = 0; low < high; ++low) {
            if (low == a || low == b || high == a || high == b)
                continue;
            const size_t other = holdingNumber(low, high);
            uint8_t buckets[2];
            buckets[seat] = of.clusters()[board.indices[own] % 256];
            buckets[1 - seat] = of.clusters()[board.indices[other]];
            AuxiliaryGame::Ranks ranks = AuxiliaryGame::noRanks;
            ranks[seat] = board.values[own];
            ranks[1 - seat] = board.values[other];
            const double weight = likelihood(low, high);
            sum += weight * of.values->ofPair(buckets, AuxiliaryGame::outcome(ranks))[seat];
            weights += weight;
        }
    return sum / weights;
}

const std::vector<std::vector<uint8_t>> boards{
    {}, {3, 17, 22}, {0, 1, 30, 47}, {8, 12, 20, 33, 50}};

TEST(ExactUtilities, AreTheMeansOverEveryOpponent) {
    for (int round = 0; round < holdemRounds; ++round) {
        Round of(round);
        const ExactUtilities exact(of.auxiliary, of.clusters());
        const Board board(of, boards[static_cast<size_t>(round)]);
        for (size_t seat = 0; seat < 2; ++seat) {
            const std::vector<double> utilities = exactly(exact, board, seat);
            for (size_t b = 5; b < board.left.size(); b += 11)
                for (size_t a = b % 3; a < b; a += 7)
                    EXPECT_NEAR(
                        utilities[holdingNumber(a, b)],
                        plainUtility(of, board, a, b, seat, [](size_t, size_t) { return 1; }),
                        1e-10)
                        << round << ' ' << seat << ' ' << a << ' ' << b;
        }
    }
}

// Holdings that a renaming of the suits turns into each other are one hand, on one board and on
// others of its class.
TEST(ExactUtilities, AreTheSameToTheBitWhereverAHandIsMet) {
    Round of(3);
    const ExactUtilities exact(of.auxiliary, of.clusters());
    std::map<uint32_t, double> known;
    size_t met = 0;
    // The second board is the first with clubs and spades exchanged.
    for (const std::vector<uint8_t>& cards :
         std::vector<std::vector<uint8_t>>{{8, 12, 20, 33, 48}, {11, 15, 23, 33, 51}}) {
        const Board board(of, cards);
        const std::vector<double> utilities = exactly(exact, board, 1);
        for (size_t h = 0; h < utilities.size(); ++h) {
            const auto [at, first] = known.emplace(board.indices[h], utilities[h]);
            EXPECT_EQ(std::bit_cast<uint64_t>(at->second), std::bit_cast<uint64_t>(utilities[h]));
            met += !first;
        }
    }
    EXPECT_GT(met, 1081U);
}

// The sampler exchanges each of the first four cards with any card, in turn: of all ways to do so,
// how many bring these two to the front.
std::vector<std::vector<int>> waysToTheFront(size_t cards) {
    std::vector<std::vector<int>> ways(cards, std::vector<int>(cards));
    std::vector<uint8_t> deck(cards);
    std::iota(deck.begin(), deck.end(), uint8_t{0});
    const auto exchange = [&](const auto& self, size_t place) -> void {
        if (place == 4) {
            ++ways[std::min(deck[0], deck[1])][std::max(deck[0], deck[1])];
            return;
        }
        for (size_t with = 0; with < cards; ++with) {
            std::swap(deck[place], deck[with]);
            self(self, place + 1);
            std::swap(deck[place], deck[with]);
        }
    };
    exchange(exchange, 0);
    return ways;
}

// What is sampled differs from what is counted by that shuffle, which favours a few cards, and by
// nothing else.
TEST(ExactUtilities, DifferFromSampledOnesByTheShuffleAlone) {
    Round of(2);
    const ExactUtilities exact(of.auxiliary, of.clusters());
    const UtilityFiller filler(of.auxiliary, of.lookup(), 2);
    const std::vector<std::vector<int>> ways = waysToTheFront(46);
    std::minstd_rand0 engine(23);
    for (const size_t index : {1'000U, 5'000'000U, 13'000'001U}) {
        uint8_t hand[6];
        ASSERT_TRUE(hand_unindex(of.indexer(), 1, index, hand));
        const Board board(of, {hand + 2, hand + 6});
        const auto placeOf = [&](uint8_t card) {
            return static_cast<size_t>(std::find(board.left.begin(), board.left.end(), card) -
                                       board.left.begin());
        };
        const size_t a = std::min(placeOf(hand[0]), placeOf(hand[1]));
        const size_t b = std::max(placeOf(hand[0]), placeOf(hand[1]));
        ASSERT_EQ(board.indices[holdingNumber(a, b)], index);
        // Among the cards that the hand leaves as well.
        const auto rest = [&](size_t place) { return place - (place > a) - (place > b); };
        for (size_t seat = 0; seat < 2; ++seat) {
            double sum = 0;
            double squares = 0;
            constexpr int times = 2'000; // of ten deals
            for (int i = 0; i < times; ++i) {
                double utility[2];
                double* seats[] = {&utility[0], &utility[1]};
                filler.fill(index, index + 1, seats, engine);
                sum += utility[seat];
                squares += utility[seat] * utility[seat];
            }
            const double mean = sum / times;
            const double error = std::sqrt((squares / times - mean * mean) / times);
            EXPECT_LT(error, 0.02);
            EXPECT_NEAR(
                mean,
                plainUtility(of, board, a, b, seat,
                             [&](size_t low, size_t high) { return ways[rest(low)][rest(high)]; }),
                4 * error)
                << index << ' ' << seat;
            EXPECT_NEAR(mean, exactly(exact, board, seat)[holdingNumber(a, b)], 4 * error + 0.15);
        }
    }
}

} // namespace
} // namespace tamarin::test
