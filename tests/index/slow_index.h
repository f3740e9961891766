// The hand index a second time, slowly and from its definition alone: the oracle for hand_index.
//
// Shares no code and no table with it. A hand is renamed in all 24 ways and the canonical one kept;
// configurations are found by trying every split of every round; rank sets and multisets are
// numbered by counting what comes before them.
#pragma once

#include "index/hand_index.h"

#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace tamarin {

class SlowIndexer {
public:
    // cardsPerRound[r] cards in round r; indexes the last round.
    explicit SlowIndexer(std::vector<uint8_t> cardsPerRound);

    uint64_t size() const { return size_; }
    uint64_t index(const uint8_t cards[]) const;

    // Calls visit(index, cards) for every canonical hand in index order. Hands come out of nested
    // loops, none is ranked or unranked.
    void forEachHand(const std::function<void(uint64_t, const std::vector<uint8_t>&)>& visit) const;

private:
    using Words = std::array<uint32_t, 4>;
    using Sets = std::vector<uint32_t>; // rank set of each round

    struct Configuration {
        uint64_t offset;
        uint64_t size;
    };

    std::vector<Sets> contents(uint32_t word) const;
    uint32_t word(const Sets& sets) const;
    uint64_t suitIndex(const Sets& sets) const;
    uint64_t suitSize(uint32_t word) const;
    uint64_t groupRank(const uint64_t sorted[], unsigned m) const;

    std::vector<uint8_t> cardsPerRound_;
    std::map<Words, Configuration> configurations_; // ascending
    uint64_t size_ = 0;

    // numberOfSet_[count][set]: how many rank sets of that many ranks are smaller.
    std::array<std::map<uint32_t, uint64_t>, 14> numberOfSet_;
    // multisets_[m][s]: multisets of m numbers below s.
    std::array<std::vector<uint64_t>, 5> multisets_;
};

// How many hands of this structure there are up to renaming of suits, by counting the hands that
// each of the 24 renamings leaves alone (Burnside's lemma).
uint64_t countClasses(const std::vector<uint8_t>& cardsPerRound);

// How many hands there are at all.
uint64_t countHands(const std::vector<uint8_t>& cardsPerRound);

// An indexer that frees itself, and its structure.
struct OwnedIndexer {
    std::vector<uint8_t> cardsPerRound;
    hand_indexer_t indexer;

    explicit OwnedIndexer(std::vector<uint8_t> structure);
    ~OwnedIndexer() { hand_indexer_free(&indexer); }
    OwnedIndexer(const OwnedIndexer&) = delete;
    OwnedIndexer& operator=(const OwnedIndexer&) = delete;

    unsigned rounds() const { return static_cast<unsigned>(cardsPerRound.size()); }
    unsigned cards() const; // of all rounds
    hand_index_t size() const { return hand_indexer_size(&indexer, rounds() - 1); }
};

std::string show(const std::vector<uint8_t>& cardsPerRound);

} // namespace tamarin
