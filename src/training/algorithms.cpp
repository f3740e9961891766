#include "training/algorithms.h"

#include <algorithm>
#include <cassert>
#include <iterator>

namespace tamarin {

namespace {

constexpr uint8_t bit(Trained what) {
    return static_cast<uint8_t>(what);
}

// The defaults are the best measured: docs/holdem-training.md has the figures. With three players,
// discounting a hundred million sets after every block would cost more than it gains.
constexpr AlgorithmInfo algorithms[] = {
    {Algorithm::cfr, "cfr", "plain sums", 0, nullptr},
    {Algorithm::cfrPlus, "cfr+", "regrets floored at 0, late strategies count more", 0, nullptr},
    {Algorithm::linear, "lcfr", "late regrets and strategies count more",
     bit(Trained::threePlayerHoldem), nullptr},
    {Algorithm::discounted, "dcfr", "early regrets and strategies are forgotten by and by",
     bit(Trained::smallGame) | bit(Trained::twoPlayerHoldem), nullptr},
    {Algorithm::predictive, "pcfr+", "cfr+ that plays against the regrets it expects next", 0,
     "it needs all deals at once, which hold'em cannot have"},
    {Algorithm::player, "player", "the player's own rule, which nears no equilibrium", 0, nullptr},
};

constexpr struct {
    Trained what;
    const char* name;
} trained[] = {{Trained::smallGame, "small games"},
               {Trained::twoPlayerHoldem, "two-player hold'em"},
               {Trained::threePlayerHoldem, "three-player hold'em"}};

template <class Condition>
const AlgorithmInfo* find(Condition condition) {
    const auto* const found = std::find_if(std::begin(algorithms), std::end(algorithms), condition);
    return found == std::end(algorithms) ? nullptr : found;
}

} // namespace

std::span<const AlgorithmInfo> allAlgorithms() {
    return algorithms;
}

const AlgorithmInfo& algorithmInfo(Algorithm algorithm) {
    const auto* const info = find([=](const auto& of) { return of.algorithm == algorithm; });
    assert(info != nullptr);
    return *info;
}

const char* algorithmName(Algorithm algorithm) {
    return algorithmInfo(algorithm).name;
}

std::optional<Algorithm> algorithmNamed(const std::string& name) {
    const auto* const info = find([&](const auto& of) { return name == of.name; });
    return info == nullptr ? std::nullopt : std::optional(info->algorithm);
}

Algorithm defaultAlgorithm(Trained what) {
    const auto* const info = find([=](const auto& of) { return (of.defaultFor & bit(what)) != 0; });
    assert(info != nullptr);
    return info->algorithm;
}

std::string algorithmHelp() {
    std::string help;
    for (const AlgorithmInfo& info : algorithms) {
        help += std::string(help.empty() ? "" : "\n") + info.name + ": " + info.what;
        const char* before = "; the default for ";
        for (const auto& [what, name] : trained)
            if ((info.defaultFor & bit(what)) != 0) {
                help += std::string(before) + name;
                before = " and ";
            }
        if (info.notForHoldem != nullptr)
            help += "; not for hold'em";
    }
    return help;
}

} // namespace tamarin
