#include "analysis/deal_value.h"

#include "support/split_mix.h"

#include <algorithm>
#include <utility>

namespace tamarin {

namespace {

class DealWalk {
public:
    DealWalk(const Game& game, const CompiledTree& tree,
             const std::array<const HandStrategy*, 2>& strategies,
             const std::array<HoleCards, 2>& hole, std::span<const uint8_t> board)
        : tree_(tree), strategies_(strategies) {
        for (size_t seat = 0; seat < 2; ++seat) {
            std::vector<uint8_t> cards(hole[seat].begin(), hole[seat].end());
            for (int round = 0; round < game.numRounds; ++round) {
                const size_t shown = sumBoardCards(&game, round);
                cards.resize(2);
                cards.insert(cards.end(), board.begin(),
                             board.begin() + static_cast<std::ptrdiff_t>(shown));
                classes_[seat][static_cast<size_t>(round)] =
                    strategies[seat]->classOf(static_cast<int>(seat), round, cards);
            }
        }
        CompiledTree::Settlement showdown{};
        showdown.spent = {1, 1};
        outcome_ = payoffAt(showdown, 0, hole[0], hole[1], board);
    }

    double at(int32_t place) const {
        if (place < 0)
            return settled(tree_.settlements()[static_cast<size_t>(~place)]);
        const auto& node = tree_.nodes()[static_cast<size_t>(place)];
        const ActionShares shares =
            strategies_[node.player]->shares(place, classes_[node.player][node.round]);
        double sum = 0;
        for (size_t a = 0; a < shares.size(); ++a)
            if (shares[a] > 0)
                sum += shares[a] * at(node.child[a]);
        return sum;
    }

private:
    double settled(const CompiledTree::Settlement& end) const {
        const int stake = std::min(end.spent[0], end.spent[1]);
        if (end.folded[0] != 0)
            return -stake;
        return end.folded[1] != 0 ? stake : outcome_ * stake;
    }

    const CompiledTree& tree_;
    const std::array<const HandStrategy*, 2>& strategies_;
    std::array<std::array<uint16_t, MAX_ROUNDS>, 2> classes_{};
    double outcome_; // of seat 0 at a showdown: 1, 0 or -1
};

} // namespace

double dealValue(const Game& game, const CompiledTree& tree,
                 const std::array<const HandStrategy*, 2>& strategies,
                 const std::array<HoleCards, 2>& hole, std::span<const uint8_t> board) {
    return DealWalk(game, tree, strategies, hole, board).at(0);
}

std::vector<uint8_t> wholeBoard(const Game& game, const PublicDeck& deck, const PlayedHand& hand) {
    std::vector<uint8_t> order = deck.cards();
    uint64_t seed = 0;
    for (const HoleCards& hole : hand.hole)
        for (const uint8_t card : hole)
            seed = mixBits(seed + card + 1);
    SplitMix random(seed);
    for (size_t i = order.size(); i > 1; --i)
        std::swap(order[i - 1], order[random.below(static_cast<uint32_t>(i))]);
    std::vector<uint8_t> board = hand.board;
    const size_t whole = sumBoardCards(&game, game.numRounds - 1);
    for (size_t i = 0; board.size() < whole; ++i) {
        const bool taken = std::ranges::find(board, order[i]) != board.end() ||
                           std::ranges::find(hand.hole[0], order[i]) != hand.hole[0].end() ||
                           std::ranges::find(hand.hole[1], order[i]) != hand.hole[1].end();
        if (!taken)
            board.push_back(order[i]);
    }
    return board;
}

} // namespace tamarin
