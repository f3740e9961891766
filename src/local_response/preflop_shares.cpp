#include "local_response/preflop_shares.h"

#include "local_response/showdown_counts.h"
#include "support/split_mix.h"

#include <algorithm>
#include <cassert>

namespace tamarin {

namespace {

size_t firstOfClass(const PublicDeck& deck, size_t handClass) {
    size_t holding = 0;
    while (deck.handClassOf(holding) != handClass)
        ++holding;
    return holding;
}

std::vector<uint16_t> holdingsWithout(const PublicDeck& deck, CardSet cards) {
    std::vector<uint16_t> holdings;
    for (size_t h = 0; h < deck.holdings().size(); ++h)
        if ((setOfCards(deck.cardsOf(h)) & cards) == 0)
            holdings.push_back(static_cast<uint16_t>(h));
    return holdings;
}

// The boards of a starting hand, each with numbers of its own.
class DrawnBoards {
public:
    DrawnBoards(const PublicDeck& deck, CardSet without, size_t cards, HandRandom random)
        : cards_(cards), random_(random) {
        for (const uint8_t card : deck.cards())
            if ((cardBit(card) & without) == 0)
                left_.push_back(cardBit(card));
    }
    CardSet next() {
        CardSet board = 0;
        for (size_t i = 0; i < cards_; ++i) {
            const auto more = static_cast<double>(left_.size() - i);
            std::swap(left_[i], left_[i + static_cast<size_t>(random_.next() * more)]);
            board |= left_[i];
        }
        return board;
    }

private:
    size_t cards_;
    HandRandom random_;
    std::vector<CardSet> left_;
};

size_t renamedHolding(const PublicDeck& deck, size_t holding, const SuitRenaming& suits) {
    const auto cards = deck.cardsOf(holding);
    return deck.numberOf(renamed(cards[0], suits), renamed(cards[1], suits));
}

// By holding. Holdings that a renaming turns into each other, which leaves the hole cards as they
// are, share what they met.
std::vector<double> sharesOf(const PublicDeck& deck, size_t hole,
                             const std::vector<uint16_t>& holdings, const ShowdownCounts& counts) {
    std::vector<uint64_t> halfWins(deck.holdings().size());
    std::vector<uint64_t> boards(deck.holdings().size());
    for (const SuitRenaming& suits : deck.empty().symmetry) {
        if (renamedHolding(deck, hole, suits) != hole)
            continue;
        for (size_t i = 0; i < holdings.size(); ++i) {
            const size_t image = renamedHolding(deck, holdings[i], suits);
            halfWins[image] += counts.halfWins[i];
            boards[image] += counts.boards[i];
        }
    }
    std::vector<double> shares(deck.holdings().size());
    // One that had a card on every board, of a very small sample, met nobody.
    for (const uint16_t h : holdings)
        shares[h] = boards[h] == 0
                        ? 0.5
                        : static_cast<double>(halfWins[h]) / (2.0 * static_cast<double>(boards[h]));
    return shares;
}

} // namespace

Result<PreflopShares> PreflopShares::draw(const Game& game, const PublicDeck& deck, uint32_t boards,
                                          uint64_t seed, const Work& work) {
    const size_t boardCards = sumBoardCards(&game, game.numRounds - 1);
    PreflopShares shares(deck);
    std::atomic<bool> stopping{false};
    std::atomic<uint64_t> done{0};
    ParallelErrors errors;
#pragma omp parallel for schedule(dynamic, 1) num_threads(work.threadCount())
    for (size_t c = 0; c < shares.rows_.size(); ++c)
        errors.run([&] {
            if (work.shouldStop())
                stopping = true;
            if (stopping)
                return;
            const auto hole = deck.cardsOf(firstOfClass(deck, c));
            const auto holdings = holdingsWithout(deck, setOfCards(hole));
            DrawnBoards drawn(deck, setOfCards(hole), boardCards, HandRandom(seed, c));
            const auto counts =
                countShowdowns(deck, boardCards, hole, holdings, [&](const auto& visit) {
                    for (uint32_t i = 0; i < boards; ++i)
                        visit(drawn.next());
                });
            shares.rows_[c] = sharesOf(deck, firstOfClass(deck, c), holdings, counts);
            ++done;
            if (omp_get_thread_num() == 0)
                work.report(done, shares.rows_.size());
        });
    errors.rethrow();
    if (stopping)
        return stopped();
    work.report(shares.rows_.size(), shares.rows_.size());
    return shares;
}

void PreflopShares::against(std::span<const uint8_t> hole, std::span<const uint16_t> holdings,
                            std::vector<double>& shares) const {
    const size_t own = deck_->numberOf(hole[0], hole[1]);
    const size_t first = firstOfClass(*deck_, deck_->handClassOf(own));
    const auto renamings = deck_->empty().symmetry;
    const auto suits = std::ranges::find_if(renamings, [&](const SuitRenaming& to) {
        return renamedHolding(*deck_, own, to) == first;
    });
    assert(suits != renamings.end());
    const auto& row = rows_[deck_->handClassOf(own)];
    shares.resize(holdings.size());
    for (size_t i = 0; i < holdings.size(); ++i)
        shares[i] = row[renamedHolding(*deck_, holdings[i], *suits)];
}

} // namespace tamarin
