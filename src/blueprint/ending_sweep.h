// What every hand of a board wins where the betting of a block's lines ends, all lanes at once.
//
// One seat's hands meet the other's, each weighed with the reach probability of its actions. A hand
// meets those that share no card with it: the sum over all, less those with either card; the hand
// itself has both, was taken off twice, and comes back once. At a showdown the same is read off
// while the hands go by, weakest first.
#pragma once

#include "blueprint/blueprint_sets.h"
#include "blueprint/dealt_board.h"

#include <array>
#include <vector>

namespace tamarin {

// The reach of a seat's hands at an ending: that at the block's beginning, times the factor of the
// hand's bucket.
struct EndingReach {
    const FloatRow* start;  // by hand
    const FloatRow* factor; // by place of a bucket; null: 1
    const uint16_t* places; // of the hands' buckets
    size_t numPlaces;
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
    explicit EndingSweep(size_t hands)
        : reach_(hands), before_(hands), gathered_(hands), own_(hands) {}

    // The opponent folds (chips above 0), or the seat itself (below 0).
    void fold(const DealtBoard& board, const EndingReach& opponent, const EndingGain& gain);
    void showdown(const DealtBoard& board, const EndingReach& opponent, const EndingGain& gain);

private:
    // Fills reach_ and the sums over it; false where no hand comes this far.
    bool gather(const DealtBoard& board, const EndingReach& opponent);
    // gained: by how much what was counted has to be multiplied.
    void begin(const EndingGain& gain, FloatRow::Lanes gained, size_t places);
    void finish(const EndingGain& gain, FloatRow::Lanes gained, size_t places);

    FloatRow sum_;
    std::array<FloatRow, MAX_SUITS * MAX_RANKS> with_; // that have a card
    std::vector<FloatRow> reach_;                      // by hand
    std::vector<FloatRow> before_;                     // of the hands of a group
    std::vector<FloatRow> gathered_;                   // by place, of the seat's hands
    std::vector<FloatRow> own_;                        // by place: its own factor, in chips
};

} // namespace tamarin
