// Everything that can happen in a small game for two: every deal and every line of actions, with
// its probability; and what hands are worth, by plain recursion.
#pragma once

#include "analysis/played_hand.h"
#include "analysis/value_estimate.h"
#include "response/measured.h"

#include <algorithm>
#include <functional>
#include <unordered_map>

namespace tamarin::test {

// Two players, each with a strategy of its own.
struct Table {
    explicit Table(const std::string& text, uint64_t seed = 3, uint64_t otherSeed = 11)
        : game(parseGame(text)), tree(*game), deck(*game) {
        strategies[0] = std::make_unique<RandomStrategy>(tree, seed);
        strategies[1] = std::make_unique<RandomStrategy>(tree, otherSeed);
    }

    size_t boardCards(int round) const { return sumBoardCards(game.get(), round); }
    // visit(board) for every board with the cards of one more round, or as many as asked for.
    template <class Visit>
    void extend(const std::vector<uint8_t>& board, size_t cards, std::span<const uint8_t> dead,
                const Visit& visit) const {
        const auto choose = [&](const auto& self, std::vector<uint8_t> now, size_t from) -> void {
            if (now.size() == cards) {
                visit(now);
                return;
            }
            for (size_t i = from; i < deck.cards().size(); ++i) {
                const uint8_t card = deck.cards()[i];
                if (std::ranges::find(dead, card) != dead.end() ||
                    std::ranges::find(now, card) != now.end())
                    continue;
                std::vector<uint8_t> next = now;
                next.push_back(card);
                self(self, next, i + 1);
            }
        };
        choose(choose, board, 0);
    }
    ActionShares shares(int32_t node, const HoleCards& hand,
                        const std::vector<uint8_t>& board) const {
        const auto& at = tree.nodes()[static_cast<size_t>(node)];
        std::vector<uint8_t> cards(hand.begin(), hand.end());
        cards.insert(cards.end(), board.begin(), board.end());
        const HandStrategy& strategy = *strategies[at.player];
        return strategy.shares(node, strategy.classOf(at.player, at.round, cards));
    }

    // What seat 0 wins at a place in the tree, when both play by their strategies.
    double value(int32_t at, const std::array<HoleCards, 2>& hole,
                 const std::vector<uint8_t>& board) const {
        if (at < 0)
            return payoffAt(tree.settlements()[static_cast<size_t>(~at)], 0, hole[0], hole[1],
                            board);
        const auto& node = tree.nodes()[static_cast<size_t>(at)];
        double sum = 0;
        if (board.size() < boardCards(node.round)) {
            double boards = 0;
            const std::array dead{hole[0][0], hole[0][1], hole[1][0], hole[1][1]};
            extend(board, boardCards(node.round), dead, [&](const std::vector<uint8_t>& next) {
                sum += value(at, hole, next);
                ++boards;
            });
            return sum / boards;
        }
        const ActionShares chosen = shares(at, hole[node.player], board);
        for (size_t a = 0; a < chosen.size(); ++a)
            if (chosen[a] > 0)
                sum += chosen[a] * value(node.child[a], hole, board);
        return sum;
    }

    // visit(hole) for every pair of hands, all equally likely; returns how many.
    template <class Visit>
    double forEachPair(const Visit& visit) const {
        double pairs = 0;
        for (size_t i = 0; i < deck.holdings().size(); ++i)
            for (size_t j = 0; j < deck.holdings().size(); ++j) {
                const std::array hole{deck.cardsOf(i), deck.cardsOf(j)};
                if (hole[0][0] == hole[1][0] || hole[0][0] == hole[1][1] ||
                    hole[0][1] == hole[1][0] || hole[0][1] == hole[1][1])
                    continue;
                visit(hole);
                ++pairs;
            }
        return pairs;
    }

    // visit(hand, probability, payoff of seat 0) for everything that can happen.
    using VisitHand = std::function<void(const PlayedHand&, double, double)>;
    void forEachHand(const VisitHand& visit) const {
        double pairs = forEachPair([](const auto&) {});
        forEachPair([&](const std::array<HoleCards, 2>& hole) {
            PlayedHand hand{hole, {}, {}};
            follow(0, hand, 1 / pairs, visit);
        });
    }

    GamePtr game;
    CompiledTree tree;
    PublicDeck deck;
    std::array<std::unique_ptr<HandStrategy>, 2> strategies;

private:
    void follow(int32_t at, PlayedHand& hand, double probability, const VisitHand& visit) const {
        if (at < 0) {
            visit(hand, probability,
                  payoffAt(tree.settlements()[static_cast<size_t>(~at)], 0, hand.hole[0],
                           hand.hole[1], hand.board));
            return;
        }
        const auto& node = tree.nodes()[static_cast<size_t>(at)];
        if (hand.board.size() < boardCards(node.round)) {
            const std::array dead{hand.hole[0][0], hand.hole[0][1], hand.hole[1][0],
                                  hand.hole[1][1]};
            std::vector<std::vector<uint8_t>> boards;
            extend(hand.board, boardCards(node.round), dead,
                   [&](const std::vector<uint8_t>& next) { boards.push_back(next); });
            const std::vector<uint8_t> before = hand.board;
            for (const auto& board : boards) {
                hand.board = board;
                follow(at, hand, probability / static_cast<double>(boards.size()), visit);
            }
            hand.board = before;
            return;
        }
        const ActionShares chosen = shares(at, hand.hole[node.player], hand.board);
        for (size_t a = 0; a < chosen.size(); ++a)
            if (chosen[a] > 0) {
                hand.actions.push_back(static_cast<uint8_t>(a));
                follow(node.child[a], hand, probability * chosen[a], visit);
                hand.actions.pop_back();
            }
    }
};

// An estimate out of any function of a place, both hands and a board; cards to come are gone
// through one by one.
class PlainEstimate : public ValueEstimate {
public:
    // Value of seat 0.
    using Function = std::function<double(int32_t, const std::array<HoleCards, 2>&,
                                          const std::vector<uint8_t>&)>;
    PlainEstimate(const Table& table, Function function)
        : table_(table), function_(std::move(function)) {}

    std::vector<double> rowOf(const View&) const override { return {}; }
    double at(const View& view, const std::vector<double>&, int32_t node,
              size_t holding) const override {
        std::array<HoleCards, 2> hole;
        hole[static_cast<size_t>(view.seat)] = table_.deck.cardsOf(holding);
        hole[static_cast<size_t>(1 - view.seat)] = view.other;
        const std::vector<uint8_t> board(view.board.begin(), view.board.end());
        return (view.seat == 0 ? 1 : -1) * mean(node, hole, board);
    }
    double meanOfDeals(int seat) const override {
        double sum = 0;
        const double pairs = table_.forEachPair(
            [&](const std::array<HoleCards, 2>& hole) { sum += mean(0, hole, {}); });
        return (seat == 0 ? 1 : -1) * sum / pairs;
    }

private:
    double mean(int32_t node, const std::array<HoleCards, 2>& hole,
                const std::vector<uint8_t>& board) const {
        const size_t cards =
            table_.boardCards(table_.tree.nodes()[static_cast<size_t>(node)].round);
        uint64_t key = static_cast<uint64_t>(node);
        for (const HoleCards& hand : hole)
            for (const uint8_t card : hand)
                key = key << 6U | card;
        for (size_t i = 0; i < 3; ++i)
            key = key << 6U | (i < board.size() ? board[i] : 63U);
        if (const auto found = known_.find(key); found != known_.end())
            return found->second;
        double sum = 0;
        double boards = 0;
        const std::array dead{hole[0][0], hole[0][1], hole[1][0], hole[1][1]};
        table_.extend(board, cards, dead, [&](const std::vector<uint8_t>& next) {
            sum += function_(node, hole, next);
            ++boards;
        });
        return known_[key] = sum / boards;
    }

    const Table& table_;
    Function function_;
    mutable std::unordered_map<uint64_t, double> known_;
};

} // namespace tamarin::test
