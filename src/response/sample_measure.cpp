#include "response/sample_measure.h"

#include <cassert>
#include <optional>
#include <utility>

namespace tamarin {

Result<SampleMeasure> SampleMeasure::of(const Game& game, const CompiledTree& tree, size_t flops,
                                        uint64_t seed) {
    assert(flops > 0 && flops % 2 == 0);
    auto rounds = BettingRounds::of(game, tree);
    if (!rounds)
        return Error{rounds.error()};
    SampleMeasure made(game, tree, std::move(*rounds));
    made.flops_ = made.deck_.extend(made.deck_.empty(), game.numBoardCards[1]);
    made.sample_ = drawFlops(made.flops_, flops, seed);
    return made;
}

Result<SampledGains> SampleMeasure::measure(const HandStrategy& strategy, const Work& work) const {
    const MeasuredGame game{*game_, *tree_, rounds_, deck_, strategy};
    const FlopResponse response(game);
    std::vector<std::optional<FlopValues>> values(flops_.size());
    const std::vector<size_t> places = sample_.distinct();
    Work each = work;
    each.progress = nullptr;
    for (size_t i = 0; i < places.size(); ++i) {
        work.report(i, places.size());
        if (work.shouldStop()) // games of two rounds ask nowhere else
            return stopped();
        auto found = response.on(flops_[places[i]], each);
        if (!found)
            return Error{found.error()};
        values[places[i]] = std::move(*found);
    }
    work.report(places.size(), places.size());
    return sampledGains(game, sample_,
                        [&](size_t place) -> const FlopValues& { return *values[place]; });
}

} // namespace tamarin
