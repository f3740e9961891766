// Games with short decks and strategies that differ by seat, node and hand, for measures.
#pragma once

#include "game/games.h"
#include "response/flop_response.h"
#include "response/simple_play.h"
#include "support/split_mix.h"

#include <algorithm>
#include <string>

#include <gtest/gtest.h>

namespace tamarin::test {

// Two players; cards: of the board, round by round.
inline std::string shortGame(int suits, int ranks, const std::string& raises,
                             const std::string& raiseSizes, const std::string& cards) {
    const auto rounds = std::to_string(1 + std::count(cards.begin(), cards.end(), ' '));
    return "GAMEDEF\nlimit\nnumPlayers = 2\nnumRounds = " + rounds +
           "\nblind = 10 5\nraiseSize = " + raiseSizes +
           "\nfirstPlayer = 2 1 1 1\nmaxRaises = " + raises +
           "\nnumSuits = " + std::to_string(suits) + "\nnumRanks = " + std::to_string(ranks) +
           "\nnumHoleCards = 2\nnumBoardCards = " + cards + "\nEND GAMEDEF\n";
}

// Plays at random, by what a renaming of the suits does not change: ranks, and how many cards of
// the board have the suits of the hole cards.
class RandomStrategy : public HandStrategy {
public:
    // classes: the least number in a round.
    RandomStrategy(const CompiledTree& tree, uint64_t seed, size_t classes = 7)
        : tree_(tree), seed_(seed), classes_(classes) {}

    size_t numClasses(int seat, int round) const override {
        return classes_ + static_cast<size_t>(2 * seat + round);
    }
    uint16_t classOf(int seat, int round, std::span<const uint8_t> cards) const override {
        uint64_t sum = (cards[0] / 4U + 1U) * (cards[1] / 4U + 1U);
        sum += cards[0] % 4 == cards[1] % 4 ? 100U : 0U;
        uint64_t alike = 0;
        for (size_t i = 2; i < cards.size(); ++i) {
            sum += mixBits(cards[i] / 4U + 1);
            alike += cards[i] % 4 == cards[0] % 4 ? 1U : 0U;
            alike += cards[i] % 4 == cards[1] % 4 ? 1U : 0U;
        }
        return static_cast<uint16_t>(mixBits(sum + 1000 * alike) % numClasses(seat, round));
    }
    ActionShares shares(int32_t node, size_t handClass) const override {
        HandRandom random(seed_, static_cast<uint64_t>(node) * 1000 + handClass);
        ActionShares shares{};
        double sum = 0;
        for (size_t a = 0; a < shares.size(); ++a)
            if (tree_.nodes()[static_cast<size_t>(node)].child[a] != CompiledTree::noChild) {
                shares[a] = random.next() < 0.2 ? 0.0 : random.next(); // some actions never
                sum += shares[a];
            }
        if (sum == 0)
            return {0, 1, 0};
        for (double& share : shares)
            share /= sum;
        return shares;
    }

private:
    const CompiledTree& tree_;
    uint64_t seed_;
    size_t classes_;
};

// All that a measure needs, of a game and a strategy of the tree.
struct Measured {
    explicit Measured(const std::string& text, uint64_t seed = 3, size_t classes = 7)
        : game(parseGame(text)), tree(*game), deck(*game),
          strategy(std::make_unique<RandomStrategy>(tree, seed, classes)) {
        auto made = BettingRounds::of(*game, tree);
        EXPECT_TRUE(made.ok());
        rounds = std::make_unique<BettingRounds>(std::move(*made));
    }
    // The same game with another strategy.
    void play(SimplePlay simple) { strategy = std::make_unique<SimpleStrategy>(tree, simple); }
    MeasuredGame whole() const { return {*game, tree, *rounds, deck, *strategy}; }

    GamePtr game;
    CompiledTree tree;
    PublicDeck deck;
    std::unique_ptr<HandStrategy> strategy;
    std::unique_ptr<BettingRounds> rounds;
};

} // namespace tamarin::test
