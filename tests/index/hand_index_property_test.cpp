// Properties of the hand index over random structures and hands.
#include "index/hand_index.h"
#include "index/slow_index.h"

#include <algorithm>
#include <array>
#include <numeric>
#include <random>
#include <vector>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

namespace tamarin::test {

namespace {

// One to four rounds, at most eight cards in all, so that every structure is built in a moment.
std::vector<uint8_t> drawStructure() {
    const auto rounds = *rc::gen::inRange<size_t>(1, 5);
    std::vector<uint8_t> structure;
    int left = 8;
    uint64_t suitSize = 1; // with all the cards in one suit
    uint64_t ranks = 13;
    for (size_t r = 0; r < rounds; ++r) {
        const auto cards = static_cast<uint8_t>(*rc::gen::inRange(0, std::min(left, 5) + 1));
        structure.push_back(cards);
        left -= cards;
        for (unsigned i = 1; i <= cards; ++i)
            suitSize = suitSize * ranks-- / i;
    }
    RC_PRE(suitSize + 3 < 0x100000);
    return structure;
}

std::vector<uint8_t> drawHand(unsigned cards) {
    std::vector<uint8_t> deck(52);
    std::iota(deck.begin(), deck.end(), uint8_t{0});
    for (size_t i = 0; i < cards; ++i)
        std::swap(deck[i], deck[*rc::gen::inRange<size_t>(i, deck.size())]);
    deck.resize(cards);
    return deck;
}

std::vector<hand_index_t> indicesOf(const OwnedIndexer& owned, const std::vector<uint8_t>& cards) {
    std::vector<hand_index_t> indices(owned.rounds());
    hand_index_all(&owned.indexer, cards.data(), indices.data());
    return indices;
}

using Renaming = std::array<unsigned, 4>;

std::vector<uint8_t> rename(std::vector<uint8_t> cards, const Renaming& renaming) {
    for (uint8_t& card : cards)
        card = static_cast<uint8_t>(card / 4U * 4U + renaming[card % 4U]);
    return cards;
}

// Calls visit(begin, end) for the cards of every round.
template <class Visit>
void forEachRound(const OwnedIndexer& owned, std::vector<uint8_t>& cards, const Visit& visit) {
    auto from = cards.begin();
    for (uint8_t n : owned.cardsPerRound) {
        visit(from, from + n);
        from += n;
    }
}

std::vector<uint8_t> sortRounds(const OwnedIndexer& owned, std::vector<uint8_t> cards) {
    forEachRound(owned, cards, [](auto from, auto to) { std::sort(from, to); });
    return cards;
}

} // namespace

RC_GTEST_PROP(HandIndexProperty, SuitsAndOrderWithinARoundDoNotMatter, ()) {
    const OwnedIndexer owned(drawStructure());
    const auto cards = drawHand(owned.cards());
    const auto indices = indicesOf(owned, cards);
    // One draw for all shuffles, so that a failure shrinks quickly.
    std::mt19937 random(*rc::gen::arbitrary<uint32_t>());
    Renaming renaming = {0, 1, 2, 3};
    do {
        auto disguised = rename(cards, renaming);
        forEachRound(owned, disguised, [&](auto from, auto to) { std::shuffle(from, to, random); });
        RC_ASSERT(indicesOf(owned, disguised) == indices);
    } while (std::next_permutation(renaming.begin(), renaming.end()));
}

RC_GTEST_PROP(HandIndexProperty, IndicesStayBelowTheRoundSize, ()) {
    const OwnedIndexer owned(drawStructure());
    const auto indices = indicesOf(owned, drawHand(owned.cards()));
    for (unsigned round = 0; round < owned.rounds(); ++round)
        RC_ASSERT(indices[round] < hand_indexer_size(&owned.indexer, round));
}

RC_GTEST_PROP(HandIndexProperty, UnindexGivesTheHandUpToARenaming, ()) {
    const OwnedIndexer owned(drawStructure());
    const auto cards = drawHand(owned.cards());
    std::vector<uint8_t> back(cards.size());
    RC_ASSERT(hand_unindex(&owned.indexer, owned.rounds() - 1, indicesOf(owned, cards).back(),
                           back.data()));
    back = sortRounds(owned, back);
    bool found = false;
    Renaming renaming = {0, 1, 2, 3};
    do {
        found = found || sortRounds(owned, rename(cards, renaming)) == back;
    } while (std::next_permutation(renaming.begin(), renaming.end()));
    RC_ASSERT(found);
}

RC_GTEST_PROP(HandIndexProperty, UnindexIsInverseInEveryRound, ()) {
    const OwnedIndexer owned(drawStructure());
    const auto round = *rc::gen::inRange(0U, owned.rounds());
    const hand_index_t size = hand_indexer_size(&owned.indexer, round);
    const auto index = *rc::gen::inRange<hand_index_t>(0, size);
    std::array<uint8_t, 10> cards{};
    RC_ASSERT(hand_unindex(&owned.indexer, round, index, cards.data()));
    hand_indexer_state_t state;
    hand_indexer_state_init(&owned.indexer, &state);
    hand_index_t last = 0;
    for (unsigned r = 0; r <= round; ++r)
        last = hand_index_next_round(&owned.indexer, &cards[owned.indexer.round_start[r]], &state);
    RC_ASSERT(last == index);
}

RC_GTEST_PROP(HandIndexProperty, SizesAreTheNumberOfClasses, ()) {
    const OwnedIndexer owned(drawStructure());
    std::vector<uint8_t> prefix;
    for (unsigned round = 0; round < owned.rounds(); ++round) {
        prefix.push_back(owned.cardsPerRound[round]);
        RC_ASSERT(hand_indexer_size(&owned.indexer, round) == countClasses(prefix));
    }
}

RC_GTEST_PROP(HandIndexProperty, SlowFormAgrees, ()) {
    const OwnedIndexer owned(drawStructure());
    const SlowIndexer slow(owned.cardsPerRound);
    const auto cards = drawHand(owned.cards());
    RC_ASSERT(owned.size() == slow.size());
    RC_ASSERT(hand_index_last(&owned.indexer, cards.data()) == slow.index(cards.data()));
}

} // namespace tamarin::test
