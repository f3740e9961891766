// What it would take to sample all equities, estimated from a measured slice of each round.
#pragma once

#include "abstraction/round_indexers.h"
#include "support/clock.h"

#include <array>
#include <cstdint>
#include <string>

namespace tamarin {

struct SamplingEstimate {
    struct Round {
        uint64_t hands = 0;      // measured
        double handSeconds = 0;  // for one, both numbers of opponents
        double roundSeconds = 0; // for all hands of the round
    };
    std::array<Round, holdemRounds> rounds;
    double seconds() const {
        double sum = 0;
        for (const Round& round : rounds)
            sum += round.roundSeconds;
        return sum;
    }
};

// The processor time of the thread that asks: other work on the machine does not count.
const Clock& processorClock();

// Samples hands spread over each round, as EquityTables::load() does, for about that many seconds a
// round and on one thread. Draws from the process-wide engine. The seven-card table is the
// directory's, or computed.
SamplingEstimate estimateSampling(const std::string& directory, double secondsEach = 0.5,
                                  const Clock& clock = processorClock());

} // namespace tamarin
