// Games that are small enough to look at every deal, for sampled training: what each seat knows,
// all deals, and values and best responses by a plain recursion over them.
#pragma once

#include "game/games.h"
#include "sampling/sampling_trainer.h"
#include "tree/deck.h"

#include <algorithm>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace tamarin::test {

inline const char* const smallNoLimit = R"(GAMEDEF
nolimit
numPlayers = 2
numRounds = 2
stack = 12 12
blind = 2 1
firstPlayer = 2 1
numSuits = 2
numRanks = 3
numHoleCards = 1
numBoardCards = 0 1
END GAMEDEF
)";

// One hole card: its rank and those of the board, in full.
class RankBuckets : public SeatBuckets {
public:
    uint32_t numBuckets(int round) const override { return round == 0 ? 4 : 16; }
    uint16_t bucket(int, std::span<const uint8_t> hole,
                    std::span<const uint8_t> board) const override {
        int known = cardField(hole[0]);
        for (const uint8_t card : board)
            known = known * 4 + cardField(card);
        return static_cast<uint16_t>(known);
    }
};

// A strategy is a function: shares(node, bucket, out).
class SmallTraining {
public:
    using Shares = std::function<void(int32_t node, size_t bucket, double* shares)>;

    SmallTraining(const std::string& text, const std::string& menu, SamplingOptions options)
        : game(parseGame(text)), tree(treeOf(*game, menu)), trainer(*game, tree, buckets, options) {
        std::vector<uint8_t> dealt;
        dealFrom(dealt);
    }

    Shares averages() const {
        return [this](int32_t node, size_t bucket, double* shares) {
            trainer.sets().average(trainer.sets().placeOf(tree.node(node), bucket),
                                   tree.node(node).numEdges, shares);
        };
    }

    // Chips a hand.
    double value(size_t seat, const Shares& strategy) const {
        double sum = 0;
        for (const double part : values(0, seat, strategy, evenReach(), false))
            sum += part;
        return sum;
    }
    double bestResponse(size_t seat, const Shares& strategy) const {
        double sum = 0;
        for (const double part : values(0, seat, strategy, evenReach(), true))
            sum += part;
        return sum;
    }
    // All gains together.
    double nashConv() const {
        double sum = 0;
        for (size_t seat = 0; seat < game->numPlayers; ++seat)
            sum += bestResponse(seat, averages()) - value(seat, averages());
        return sum;
    }

    // Of each deal, reach times what the seat wins from here on; reach is the probability of the
    // deal and of the play to here, of a response only the others'.
    std::vector<double> values(int32_t child, size_t seat, const Shares& strategy,
                               const std::vector<double>& reach, bool respond) const {
        if (child < 0)
            return ends(child, seat, reach);
        const MenuTree::Node& node = tree.node(child);
        std::vector<std::vector<double>> below;
        const bool chooses = respond && node.seat == seat;
        for (size_t e = 0; e < node.numEdges; ++e) {
            std::vector<double> next = reach;
            for (size_t d = 0; d < deals.size() && !chooses; ++d)
                next[d] *= share(strategy, child, e, d);
            below.push_back(values(tree.edges(node)[e].child, seat, strategy, next, respond));
        }
        return chooses ? best(node, below) : added(below);
    }

    double share(const Shares& strategy, int32_t number, size_t edge, size_t deal) const {
        const MenuTree::Node& node = tree.node(number);
        std::array<double, MenuTree::mostEdges> shares{};
        strategy(number, bucketOf(node, deal), shares.data());
        return shares[edge];
    }
    size_t bucketOf(const MenuTree::Node& node, size_t deal) const {
        return buckets.bucket(node.round, hole(node.seat, deal), board(node.round, deal));
    }
    std::vector<double> evenReach() const {
        return std::vector<double>(deals.size(), 1.0 / static_cast<double>(deals.size()));
    }

    GamePtr game;
    RankBuckets buckets;
    MenuTree tree;
    SamplingTrainer trainer;
    std::vector<State> deals;

private:
    static MenuTree treeOf(const Game& rules, const std::string& menu) {
        return menu.empty() ? MenuTree(rules) : MenuTree(rules, *BettingMenu::parse(menu, "menu"));
    }
    std::span<const uint8_t> hole(size_t seat, size_t deal) const {
        return {deals[deal].holeCards[seat], game->numHoleCards};
    }
    std::span<const uint8_t> board(int round, size_t deal) const {
        return {deals[deal].boardCards, sumBoardCards(game.get(), round)};
    }

    void dealFrom(std::vector<uint8_t>& dealt) {
        if (dealt.size() == static_cast<size_t>(cardsNeeded(*game))) {
            deals.emplace_back();
            placeCards(*game, dealt.data(), &deals.back());
            return;
        }
        for (int rank = MAX_RANKS - game->numRanks; rank < MAX_RANKS; ++rank)
            for (int suit = MAX_SUITS - game->numSuits; suit < MAX_SUITS; ++suit) {
                const auto card = static_cast<uint8_t>(rank * MAX_SUITS + suit);
                if (std::ranges::find(dealt, card) != dealt.end())
                    continue;
                dealt.push_back(card);
                dealFrom(dealt);
                dealt.pop_back();
            }
    }

    std::vector<double> ends(int32_t child, size_t seat, const std::vector<double>& reach) const {
        std::vector<double> result(deals.size());
        const auto& end = tree.settlements()[static_cast<size_t>(~child)];
        for (size_t d = 0; d < deals.size(); ++d) {
            State state = deals[d];
            std::ranges::copy(end.spent, state.spent);
            std::ranges::copy(end.folded, state.playerFolded);
            state.finished = 1;
            state.round = static_cast<uint8_t>(game->numRounds - 1);
            result[d] = reach[d] * valueOfState(game.get(), &state, static_cast<uint8_t>(seat));
        }
        return result;
    }

    static std::vector<double> added(const std::vector<std::vector<double>>& below) {
        std::vector<double> result = below[0];
        for (size_t e = 1; e < below.size(); ++e)
            for (size_t d = 0; d < result.size(); ++d)
                result[d] += below[e][d];
        return result;
    }

    // One edge for all deals in which the seat sees the same cards.
    std::vector<double> best(const MenuTree::Node& node,
                             const std::vector<std::vector<double>>& below) const {
        std::map<std::vector<uint8_t>, std::vector<size_t>> views;
        for (size_t d = 0; d < deals.size(); ++d) {
            const auto own = hole(node.seat, d);
            std::vector<uint8_t> seen(own.begin(), own.end());
            std::ranges::copy(board(node.round, d), std::back_inserter(seen));
            views[seen].push_back(d);
        }
        std::vector<double> result(deals.size());
        for (const auto& [seen, same] : views) {
            const std::vector<double>* most = nullptr;
            double mostSum = 0;
            for (const auto& edge : below) {
                double sum = 0;
                for (const size_t d : same)
                    sum += edge[d];
                if (most == nullptr || sum > mostSum) {
                    most = &edge;
                    mostSum = sum;
                }
            }
            for (const size_t d : same)
                result[d] = (*most)[d];
        }
        return result;
    }
};

} // namespace tamarin::test
