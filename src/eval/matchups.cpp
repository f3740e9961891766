#include "eval/matchups.h"

#include "eval/suit_order.h"

#include <algorithm>
#include <map>

namespace tamarin {
namespace {

// Combinations between two questions whether to stop.
constexpr uint64_t stopInterval = 1024;

// Calls visit(hands) for each combination; visit returns whether to go on.
template <class Visit>
bool forEachCombination(std::span<const HandRange> ranges, std::vector<CardSet>& hands,
                        CardSet used, const Visit& visit) {
    if (hands.size() == ranges.size())
        return visit(hands);
    for (const CardSet hand : ranges[hands.size()].hands) {
        if ((hand & used) != 0)
            continue;
        hands.push_back(hand);
        const bool goOn = forEachCombination(ranges, hands, used | hand, visit);
        hands.pop_back();
        if (!goOn)
            return false;
    }
    return true;
}

} // namespace

Result<std::vector<Matchup>> matchups(std::span<const HandRange> ranges, CardSet board, size_t most,
                                      const std::function<bool()>& stop) {
    uint64_t combinations = 1;
    for (const HandRange& range : ranges) {
        combinations *= range.hands.size();
        if (combinations > mostCombinations)
            return Error{"the hands meet in more than " + std::to_string(mostCombinations) +
                         " combinations; sample them instead"};
    }
    const std::vector<SuitOrder> orders =
        suitOrders([&](const SuitOrder& order) { return renameSuits(board, order) == board; });
    std::map<std::vector<CardSet>, uint64_t> found;
    std::vector<CardSet> renamed(ranges.size());
    std::vector<CardSet> least;
    std::vector<CardSet> hands;
    uint64_t visited = 0;
    bool stopped = false;
    forEachCombination(ranges, hands, board, [&](const std::vector<CardSet>& combination) {
        stopped = ++visited % stopInterval == 0 && stop && stop();
        if (stopped)
            return false;
        least.clear();
        for (const SuitOrder& order : orders) {
            for (size_t i = 0; i < combination.size(); ++i)
                renamed[i] = renameSuits(combination[i], order);
            std::sort(renamed.begin() + 1, renamed.end());
            if (least.empty() || renamed < least)
                least = renamed;
        }
        ++found[least];
        return found.size() <= most;
    });
    if (stopped)
        return Error{"interrupted"};
    if (found.size() > most)
        return Error{"the hands meet in more than " + std::to_string(most) + " different ways"};
    std::vector<Matchup> result;
    result.reserve(found.size());
    for (const auto& [lineUp, times] : found)
        result.push_back({lineUp, times});
    return result;
}

bool canBeHeld(std::span<const HandRange> ranges, CardSet board) {
    std::vector<CardSet> hands;
    return !forEachCombination(ranges, hands, board,
                               [](const std::vector<CardSet>&) { return false; });
}

} // namespace tamarin
