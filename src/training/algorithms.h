// The training algorithms in one table: what they are called, what they do, and for which games.
//
// What they compute is in training/equilibrium.h for small games and in training/holdem_trainer.h
// for hold'em.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace tamarin {

enum class Algorithm : uint8_t { player, cfr, cfrPlus, linear, discounted, predictive };

// What is trained, as far as the best algorithm depends on it; a mask of bits.
enum class Trained : uint8_t { smallGame = 1, twoPlayerHoldem = 2, threePlayerHoldem = 4 };

struct AlgorithmInfo {
    Algorithm algorithm;
    const char* name;
    const char* what;         // one line
    uint8_t defaultFor;       // bits of Trained
    const char* notForHoldem; // why; null: it is for hold'em too
};

// In the order in which --help lists them.
std::span<const AlgorithmInfo> allAlgorithms();
const AlgorithmInfo& algorithmInfo(Algorithm algorithm);

// "player", "cfr", "cfr+", "lcfr", "dcfr", "pcfr+".
const char* algorithmName(Algorithm algorithm);
std::optional<Algorithm> algorithmNamed(const std::string& name);

Algorithm defaultAlgorithm(Trained what);

// A line for each algorithm, with what it is the default for, as --help shows them.
std::string algorithmHelp();

} // namespace tamarin
