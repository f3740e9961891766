// What a bet of any size is taken for in a tree that has but a few: the randomised pseudo-harmonic
// mapping (Ganzfried and Sandholm 2013).
#pragma once

namespace tamarin {

// The probability of taking a bet between two sizes for the smaller one, all in pots (of the pot
// after a call) and smaller <= bet <= larger, smaller < larger; a check or a call is of size 0.
// Taken at random, there is no size just below which a bet is worth more than it costs.
inline double shareOfSmaller(double smaller, double larger, double bet) {
    return (larger - bet) * (1 + smaller) / ((larger - smaller) * (1 + bet));
}

} // namespace tamarin
