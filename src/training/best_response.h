// What a strategy is worth to each seat, and what a seat could win by knowing it.
//
// A best response maximises over everything the seat could do with all that it knows: all its hole
// cards, the whole board so far, and the betting. That is more than a key tells (the rank of the
// first hole card), so in a game where keys leave something out, no strategy in those keys need
// reach a gain of 0. A seat does not know the others' cards, and it responds to all of them at
// once, with their strategies fixed.
//
// Gain is best response less value. NashConv is the sum of the gains: 0 in an equilibrium, and with
// two players twice the exploitability.
#pragma once

#include "training/profile.h"

namespace tamarin {

struct ProfileValue {
    std::vector<double> value; // chips a hand, per seat, when all play the profile
    std::vector<double> best;  // against the others' profile
    double gain(size_t seat) const { return best[seat] - value[seat]; }
    double nashConv() const;
};

// The seats' values alone.
std::vector<double> profileValues(const SmallGame& game, const Profile& profile);

// The seat's value of a best response.
double bestResponseValue(const SmallGame& game, const Profile& profile, size_t seat);

// All of it. threads: seats worked at the same time (0: as many as there are cores); the numbers do
// not depend on it.
ProfileValue evaluateProfile(const SmallGame& game, const Profile& profile, int threads = 1);

} // namespace tamarin
