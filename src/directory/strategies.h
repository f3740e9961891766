// The strategies of a small game in a playing directory: one file a seat,
// strategies/NAME/strategyN, where NAME is the game file's name without ".game".
#pragma once

#include "directory/playing_directory.h"
#include "support/result.h"
#include "training/best_response.h"
#include "training/small_game_trainer.h"

#include <memory>
#include <string>

namespace tamarin {

// A game that a command was given, found, read and enumerated.
struct NamedGame : GameFile {
    std::unique_ptr<SmallGame> small;
};

// name: a path, or a bare name looked for in directory and among the program's games.
Result<NamedGame> openSmallGame(const std::string& name, const std::string& directory);

// DIR/strategies/NAME for the game file NAME.game.
std::string strategyDirectory(const std::string& directory, const std::string& gameName);

// strategyDirectory/strategySEAT.
std::string strategyPath(const std::string& strategies, size_t seat);

// The profile of the seats, each playing by its own file. Every file is checked in full first.
Result<Profile> readStrategies(const SmallGame& game, const std::string& strategies);

// One file's strategy for all seats.
Result<Profile> readStrategy(const SmallGame& game, const std::string& path);

// Saves the trainer's strategy as every seat's file and records the files in the manifest. When the
// disk is full, no file changes. The error names the file and the cause.
Status writeStrategies(const SmallGame& game, const SmallGameTrainer& trainer,
                       const std::string& strategies, const std::string& made,
                       const std::string& gameName);

} // namespace tamarin
