#include "response/real_value.h"

namespace tamarin {

namespace {

// The play before the flop of both seats.
class BothSeats {
public:
    explicit BothSeats(const MeasuredGame& game) : game_(game), seats_{{{game, 0}, {game, 1}}} {}

    const PreflopResponse& operator[](size_t seat) const { return seats_[seat]; }

    FlopSums one(const FlopValues& values) const {
        FlopSums sums(game_);
        sums.add(values, 1);
        return sums;
    }
    double after(const FlopSums& sums) const {
        double gains = 0;
        for (size_t seat = 0; seat < 2; ++seat)
            gains += seats_[seat].mean(seats_[seat].own(sums.best(static_cast<int>(seat))));
        return gains;
    }
    double chosenBy(const FlopSums& chooser, const FlopSums& sums) const {
        double gains = 0;
        for (size_t seat = 0; seat < 2; ++seat)
            gains += seats_[seat].mean(seats_[seat].chosenBy(chooser.best(static_cast<int>(seat)),
                                                             sums.best(static_cast<int>(seat))));
        return gains;
    }

private:
    const MeasuredGame game_;
    std::array<PreflopResponse, 2> seats_;
};

} // namespace

RealValue realValue(const MeasuredGame& game, const std::vector<PublicBoard>& flops,
                    const ValuesOfFlop& values) {
    FlopSums sums(game);
    for (size_t place = 0; place < flops.size(); ++place)
        sums.add(values(place), flops[place].weight);
    const BothSeats seats(game);
    RealValue result{};
    for (size_t seat = 0; seat < 2; ++seat) {
        const auto number = static_cast<int>(seat);
        const auto value = seats[seat].own(sums.value(number));
        const auto best = seats[seat].best(sums.best(number));
        result.value[seat] = seats[seat].mean(value);
        result.best[seat] = seats[seat].mean(best);
        for (size_t c = 0; c < best.size(); ++c)
            result.gainOfClass[seat].push_back(best[c] - value[c]);
    }
    return result;
}

double gainsAfterFlop(const MeasuredGame& game, const FlopValues& values) {
    const BothSeats seats(game);
    return seats.after(seats.one(values));
}

SampledGains sampledGains(const MeasuredGame& game, const FlopSample& sample,
                          const ValuesOfFlop& values) {
    const BothSeats seats(game);
    FlopSums all(game);
    std::array<FlopSums, 2> halves{FlopSums(game), FlopSums(game)};
    for (const auto& pair : sample.pairs)
        for (size_t half = 0; half < 2; ++half) {
            halves[half].add(values(pair[half]), 1);
            all.add(values(pair[half]), 1);
        }
    std::vector<std::array<double, 2>> after;
    std::vector<std::array<double, 2>> crossed;
    std::vector<std::array<double, 2>> biased;
    for (const auto& pair : sample.pairs) {
        after.emplace_back();
        crossed.emplace_back();
        biased.emplace_back();
        for (size_t half = 0; half < 2; ++half) {
            const FlopSums flop = seats.one(values(pair[half]));
            after.back()[half] = seats.after(flop);
            crossed.back()[half] = seats.chosenBy(halves[1 - half], flop);
            biased.back()[half] = seats.chosenBy(all, flop);
        }
    }
    return {intervalOf(after), intervalOf(crossed), intervalOf(biased)};
}

} // namespace tamarin
