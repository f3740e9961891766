#include "eval/range_sweep.h"

#include "eval/rank_masks.h"
#include "support/choose.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cassert>
#include <map>
#include <utility>

namespace tamarin {

namespace {

constexpr uint8_t ownBit = 1;
constexpr uint8_t firstBit = 2;
constexpr uint8_t secondBit = 4;
constexpr size_t columns = 64; // the 52 cards, and room for whole vectors

// The renamings of suits that leave the board and every range as they are.
std::vector<SuitOrder> renamingsOf(std::span<const HandRange> ranges, CardSet board) {
    const auto leaves = [](const HandRange& range, const SuitOrder& order) {
        return std::ranges::all_of(range.hands, [&](CardSet hand) {
            return std::ranges::binary_search(range.hands, renameSuits(hand, order));
        });
    };
    return suitOrders([&](const SuitOrder& order) {
        return renameSuits(board, order) == board &&
               std::ranges::all_of(ranges,
                                   [&](const HandRange& range) { return leaves(range, order); });
    });
}

// Ahead of everything that looks at the first of them.
std::span<const HandRange> twoOrThree(std::span<const HandRange> ranges) {
    assert(ranges.size() == 2 || ranges.size() == 3);
    return ranges;
}

// Calls visit(cards) for every set of so many of the candidates.
template <class Visit>
void forEachSubset(CardSet candidates, int size, CardSet chosen, const Visit& visit) {
    if (size == 0) {
        visit(chosen);
        return;
    }
    for (; candidates != 0; candidates &= candidates - 1) {
        const CardSet card = candidates & (~candidates + 1);
        forEachSubset(candidates & ~card, size - 1, chosen | card, visit);
    }
}

// A hand on a board.
struct Ranked {
    uint16_t value;
    uint8_t low;
    uint8_t high;
    uint8_t members;
};

// By value, weakest first: by the lower byte, then by the upper one.
void sortByValue(std::vector<Ranked>& hands, std::vector<Ranked>& scratch) {
    std::array<std::array<uint32_t, 256>, 2> ends{};
    for (const Ranked& hand : hands) {
        ++ends[0][hand.value & 0xffU];
        ++ends[1][hand.value >> 8U];
    }
    for (auto& of : ends) {
        uint32_t sum = 0;
        for (uint32_t& end : of)
            sum += std::exchange(end, sum);
    }
    scratch.resize(hands.size());
    for (const Ranked& hand : hands)
        scratch[ends[0][hand.value & 0xffU]++] = hand;
    for (const Ranked& hand : scratch)
        hands[ends[1][hand.value >> 8U]++] = hand;
}

// How many hands there are, and how many of them contain each card.
struct HandCount {
    int32_t hands = 0;
    alignas(64) std::array<int16_t, columns> with{};

    void add(const Ranked& hand) {
        ++hands;
        ++with[hand.low];
        ++with[hand.high];
    }
    // Those without a card of the hand, which may be one of them.
    int32_t apartFrom(const Ranked& hand, bool isOneOfThem) const {
        return hands - with[hand.low] - with[hand.high] + (isOneOfThem ? 1 : 0);
    }
};

// The hands of one opponent: those that are weaker than the ones at hand, and those not stronger.
struct Opponent {
    HandCount weaker;
    HandCount notStronger;
};

} // namespace

// What a hand meets on one board, where the opponent is one: to be told of all hands in ascending
// order of value, those of equal value first by reach, then by outcomes, then by pass.
class RangeSweep::OneOpponent {
public:
    explicit OneOpponent(bool /*alike*/) {}

    void begin(const std::vector<Ranked>& /*hands*/) { opponent_ = {}; }
    void reach(const Ranked& hand) {
        if ((hand.members & firstBit) != 0)
            opponent_.notStronger.add(hand);
    }
    void outcomes(const Ranked& hand, std::array<uint64_t, 3>& best) const {
        const bool held = (hand.members & firstBit) != 0;
        const int32_t won = opponent_.weaker.apartFrom(hand, false);
        best[0] += static_cast<uint64_t>(won);
        best[1] += static_cast<uint64_t>(opponent_.notStronger.apartFrom(hand, held) - won);
    }
    void pass(const Ranked& hand) {
        if ((hand.members & firstBit) != 0)
            opponent_.weaker.add(hand);
    }

private:
    Opponent opponent_;
};

// The same for two opponents. Which of an opponent's hands with a card of ours are weaker is not
// kept, but compared: a row of values for each card.
class RangeSweep::TwoOpponents {
public:
    explicit TwoOpponents(bool alike) : alike_(alike) {}

    void begin(const std::vector<Ranked>& hands) {
        for (size_t i = 0; i < (alike_ ? 1U : 2U); ++i) {
            opponents_[i] = {};
            for (auto& row : values_[i])
                row.fill(none);
            for (const Ranked& hand : hands)
                if ((hand.members & (firstBit << i)) != 0)
                    values_[i][hand.low][hand.high] = values_[i][hand.high][hand.low] = hand.value;
        }
        both_ = {};
    }
    void reach(const Ranked& hand) { add(hand, &Opponent::notStronger); }
    void pass(const Ranked& hand) { add(hand, &Opponent::weaker); }

    void outcomes(const Ranked& hand, std::array<uint64_t, 3>& best) const {
        const Pairs pairs = alike_ ? pairsOf<true>(hand) : pairsOf<false>(hand);
        best[0] += static_cast<uint64_t>(pairs.won);
        best[1] += static_cast<uint64_t>(pairs.wonByFirst + pairs.wonBySecond - 2 * pairs.won);
        best[2] +=
            static_cast<uint64_t>(pairs.notLost - pairs.wonByFirst - pairs.wonBySecond + pairs.won);
    }

private:
    static constexpr uint16_t none = 0xffff; // no hand of the range: above every value

    // Pairs of hands, one of each opponent, without a card in common: in which both are weaker,
    // the first is and the second is not stronger, the other way round, and neither is stronger.
    struct Pairs {
        int32_t won = 0;
        int32_t wonByFirst = 0;
        int32_t wonBySecond = 0;
        int32_t notLost = 0;
    };

    void add(const Ranked& hand, HandCount Opponent::*set) {
        if ((hand.members & firstBit) != 0)
            (opponents_[0].*set).add(hand);
        if (alike_)
            return;
        if ((hand.members & secondBit) != 0)
            (opponents_[1].*set).add(hand);
        if ((hand.members & (firstBit | secondBit)) == (firstBit | secondBit))
            (both_.*set).add(hand);
    }

    template <bool alike>
    Pairs pairsOf(const Ranked& hand) const {
        constexpr size_t second = alike ? 0 : 1;
        Pairs shared = sharedCards<alike>(hand);
        const bool held[2] = {(hand.members & firstBit) != 0, (hand.members & secondBit) != 0};
        const auto weaker = [&](size_t i) { return opponents_[i].weaker.apartFrom(hand, false); };
        const auto notStronger = [&](size_t i) {
            return opponents_[i].notStronger.apartFrom(hand, held[i]);
        };
        const Opponent& both = alike ? opponents_[0] : both_;
        const int32_t same = both.weaker.apartFrom(hand, false);
        const int32_t sameOrTied = both.notStronger.apartFrom(hand, held[0] && held[second]);
        return {weaker(0) * weaker(second) - shared.won + same,
                weaker(0) * notStronger(second) - shared.wonByFirst + same,
                notStronger(0) * weaker(second) - shared.wonBySecond + same,
                notStronger(0) * notStronger(second) - shared.notLost + sameOrTied};
    }

    // The same for pairs with a card in common, once for each such card.
    template <bool alike>
    Pairs sharedCards(const Ranked& hand) const {
        constexpr size_t second = alike ? 0 : 1;
        const uint16_t own = hand.value;
        const int16_t* const weaker[2] = {opponents_[0].weaker.with.data(),
                                          opponents_[second].weaker.with.data()};
        const int16_t* const notStronger[2] = {opponents_[0].notStronger.with.data(),
                                               opponents_[second].notStronger.with.data()};
        const uint16_t* const low[2] = {values_[0][hand.low].data(),
                                        values_[second][hand.low].data()};
        const uint16_t* const high[2] = {values_[0][hand.high].data(),
                                         values_[second][hand.high].data()};
        const auto weakerWith = [&](size_t i, size_t card) {
            return static_cast<int16_t>(weaker[i][card] - (low[i][card] < own) -
                                        (high[i][card] < own));
        };
        const auto notStrongerWith = [&](size_t i, size_t card) {
            return static_cast<int16_t>(notStronger[i][card] - (low[i][card] <= own) -
                                        (high[i][card] <= own));
        };
        Pairs sum;
        const auto addCard = [&](size_t card, int32_t sign) {
            const int32_t won[2] = {weakerWith(0, card), weakerWith(second, card)};
            const int32_t notLost[2] = {notStrongerWith(0, card), notStrongerWith(second, card)};
            sum.won += sign * won[0] * won[1];
            sum.wonByFirst += sign * won[0] * notLost[1];
            if constexpr (!alike)
                sum.wonBySecond += sign * notLost[0] * won[1];
            sum.notLost += sign * notLost[0] * notLost[1];
        };
        for (size_t card = 0; card < columns; ++card)
            addCard(card, 1);
        addCard(hand.low, -1);
        addCard(hand.high, -1);
        if constexpr (alike)
            sum.wonBySecond = sum.wonByFirst;
        return sum;
    }

    bool alike_;
    std::array<Opponent, 2> opponents_;
    Opponent both_; // hands that either may hold
    alignas(64) std::array<std::array<std::array<uint16_t, columns>, 52>, 2> values_;
};

RangeSweep::RangeSweep(std::span<const HandRange> ranges, CardSet board)
    : board_(board), free_(allCards & ~board), missing_(5 - std::popcount(board)),
      twoOpponents_(twoOrThree(ranges).size() == 3),
      alike_(twoOpponents_ && ranges[1].hands == ranges[2].hands), own_(ranges[0].hands.size()),
      renamings_(renamingsOf(ranges, board)) {
    std::map<CardSet, uint8_t> members;
    for (size_t i = 0; i < ranges.size(); ++i) {
        for (const CardSet hand : ranges[i].hands)
            if ((hand & board) == 0)
                members[hand] = static_cast<uint8_t>(members[hand] | 1U << i);
        if (ranges[i].hands.size() == 1)
            free_ &= ~ranges[i].hands[0];
    }
    for (const auto& [hand, of] : members) {
        std::array<uint8_t, 2> cards;
        size_t count = 0;
        for (uint8_t card = 0; card < 52; ++card)
            if ((hand & cardBit(card)) != 0)
                cards[count++] = card;
        assert(count == 2);
        holdings_.push_back({keyOfCards(hand), cards[0], cards[1], of});
    }
    const uint64_t combined =
        twoOpponents_ ? combinations<TwoOpponents>() : combinations<OneOpponent>();
    const auto unknown =
        static_cast<uint64_t>(52 - std::popcount(board)) - 2 * static_cast<uint64_t>(ranges.size());
    deals_ = combined * choose(unknown, static_cast<uint64_t>(missing_));
}

// Every hand of another one is weaker here.
template <class Opponents>
uint64_t RangeSweep::combinations() const {
    std::vector<Ranked> hands;
    for (const Holding& holding : holdings_)
        hands.push_back({0, holding.low, holding.high, holding.members});
    Opponents opponents(alike_);
    opponents.begin(hands);
    for (const Ranked& hand : hands)
        opponents.reach(hand);
    std::array<uint64_t, 3> best{};
    for (const Ranked& hand : hands)
        if ((hand.members & ownBit) != 0)
            opponents.outcomes(hand, best);
    return best[0] + best[1] + best[2];
}

size_t RangeSweep::listBoards() {
    boards_.clear();
    forEachSubset(free_, missing_, 0, [&](CardSet cards) {
        uint32_t same = 0;
        for (const auto& renaming : renamings_) {
            const CardSet renamed = renameSuits(cards, renaming);
            if (renamed < cards)
                return;
            same += renamed == cards;
        }
        boards_.push_back({board_ | cards, static_cast<uint32_t>(renamings_.size() / same)});
    });
    return boards_.size();
}

RangeSweep::Best RangeSweep::count(size_t first, size_t last) const {
    assert(first <= last && last <= boards_.size());
    return twoOpponents_ ? countWith<TwoOpponents>(first, last)
                         : countWith<OneOpponent>(first, last);
}

template <class Opponents>
RangeSweep::Best RangeSweep::countWith(size_t first, size_t last) const {
    const HandEvaluator& evaluator = HandEvaluator::shared();
    Opponents opponents(alike_);
    std::vector<Ranked> hands;
    std::vector<Ranked> scratch;
    Best all{};
    for (size_t number = first; number < last; ++number) {
        const SweptBoard& board = boards_[number];
        const HandKey five = keyOfCards(board.cards);
        hands.clear();
        for (const Holding& holding : holdings_)
            if ((holding.key.cards & board.cards) == 0)
                hands.push_back({static_cast<uint16_t>(evaluator.value<7>(five + holding.key)),
                                 holding.low, holding.high, holding.members});
        sortByValue(hands, scratch);
        opponents.begin(hands);
        std::array<uint64_t, 3> best{};
        for (size_t i = 0; i < hands.size();) {
            size_t end = i;
            while (end < hands.size() && hands[end].value == hands[i].value)
                opponents.reach(hands[end++]);
            for (size_t k = i; k < end; ++k)
                if ((hands[k].members & ownBit) != 0)
                    opponents.outcomes(hands[k], best);
            for (; i < end; ++i)
                opponents.pass(hands[i]);
        }
        for (size_t k = 0; k < best.size(); ++k)
            all[k] += board.times * best[k];
    }
    return all;
}

// From measurements, with some slack (EPYC Milan, one core of it).
double RangeSweep::seconds() const {
    const double boards = static_cast<double>(choose(static_cast<uint64_t>(std::popcount(free_)),
                                                     static_cast<uint64_t>(missing_))) /
                          static_cast<double>(renamings_.size());
    const auto own = static_cast<double>(own_);
    const auto all = static_cast<double>(holdings_.size());
    return twoOpponents_ ? boards * (1.5e-6 + all * 24e-9 + own * (alike_ ? 35e-9 : 60e-9))
                         : boards * (1e-6 + all * 17e-9 + own * 5e-9);
}

} // namespace tamarin
