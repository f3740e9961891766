// A step of training pair of hands by pair of hands: the recursion that is obvious, in doubles.
#pragma once

#include "blueprint/short_game.h"

namespace tamarin::test {

class PlainTraining {
public:
    struct Numbers {
        ActionShares regret{};
        ActionShares sum{};
    };

    explicit PlainTraining(const ShortTraining& training) : training_(training) {
        for (const auto& node : training.tree.nodes())
            numbers_.emplace_back(training.buckets.numBuckets(node.round));
    }

    const Numbers& at(int32_t node, size_t bucket) const {
        return numbers_[static_cast<size_t>(node)][bucket];
    }

    // All pairs of hands that the whole board leaves.
    void step(std::span<const uint8_t> board, double weight) {
        board_ = board;
        weight_ = weight;
        const auto before = numbers_;
        before_ = &before;
        std::vector<HoleCards> hands;
        for (size_t h = 0; h < training_.deck.holdings().size(); ++h) {
            const HoleCards hole = training_.deck.cardsOf(h);
            if (!shares(hole, board))
                hands.push_back(hole);
        }
        chip_ = 1.0 / static_cast<double>(hands.size());
        for (const HoleCards& first : hands) {
            addSums(0, 0, first, 1.0);
            addSums(0, 1, first, 1.0);
            for (const HoleCards& second : hands)
                if (!shares(first, second))
                    walk(0, {first, second}, {1.0, 1.0});
        }
    }

private:
    static bool shares(std::span<const uint8_t> one, std::span<const uint8_t> other) {
        return std::ranges::find_first_of(one, other) != one.end();
    }
    const CompiledTree::Node& nodeAt(int32_t number) const {
        return training_.tree.nodes()[static_cast<size_t>(number)];
    }
    size_t bucketOf(const CompiledTree::Node& node, HoleCards hole) const {
        size_t cards = 0;
        for (int round = 0; round <= node.round; ++round)
            cards += training_.game->numBoardCards[round];
        return training_.buckets.bucket(node.round, board_.first(cards), hole);
    }
    ActionShares strategy(int32_t number, size_t bucket) const {
        const auto& node = nodeAt(number);
        const ActionShares& regret = (*before_)[static_cast<size_t>(number)][bucket].regret;
        double total = 0;
        double allowed = 0;
        for (size_t a = 0; a < regret.size(); ++a)
            if (node.child[a] != CompiledTree::noChild) {
                total += std::max(regret[a], 0.0);
                ++allowed;
            }
        ActionShares result{};
        for (size_t a = 0; a < regret.size(); ++a)
            if (node.child[a] != CompiledTree::noChild)
                result[a] = total > 0 ? std::max(regret[a], 0.0) / total : 1 / allowed;
        return result;
    }

    // What seat 0 wins, in chips; the regrets gain on the way.
    double walk(int32_t number, const std::array<HoleCards, 2>& hands,
                std::array<double, 2> reach) {
        if (number < 0)
            return settle(training_.tree.settlements()[static_cast<size_t>(~number)], hands);
        const auto& node = nodeAt(number);
        const size_t seat = node.player;
        const size_t bucket = bucketOf(node, hands[seat]);
        const ActionShares played = strategy(number, bucket);
        ActionShares values{};
        double value = 0;
        for (size_t a = 0; a < played.size(); ++a) {
            if (node.child[a] == CompiledTree::noChild)
                continue;
            auto next = reach;
            next[seat] *= played[a];
            values[a] = walk(node.child[a], hands, next);
            value += played[a] * values[a];
        }
        const double sign = seat == 0 ? 1 : -1;
        Numbers& numbers = numbers_[static_cast<size_t>(number)][bucket];
        for (size_t a = 0; a < played.size(); ++a)
            if (node.child[a] != CompiledTree::noChild)
                numbers.regret[a] += weight_ * chip_ * sign * reach[1 - seat] * (values[a] - value);
        return value;
    }

    double settle(const CompiledTree::Settlement& settlement,
                  const std::array<HoleCards, 2>& hands) const {
        if (settlement.folded[0] != 0)
            return -settlement.spent[0];
        if (settlement.folded[1] != 0)
            return settlement.spent[1];
        std::array<int, 2> ranks{};
        for (size_t seat = 0; seat < 2; ++seat) {
            CardSet cards = cardBit(hands[seat][0]) | cardBit(hands[seat][1]);
            for (const uint8_t card : board_)
                cards |= cardBit(card);
            ranks[seat] = rankCardSet(cards);
        }
        return ranks[0] == ranks[1]  ? 0
               : ranks[0] > ranks[1] ? settlement.spent[1]
                                     : -settlement.spent[0];
    }

    // Once a hand, whatever the other holds.
    void addSums(int32_t number, size_t seat, HoleCards hand, double reach) {
        if (number < 0)
            return;
        const auto& node = nodeAt(number);
        ActionShares played{1, 1, 1};
        if (node.player == seat) {
            const size_t bucket = bucketOf(node, hand);
            played = strategy(number, bucket);
            for (size_t a = 0; a < played.size(); ++a)
                numbers_[static_cast<size_t>(number)][bucket].sum[a] += weight_ * reach * played[a];
        }
        for (size_t a = 0; a < played.size(); ++a)
            if (node.child[a] != CompiledTree::noChild)
                addSums(node.child[a], seat, hand, reach * played[a]);
    }

    const ShortTraining& training_;
    std::vector<std::vector<Numbers>> numbers_;
    const std::vector<std::vector<Numbers>>* before_ = nullptr;
    std::span<const uint8_t> board_;
    double weight_ = 0;
    double chip_ = 0;
};

} // namespace tamarin::test
