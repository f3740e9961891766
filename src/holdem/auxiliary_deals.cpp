#include "holdem/auxiliary_deals.h"

#include "abstraction/boards.h"
#include "support/fast_draws.h"

#include <algorithm>
#include <cassert>
#include <cstring>
#include <utility>

namespace tamarin {

namespace {

class LibraryDraws {
public:
    LibraryDraws(uint32_t range, std::minstd_rand0& engine)
        : engine_(engine), distribution_(0, static_cast<int>(range) - 1) {}
    uint32_t next() { return static_cast<uint32_t>(distribution_(engine_)); }
    void store(std::minstd_rand0&) const {}

private:
    std::minstd_rand0& engine_;
    std::uniform_int_distribution<int> distribution_;
};

// body(draws) with the fast form of the library's draws where there is one.
template <class Body>
void withDraws(size_t range, std::minstd_rand0& engine, const Body& body) {
    const auto numbers = static_cast<uint32_t>(range);
    const auto run = [&](auto draws) {
        body(draws);
        draws.store(engine);
    };
    if (FastDraws::matchesLibrary(numbers))
        run(FastDraws(numbers, engine));
    else
        run(LibraryDraws(numbers, engine));
}

template <class Draws>
inline void shuffleFront(uint8_t* deck, size_t count, Draws& draws) {
    for (size_t i = 0; i < count; ++i)
        std::swap(deck[i], deck[draws.next()]);
}

inline CardSet cardSetOf(const uint8_t* cards, size_t count) {
    CardSet set = 0;
    for (size_t i = 0; i < count; ++i)
        set |= cardBit(cards[i]);
    return set;
}

// The cluster of a hand, on its way from memory.
inline const uint8_t* askFor(const ClusterLookup& lookup, const uint8_t* hand) {
    const uint8_t* const entry = lookup.clusters + hand_index_last(lookup.indexer, hand);
    __builtin_prefetch(entry);
    return entry;
}

} // namespace

AuxiliaryTraining::AuxiliaryTraining(AuxiliaryGame& auxiliary, ClusterLookup lookup)
    : auxiliary_(auxiliary), lookup_(lookup) {
    const RoundIndexer indexer(0);
    for (size_t i = 0; i < hands; ++i) {
        [[maybe_unused]] const bool known = hand_unindex(indexer.get(), 0, i, hand_[i]);
        assert(known);
        std::memset(deck_[i], 0, sizeof deck_[i]);
        cardsWithout(hand_[i], 2, deck_[i]);
    }
}

void AuxiliaryTraining::run(unsigned long long iterations) {
    run(iterations, global_urng());
}

void AuxiliaryTraining::run(unsigned long long iterations, std::minstd_rand0& engine) {
    withDraws(deckSize, engine, [&](auto& draws) { run(iterations, draws); });
}

template <class Draws>
void AuxiliaryTraining::run(unsigned long long iterations, Draws& draws) {
    const size_t players = auxiliary_.numPlayers();
    const size_t boardCards = auxiliary_.game().numBoardCards[0];
    const size_t holes = 2 * (players - 1);
    struct Deal {
        const uint8_t* cluster[AuxiliaryGame::maxPlayers];
        uint32_t outcome;
    };
    Deal deals[hands];
    for (unsigned long long it = 0; it < iterations; ++it)
        for (size_t hero = 0; hero < players; ++hero) {
            for (size_t i = 0; i < hands; ++i) {
                uint8_t deck[sizeof deck_[i]];
                std::memcpy(deck, deck_[i], sizeof deck);
                shuffleFront(deck, holes + boardCards, draws);
                uint8_t hand[7] = {};
                std::copy_n(deck + holes, boardCards, hand + 2);
                const CardSet board = cardSetOf(deck + holes, boardCards);
                const uint8_t* next = deck;
                AuxiliaryGame::Ranks ranks = AuxiliaryGame::noRanks;
                for (size_t p = 0; p < players; ++p) {
                    if (p == hero) {
                        std::copy_n(hand_[i], 2, hand);
                    } else {
                        std::copy_n(next, 2, hand);
                        next += 2;
                    }
                    ranks[p] = rankCardSet(board | cardSetOf(hand, 2));
                    deals[i].cluster[p] = askFor(lookup_, hand);
                }
                deals[i].outcome = AuxiliaryGame::outcome(ranks);
            }
            for (const Deal& deal : deals) {
                uint8_t buckets[AuxiliaryGame::maxPlayers];
                for (size_t p = 0; p < players; ++p)
                    buckets[p] = *deal.cluster[p];
                auxiliary_.visit(buckets, deal.outcome);
            }
        }
}

void UtilityFiller::fill(size_t begin, size_t end, double* const* utilities) const {
    fill(begin, end, utilities, global_urng());
}

void UtilityFiller::fill(size_t begin, size_t end, double* const* utilities,
                         std::minstd_rand0& engine) const {
    const Game& game = auxiliary_.game();
    // Deliberately without the hero's own cards in place of one more opponent's.
    const size_t range =
        deckCards - game.numBoardCards[0] - size_t{game.numHoleCards} * (game.numPlayers - 1U);
    withDraws(range, engine, [&](auto& draws) { fill(begin, end, utilities, draws); });
}

template <class Draws>
void UtilityFiller::fill(size_t begin, size_t end, double* const* utilities, Draws& draws) const {
    constexpr size_t batch = 8;
    const size_t players = auxiliary_.numPlayers();
    const size_t boardCards = auxiliary_.game().numBoardCards[0];
    const auto samples = static_cast<size_t>(samplesOfRound(round_));
    struct Deal {
        const uint8_t* cluster[AuxiliaryGame::maxPlayers]; // by seat
        uint32_t outcome;
    };
    Deal deals[batch * 10 * AuxiliaryGame::maxPlayers];
    for (size_t first = begin; first < end; first += batch) {
        const size_t last = std::min(first + batch, end);
        Deal* deal = deals;
        for (size_t i = first; i < last; ++i) {
            uint8_t cards[7];
            [[maybe_unused]] const bool known =
                hand_unindex(lookup_.indexer, lastIndexRound(round_), i, cards);
            assert(known);
            uint8_t left[64] = {};
            cardsWithout(cards, static_cast<int>(2 + boardCards), left);
            const CardSet board = cardSetOf(cards + 2, boardCards);
            const int heroRank = rankCardSet(board | cardSetOf(cards, 2));
            const uint8_t* const heroCluster = lookup_.clusters + static_cast<uint8_t>(i);
            for (size_t sample = 0; sample < samples; ++sample)
                for (size_t hero = 0; hero < players; ++hero, ++deal) {
                    uint8_t deck[sizeof left];
                    std::memcpy(deck, left, sizeof deck);
                    shuffleFront(deck, 2 * players, draws);
                    const uint8_t* next = deck;
                    AuxiliaryGame::Ranks ranks = AuxiliaryGame::noRanks;
                    for (size_t p = 0; p < players; ++p) {
                        if (p == hero) {
                            ranks[p] = heroRank;
                            deal->cluster[p] = heroCluster;
                            continue;
                        }
                        uint8_t hand[7];
                        std::copy_n(next, 2, hand);
                        std::copy_n(cards + 2, boardCards, hand + 2);
                        next += 2;
                        ranks[p] = rankCardSet(board | cardSetOf(hand, 2));
                        deal->cluster[p] = askFor(lookup_, hand);
                    }
                    deal->outcome = AuxiliaryGame::outcome(ranks);
                }
        }
        deal = deals;
        for (size_t i = first; i < last; ++i) {
            double sum[AuxiliaryGame::maxPlayers] = {};
            for (size_t sample = 0; sample < samples; ++sample)
                for (size_t hero = 0; hero < players; ++hero, ++deal) {
                    uint8_t buckets[AuxiliaryGame::maxPlayers];
                    for (size_t p = 0; p < players; ++p)
                        buckets[p] = *deal->cluster[p];
                    if (players == 2) {
                        sum[hero] += values_.ofPair(buckets, deal->outcome)[hero];
                    } else {
                        double seatValues[AuxiliaryGame::maxPlayers];
                        values_.of(buckets, deal->outcome, seatValues);
                        sum[hero] += seatValues[hero];
                    }
                }
            for (size_t p = 0; p < players; ++p)
                utilities[p][i - begin] = sum[p] / static_cast<double>(samples);
        }
    }
}

} // namespace tamarin
