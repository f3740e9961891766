// Where games are found, and how they come into a playing directory.
//
// A playing directory holds game definitions and, below it, strategies/ and lookup/. `player` takes
// its game by bare file name from its working directory, so the definition has to be put there
// before a player is started.
#pragma once

#include "game/definition.h"
#include "support/result.h"

#include <string>
#include <vector>

namespace tamarin {

// The path of a game definition. A name with a slash is a path and is taken as it stands; a bare
// name is looked for in directory, then in the games that come with the program (../share/tamarin/
// games beside an installed program, else the source tree's games/).
Result<std::string> findGameFile(const std::string& name, const std::string& directory);

// The bare names that findGameFile() finds without a path, in their order: NAME.game in directory
// and among the games that come with the program.
std::vector<std::string> gameNames(const std::string& directory);

// Reads the definition at path. readGame says on standard error what is wrong with it.
Result<GamePtr> readGameFile(const std::string& path);

// A definition that was found and read; name as for findGameFile().
struct GameFile {
    std::string path;
    std::string name; // bare file name
    GamePtr rules;
};
Result<GameFile> openGameFile(const std::string& name, const std::string& directory);

// Makes sure that directory, which is made where it is missing, holds the definition at path under
// its bare file name, copying it when there is none, and returns that name. A different file of the
// same name there is an error: its tables and strategies would belong to another game.
Result<std::string> placeGameFile(const std::string& path, const std::string& directory);

// The last component of a path.
std::string bareName(const std::string& path);

} // namespace tamarin
