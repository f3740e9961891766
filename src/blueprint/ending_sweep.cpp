#include "blueprint/ending_sweep.h"

#include <algorithm>

namespace tamarin {

namespace {

bool someReach(const EndingReach& reach) {
    if (reach.factor == nullptr)
        return true;
    FloatRow sum;
    for (size_t place = 0; place < reach.numPlaces; ++place)
        sum.add(reach.factor[place]);
    for (size_t lane = 0; lane < lanesInBlock; ++lane)
        if (sum.lanes[lane] != 0)
            return true;
    return false;
}

// Of a hand; computed wherever it is needed, since memory is what takes longest.
class HandReach {
public:
    explicit HandReach(const EndingReach& reach)
        : start_(reach.start), factor_(reach.factor == nullptr ? &one : reach.factor),
          places_(reach.places), step_(reach.factor == nullptr ? 0 : 1) {}
    FloatRow operator()(size_t hand) const {
        return {start_[hand].lanes * factor_[places_[hand] * step_].lanes};
    }

private:
    static constexpr FloatRow one{FloatRow::Lanes{} + 1.0F};

    const FloatRow* start_;
    const FloatRow* factor_;
    const uint16_t* places_;
    size_t step_;
};

} // namespace

bool EndingSweep::gather(const DealtBoard& board, const EndingReach& opponent) {
    if (opponent == known_)
        return some_;
    known_ = opponent;
    some_ = someReach(opponent);
    if (!some_)
        return false;
    FloatRow sum;
    with_.fill({});
    const HandReach reach(opponent);
    const DealtBoard::Hand* const hands = board.hands.data();
    FloatRow* const with = with_.data();
    for (size_t i = 0, size = board.hands.size(); i < size; ++i) {
        const FloatRow::Lanes here = reach(i).lanes;
        sum.lanes += here;
        with[hands[i].low].lanes += here;
        with[hands[i].high].lanes += here;
    }
    sum_ = sum;
    return true;
}

void EndingSweep::begin(const EndingGain& gain, const FloatRow& gained, size_t places) {
    for (size_t place = 0; place < places; ++place) {
        gathered_[place] = gathered_[places + place] = {};
        own_[place].lanes =
            gain.factor == nullptr ? gained.lanes : gain.factor[place].lanes * gained.lanes;
    }
}

void EndingSweep::finish(const EndingGain& gain, const FloatRow& gained, size_t places) {
    for (size_t place = 0; place < places; ++place)
        gain.sums[place].lanes +=
            (gathered_[place].lanes + gathered_[places + place].lanes) * gained.lanes;
}

void EndingSweep::fold(const DealtBoard& board, const EndingReach& opponent,
                       const EndingGain& gain) {
    if (!gather(board, opponent))
        return;
    begin(gain, {gain.chips}, opponent.numPlaces);
    const FloatRow::Lanes sum = sum_.lanes;
    const FloatRow* const with = with_.data();
    const HandReach reach(opponent);
    const FloatRow* const own = own_.data();
    const uint16_t* const places = opponent.places;
    const size_t numPlaces = opponent.numPlaces;
    const DealtBoard::Hand* const hands = board.hands.data();
    FloatRow* const gathered = gathered_.data();
    FloatRow* const value = gain.value;
    for (size_t i = 0, size = board.hands.size(); i < size; ++i) {
        const FloatRow::Lanes met =
            sum - with[hands[i].low].lanes - with[hands[i].high].lanes + reach(i).lanes;
        gathered[(i % 2) * numPlaces + places[i]].lanes += met;
        value[i].lanes += own[places[i]].lanes * met;
    }
    finish(gain, {gain.chips}, opponent.numPlaces);
}

// What is beaten less what is lost to, of the hands that share no card with a hand, is twice the
// mean of two readings of (weaker hands - stronger ones): before the hand's group goes by, and
// after it. The sums begin at minus all and gain twice what goes by. The hand itself is taken off
// twice too often at the one reading, and too seldom at the other.
void EndingSweep::showdown(const DealtBoard& board, const EndingReach& opponent,
                           const EndingGain& gain) {
    if (!gather(board, opponent))
        return;
    const FloatRow::Lanes half = gain.chips * 0.5F;
    begin(gain, {half}, opponent.numPlaces);
    FloatRow::Lanes sum = -sum_.lanes;
    FloatRow* const with = swept_.data();
    for (size_t card = 0; card < with_.size(); ++card)
        with[card].lanes = -with_[card].lanes;
    const HandReach reach(opponent);
    const FloatRow* const own = own_.data();
    const uint16_t* const places = opponent.places;
    const size_t numPlaces = opponent.numPlaces;
    const DealtBoard::Hand* const hands = board.hands.data();
    FloatRow* const before = before_.data();
    FloatRow* const gathered = gathered_.data();
    FloatRow* const value = gain.value;
    size_t from = 0;
    for (const size_t to : board.groupEnds) {
        for (size_t i = from; i < to; ++i)
            before[i - from].lanes = sum - with[hands[i].low].lanes - with[hands[i].high].lanes;
        for (size_t i = from; i < to; ++i) {
            const FloatRow::Lanes here = reach(i).lanes;
            const FloatRow::Lanes twice = here + here;
            sum += twice;
            with[hands[i].low].lanes += twice;
            with[hands[i].high].lanes += twice;
        }
        for (size_t i = from; i < to; ++i) {
            const FloatRow::Lanes won = before[i - from].lanes + (sum - with[hands[i].low].lanes -
                                                                  with[hands[i].high].lanes);
            gathered[(i % 2) * numPlaces + places[i]].lanes += won;
            value[i].lanes += own[places[i]].lanes * won;
        }
        from = to;
    }
    finish(gain, {half}, opponent.numPlaces);
}

} // namespace tamarin
