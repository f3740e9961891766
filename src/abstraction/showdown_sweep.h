// What the holdings of a board beat, tie with and lose to: whole rows of weights at a time.
//
// The holdings are sorted once; a sweep from the weakest group of equal hands up keeps the sum of
// the weights beaten so far, of all holdings and of those with each card. Of the holdings below it,
// a holding {a, b} meets those that share no card with it: sum - sum of a - sum of b. (The holding
// itself is the only one with both cards, and it is never below itself; among those that it ties
// with, it has been taken off twice and comes back once.)
//
// With whole numbers for weights, or with fractions of so few bits that every sum is exact, the
// sums do not depend on the order of the holdings, so boards that a renaming of the suits turns
// into each other give the same.
#pragma once

#include "abstraction/boards.h"

#include <array>
#include <cassert>
#include <cstddef>
#include <cstdint>

namespace tamarin {

// The holdings of a board by their hands' values, weakest first.
class HoldingOrder {
public:
    struct Holding {
        uint16_t number; // as in boards.h
        uint8_t low;     // the positions of its cards among the cards left
        uint8_t high;
    };

    // values: one for each of numHoldings(cardsLeft) holdings, numbered as in boards.h.
    HoldingOrder(const uint16_t* values, size_t cardsLeft);

    size_t size() const { return size_; }
    size_t cardsLeft() const { return cardsLeft_; }
    const Holding& operator[](size_t place) const { return holdings_[place]; }
    // The end of the group of equal hands that begins at place.
    size_t groupEnd(size_t place) const { return groupEnd_[place]; }

private:
    size_t cardsLeft_;
    size_t size_;
    std::array<Holding, numHoldings(deckCards)> holdings_;
    std::array<uint16_t, numHoldings(deckCards)> groupEnd_; // set where a group begins
};

// A row of weights, added lane by lane, with vector instructions.
template <class Weight, size_t lanes>
struct WeightRow {
    using Lanes [[gnu::vector_size(sizeof(Weight) * lanes)]] = Weight;
    Lanes lane{};

    void add(const WeightRow& other) { lane += other.lane; }
    // This without the holdings that have the one card and those that have the other.
    WeightRow without(const WeightRow& one, const WeightRow& other) const {
        WeightRow row;
        row.lane = lane - one.lane - other.lane;
        return row;
    }
};

// Calls visit(number, beaten, notBetter, all) for every holding: the sums of the rows of the
// holdings that share no card with it and are worse; worse or as good; any. weights: by holding.
// Weights are numbers that Weight adds exactly.
template <class Weight, size_t lanes, class Visit>
void sweepShowdowns(const HoldingOrder& order, const WeightRow<Weight, lanes>* weights,
                    const Visit& visit) {
    using Row = WeightRow<Weight, lanes>;
    struct Sums {
        Row sum;
        std::array<Row, deckCards> with{};
        void add(const HoldingOrder::Holding& holding, const Row& row) {
            sum.add(row);
            with[holding.low].add(row);
            with[holding.high].add(row);
        }
        Row disjoint(const HoldingOrder::Holding& holding) const {
            return sum.without(with[holding.low], with[holding.high]);
        }
    };
    Sums all;
    for (size_t i = 0; i < order.size(); ++i)
        all.add(order[i], weights[order[i].number]);
    Sums below;
    std::array<Row, numHoldings(deckCards)> beaten;
    for (size_t begin = 0; begin < order.size();) {
        const size_t end = order.groupEnd(begin);
        for (size_t i = begin; i < end; ++i)
            beaten[i - begin] = below.disjoint(order[i]);
        for (size_t i = begin; i < end; ++i)
            below.add(order[i], weights[order[i].number]);
        for (size_t i = begin; i < end; ++i) {
            const HoldingOrder::Holding& holding = order[i];
            const Row& own = weights[holding.number];
            Row notBetter = below.disjoint(holding);
            notBetter.add(own);
            Row any = all.disjoint(holding);
            any.add(own);
            visit(holding.number, beaten[i - begin], notBetter, any);
        }
        begin = end;
    }
}

} // namespace tamarin
