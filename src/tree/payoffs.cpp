#include "tree/payoffs.h"

#include "tree/deck.h"

#include <algorithm>
#include <array>

namespace tamarin {

namespace {

// Four bits a seat: how many seats hold a strictly worse hand.
uint64_t orderCode(const Game& game, const State& state) {
    std::array<int, MAX_PLAYERS> ranks{};
    for (size_t p = 0; p < game.numPlayers; ++p) {
        CardSet cards = 0;
        for (int i = 0; i < game.numHoleCards; ++i)
            cards |= cardBit(state.holeCards[p][i]);
        for (int i = 0; i < boardCardsOf(game); ++i)
            cards |= cardBit(state.boardCards[i]);
        ranks[p] = rankCardSet(cards);
    }
    uint64_t code = 0;
    for (size_t p = 0; p < game.numPlayers; ++p) {
        uint64_t worse = 0;
        for (size_t q = 0; q < game.numPlayers; ++q)
            worse += ranks[q] < ranks[p];
        code = code << 4U | worse;
    }
    return code;
}

size_t strideFor(size_t players) {
    return players <= 2 ? 2 : (players + 3) / 4 * 4;
}

} // namespace

Payoffs::Payoffs(const Game& game, const std::vector<CompiledTree::Settlement>& settlements)
    : game_(game), settlements_(settlements), stride_(strideFor(game.numPlayers)) {}

uint32_t Payoffs::outcomeOf(const State& state) {
    const auto [at, isNew] =
        outcomes_.try_emplace(orderCode(game_, state), static_cast<uint32_t>(tables_.size()));
    if (!isNew)
        return at->second;

    auto table = std::make_unique<double[]>(settlements_.size() * stride_);
    State settled = state;
    settled.finished = 1;
    // A showdown sees the whole board, also when everybody was all-in before the last round.
    settled.round = static_cast<uint8_t>(game_.numRounds - 1);
    for (size_t row = 0; row < settlements_.size(); ++row) {
        std::copy_n(settlements_[row].spent.begin(), MAX_PLAYERS, settled.spent);
        std::copy_n(settlements_[row].folded.begin(), MAX_PLAYERS, settled.playerFolded);
        settled.maxSpent = *std::max_element(settled.spent, settled.spent + game_.numPlayers);
        for (uint8_t p = 0; p < game_.numPlayers; ++p)
            table[row * stride_ + p] = valueOfState(&game_, &settled, p);
    }
    tables_.push_back(std::move(table));
    return at->second;
}

} // namespace tamarin
