#include "response/gain_parts.h"

namespace tamarin {

namespace {

using BySeat = std::array<double, 2>;

// The parts as some flops have them.
struct Numbers {
    struct First {
        double gain = 0;
        double hands = 0;
    };
    std::vector<BySeat> rounds;
    std::vector<First> first;
    std::vector<BySeat> hands;
    BySeat whole{};
};

size_t roundsOf(const MeasuredGame& game) {
    return static_cast<size_t>(game.rounds.last()) + 1;
}

// Of the rounds after the flop's.
bool haveLater(const MeasuredGame& game, const FlopSums& sums) {
    return sums.laterRounds() + 2 == roundsOf(game);
}

class Parts {
public:
    // byRound: whether all flops have later values.
    Parts(const MeasuredGame& game, bool byRound)
        : game_(game), byRound_(byRound), seats_{{{game, 0}, {game, 1}}} {
        for (int seat = 0; seat < 2; ++seat)
            for (const auto& decision : of(seat).firstDecisions())
                for (size_t a = 0; a < numAbstractedActions; ++a)
                    if (allows(decision.node, a))
                        first_.push_back(
                            {seat, decision.node, a, 0, ownHands(seat, decision, a), {}});
    }

    // With the play before the flop that is best where chooser holds, and the values of flops.
    Numbers with(const FlopSums& chooser, const FlopSums& flops) const {
        Numbers numbers;
        numbers.hands.resize(game_.deck.numHandClasses());
        numbers.rounds.resize(byRound_ ? rounds() : 0);
        for (int seat = 0; seat < 2; ++seat) {
            const LineValues chosen = chooser.best(seat);
            const LineValues best = flops.best(seat);
            const LineValues value = flops.value(seat);
            addHands(seat, of(seat).chosenBy(chosen, best), of(seat).own(value), numbers);
            addFirst(seat, chosen, best, value, numbers);
            if (byRound_)
                addRounds(seat, flops, numbers);
        }
        return numbers;
    }

    // measure(of): the interval of something of the numbers.
    template <class Measure>
    GainParts gather(const std::vector<const Numbers*>& all, const Measure& measure) const {
        const Numbers& model = *all.front();
        const auto mean = [&](const auto& of) {
            double sum = 0;
            for (const Numbers* const each : all)
                sum += of(*each);
            return sum / static_cast<double>(all.size());
        };
        const auto part = [&](const auto& of) {
            return GainParts::Part{measure([&](const Numbers& n) { return of(n)[0] + of(n)[1]; }),
                                   {mean([&](const Numbers& n) { return of(n)[0]; }),
                                    mean([&](const Numbers& n) { return of(n)[1]; })}};
        };
        GainParts parts;
        parts.whole = part([](const Numbers& n) { return n.whole; });
        for (size_t r = 0; r < model.rounds.size(); ++r)
            parts.rounds.push_back(part([&](const Numbers& n) { return n.rounds[r]; }));
        parts.first = first_;
        for (size_t i = 0; i < first_.size(); ++i) {
            parts.first[i].hands = mean([&](const Numbers& n) { return n.first[i].hands; });
            parts.first[i].gain = measure([&](const Numbers& n) { return n.first[i].gain; });
        }
        for (size_t c = 0; c < model.hands.size(); ++c)
            parts.hands.push_back(
                {c, dealt(c), part([&](const Numbers& n) { return n.hands[c]; })});
        return parts;
    }

private:
    const PreflopResponse& of(int seat) const { return seats_[static_cast<size_t>(seat)]; }
    size_t rounds() const { return roundsOf(game_); }
    bool allows(int32_t node, size_t action) const {
        return game_.tree.nodes()[static_cast<size_t>(node)].child[action] != CompiledTree::noChild;
    }
    double dealt(size_t handClass) const {
        return game_.deck.handClassSize(handClass) /
               static_cast<double>(game_.deck.holdings().size());
    }
    double ownHands(int seat, const PreflopResponse::FirstDecision& decision, size_t action) const {
        double sum = 0;
        for (size_t c = 0; c < game_.deck.numHandClasses(); ++c)
            sum += dealt(c) * decision.reached[c] * of(seat).ownShare(decision, c, action);
        return sum;
    }

    void addHands(int seat, const std::vector<double>& best, const std::vector<double>& value,
                  Numbers& numbers) const {
        const auto at = static_cast<size_t>(seat);
        for (size_t c = 0; c < best.size(); ++c)
            numbers.hands[c][at] = best[c] - value[c];
        numbers.whole[at] = of(seat).mean(best) - of(seat).mean(value);
    }

    void addFirst(int seat, const LineValues& chosen, const LineValues& best,
                  const LineValues& value, Numbers& numbers) const {
        for (const auto& decision : of(seat).firstDecisions()) {
            std::array<size_t, numAbstractedActions> place{};
            for (size_t a = 0; a < numAbstractedActions; ++a)
                if (allows(decision.node, a)) {
                    place[a] = numbers.first.size();
                    numbers.first.emplace_back();
                }
            for (size_t c = 0; c < game_.deck.numHandClasses(); ++c) {
                const auto taken = of(seat).chosenAt(decision, c, chosen, best);
                Numbers::First& first = numbers.first[place[taken.action]];
                first.hands += dealt(c) * decision.reached[c];
                first.gain += dealt(c) * (taken.value - of(seat).ownAt(decision, c, value));
            }
        }
    }

    // From the last round up, what each adds.
    void addRounds(int seat, const FlopSums& flops, Numbers& numbers) const {
        const auto at = static_cast<size_t>(seat);
        const auto valueOf = [&](const LineValues& lines) {
            return of(seat).mean(of(seat).own(lines));
        };
        const double own = valueOf(flops.value(seat));
        double sofar = own;
        for (size_t round = rounds() - 1; round > 0; --round) {
            const double from =
                valueOf(round == 1 ? flops.best(seat) : flops.later(seat, round - 2));
            numbers.rounds[round][at] = from - sofar;
            sofar = from;
        }
        numbers.rounds[0][at] = numbers.whole[at] - (sofar - own);
    }

    const MeasuredGame game_;
    bool byRound_;
    std::array<PreflopResponse, 2> seats_;
    std::vector<GainParts::First> first_;
};

} // namespace

GainParts gainParts(const MeasuredGame& game, const std::vector<PublicBoard>& flops,
                    const ValuesOfFlop& values) {
    FlopSums all(game);
    for (size_t place = 0; place < flops.size(); ++place)
        all.add(values(place), flops[place].weight);
    const Parts parts(game, haveLater(game, all));
    const Numbers numbers = parts.with(all, all);
    return parts.gather({&numbers}, [&](const auto& of) { return Interval{of(numbers), 0}; });
}

GainParts gainParts(const MeasuredGame& game, const FlopSample& sample,
                    const ValuesOfFlop& values) {
    std::array<FlopSums, 2> halves{FlopSums(game), FlopSums(game)};
    for (const auto& pair : sample.pairs)
        for (size_t half = 0; half < 2; ++half)
            halves[half].add(values(pair[half]), 1);
    const Parts parts(game, haveLater(game, halves[0]) && haveLater(game, halves[1]));
    std::vector<std::array<Numbers, 2>> pairs(sample.pairs.size());
    std::vector<const Numbers*> all;
    for (size_t p = 0; p < pairs.size(); ++p)
        for (size_t half = 0; half < 2; ++half) {
            FlopSums flop(game);
            flop.add(values(sample.pairs[p][half]), 1);
            pairs[p][half] = parts.with(halves[1 - half], flop);
            all.push_back(&pairs[p][half]);
        }
    return parts.gather(all, [&](const auto& of) {
        std::vector<std::array<double, 2>> numbers;
        for (const auto& [one, other] : pairs)
            numbers.push_back({of(one), of(other)});
        return intervalOf(numbers);
    });
}

} // namespace tamarin
