// The training algorithms in one table: what they are called, what they do, and for which games.
//
// What they compute is in training/equilibrium.h for small games and in training/holdem_trainer.h
// for hold'em.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tamarin {

enum class Algorithm : uint8_t { player, cfr, cfrPlus, linear, discounted, predictive };

// "player", "cfr", "cfr+", "lcfr", "dcfr", "pcfr+".
const char* algorithmName(Algorithm algorithm);
std::optional<Algorithm> algorithmNamed(const std::string& name);

// Why hold'em cannot be trained by it; null where it can.
const char* whyNotForHoldem(Algorithm algorithm);

// The best one, by what is trained.
enum class Trained : uint8_t { smallGame, twoPlayerHoldem, threePlayerHoldem };
Algorithm defaultAlgorithm(Trained what);

// For --help, in its order: the names, and a line for each with what it is the default for.
std::vector<std::string> algorithmNames();
std::string algorithmHelp();

} // namespace tamarin
