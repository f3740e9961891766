#include "table_builder/sampling_estimate.h"

#include "eval/hand_table.h"
#include "eval/seven_card_table.h"
#include "support/file.h"
#include "table_builder/table_plan.h"

#include <cassert>
#include <chrono>
#include <time.h>

namespace tamarin {

namespace {

struct ProcessorClock : Clock {
    TimePoint now() const override {
        timespec time = {};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
        return TimePoint(std::chrono::seconds(time.tv_sec) +
                         std::chrono::nanoseconds(time.tv_nsec));
    }
};

} // namespace

const Clock& processorClock() {
    static const ProcessorClock clock;
    return clock;
}

SamplingEstimate estimateSampling(const std::string& directory, double secondsEach,
                                  const Clock& clock) {
    using Evaluate = double (*)(unsigned char*, unsigned int, int*);
    constexpr std::array<Evaluate, holdemRounds> evaluators{evaluateHand2, evaluateHand5,
                                                            evaluateHand6, evaluateHand7};
    auto there = SevenCardTable::open(inDirectory(directory, sevenCardTablePath));
    const SevenCardTable table = there ? std::move(*there) : SevenCardTable::generate();
    int* const entries = const_cast<int*>(table.data()); // only read

    SamplingEstimate estimate;
    for (int r = 0; r < holdemRounds; ++r) {
        const auto round = static_cast<size_t>(r);
        const RoundIndexer indexer(r);
        SamplingEstimate::Round& measured = estimate.rounds[round];
        const TimePoint start = clock.now();
        double passed = 0;
        // A step without a common divisor with the size comes to all parts of the table alike.
        constexpr uint64_t step = 7919;
        for (uint64_t index = 0; passed < secondsEach; index += step) {
            uint8_t hand[7];
            [[maybe_unused]] const bool known =
                hand_unindex(indexer.get(), lastIndexRound(r), index % roundSizes[round], hand);
            assert(known);
            for (unsigned players = 2; players <= 3; ++players)
                evaluators[round](hand, players, entries);
            ++measured.hands;
            passed = seconds(clock.now() - start);
        }
        measured.handSeconds = passed / static_cast<double>(measured.hands);
        measured.roundSeconds = measured.handSeconds * static_cast<double>(roundSizes[round]);
    }
    return estimate;
}

} // namespace tamarin
