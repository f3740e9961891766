// What every hand of a board wins where the betting of a block's lines ends, all lanes at once.
//
// One seat's hands meet the other's, each weighed with the reach probability of its actions. A hand
// meets those that share no card with it: the sum over all, less those with either card; the hand
// itself has both, was taken off twice, and comes back once. At a showdown the same is read off
// while the hands go by, weakest first.
//
// Neighbours on the river are mostly of one bucket. So what the hands of a bucket win is added up
// in two sums, of every other hand, or each would wait for the one before it.
#pragma once

#include "blueprint/blueprint_sets.h"
#include "blueprint/dealt_board.h"

#include <array>
#include <vector>

namespace tamarin {

// The reach of a seat's hands at an ending: that at the block's beginning, times the factor of the
// hand's bucket.
struct EndingReach {
    const FloatRow* start = nullptr;  // by hand
    const FloatRow* factor = nullptr; // by place of a bucket; null: 1
    const uint16_t* places = nullptr; // of the hands' buckets
    size_t numPlaces = 0;

    bool operator==(const EndingReach&) const = default;
};

// Where what the hands win goes, added to what is there.
struct EndingGain {
    FloatRow* sums;          // by place of a bucket: of its hands
    FloatRow* value;         // by hand: times its own factor
    const FloatRow* factor;  // of the seat's own actions, by place of a bucket; null: 1
    FloatRow::Lanes chips{}; // won or lost
};

class EndingSweep {
public:
    explicit EndingSweep(size_t hands) : before_(hands), gathered_(2 * hands), own_(hands) {}

    // To be called where what is behind the pointers of an EndingReach may be other than it was: of
    // one that comes again the sums are still known. At a fold and a call that follow each other
    // the opponent's reach is the same.
    void forget() { known_ = {}; }

    // The opponent folds (chips above 0), or the seat itself (below 0).
    void fold(const DealtBoard& board, const EndingReach& opponent, const EndingGain& gain);
    void showdown(const DealtBoard& board, const EndingReach& opponent, const EndingGain& gain);

private:
    // Fills the sums over the opponent's hands; false where none comes this far.
    bool gather(const DealtBoard& board, const EndingReach& opponent);
    // gained: by how much what was counted has to be multiplied.
    void begin(const EndingGain& gain, const FloatRow& gained, size_t places);
    void finish(const EndingGain& gain, const FloatRow& gained, size_t places);

    using CardRows = std::array<FloatRow, MAX_SUITS * MAX_RANKS>;

    EndingReach known_{}; // whose sums these are
    bool some_ = false;   // whether a hand comes this far
    FloatRow sum_;
    CardRows with_; // of hands that have a card
    CardRows swept_;
    std::vector<FloatRow> before_;   // of the hands of a group
    std::vector<FloatRow> gathered_; // by place, of the seat's hands
    std::vector<FloatRow> own_;      // by place: its own factor, in chips
};

} // namespace tamarin
