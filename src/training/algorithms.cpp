#include "training/algorithms.h"

#include <cassert>

namespace tamarin {

namespace {

constexpr struct Entry {
    Algorithm algorithm;
    const char* name;
    const char* what;
    const char* notForHoldem = nullptr;
} table[] = {
    {Algorithm::cfr, "cfr", "plain sums"},
    {Algorithm::cfrPlus, "cfr+", "regrets floored at 0, late strategies count more"},
    {Algorithm::linear, "lcfr", "late regrets and strategies count more"},
    {Algorithm::discounted, "dcfr", "early regrets and strategies are forgotten by and by"},
    {Algorithm::predictive, "pcfr+", "cfr+ that plays against the regrets it expects next",
     "it needs all deals at once, which hold'em cannot have"},
    {Algorithm::player, "player", "the player's own rule, which nears no equilibrium"},
};

// By measurement: docs/holdem-training.md has the figures. With three players, discounting a
// hundred million sets after every block would cost more than it gains.
constexpr struct {
    const char* what;
    Algorithm algorithm;
} defaults[] = {{"small games", Algorithm::discounted},
                {"two-player hold'em", Algorithm::discounted},
                {"three-player hold'em", Algorithm::linear}};

const Entry& entryOf(Algorithm algorithm) {
    for (const Entry& entry : table)
        if (entry.algorithm == algorithm)
            return entry;
    assert(!"an algorithm without an entry");
    return table[0];
}

} // namespace

const char* algorithmName(Algorithm algorithm) {
    return entryOf(algorithm).name;
}

std::optional<Algorithm> algorithmNamed(const std::string& name) {
    for (const Entry& entry : table)
        if (name == entry.name)
            return entry.algorithm;
    return std::nullopt;
}

const char* whyNotForHoldem(Algorithm algorithm) {
    return entryOf(algorithm).notForHoldem;
}

Algorithm defaultAlgorithm(Trained what) {
    return defaults[static_cast<size_t>(what)].algorithm;
}

std::vector<std::string> algorithmNames() {
    std::vector<std::string> names;
    for (const Entry& entry : table)
        names.emplace_back(entry.name);
    return names;
}

std::string algorithmHelp() {
    std::string help;
    for (const Entry& entry : table) {
        help += std::string(help.empty() ? "" : "\n") + entry.name + ": " + entry.what;
        const char* before = "; the default for ";
        for (const auto& [what, algorithm] : defaults)
            if (algorithm == entry.algorithm) {
                help += std::string(before) + what;
                before = " and ";
            }
        if (entry.notForHoldem != nullptr)
            help += "; not for hold'em";
    }
    return help;
}

} // namespace tamarin
