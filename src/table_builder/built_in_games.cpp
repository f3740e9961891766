#include "table_builder/built_in_games.h"

#include "abstraction/round_indexers.h"
#include "abstraction/table_names.h"
#include "holdem/auxiliary_game.h"
#include "support/file.h"
#include "support/util.h"
#include "table_builder/table_plan.h"

namespace tamarin {

std::string auxiliaryGameText(int players, int round) {
    const std::string blinds = players == 2 ? "1 1" : "1 1 1";
    return "GAMEDEF\nlimit\nnumPlayers = " + std::to_string(players) +
           "\nnumRounds = 1\nblind = " + blinds +
           "\nraiseSize = 1\nfirstPlayer = 1\nmaxRaises = 1\nnumSuits = 4\nnumRanks = 13\n"
           "numHoleCards = 2\nnumBoardCards = " +
           std::to_string(roundBoardCards[static_cast<size_t>(round)]) + "\nEND GAMEDEF\n";
}

Result<GamePtr> auxiliaryGameIn(const std::string& directory, int players, int round) {
    const std::string path = inDirectory(directory, auxiliaryGameName(players, round));
    std::string text = auxiliaryGameText(players, round);
    if (file_exist(path)) {
        auto there = readWholeFile(path, size_t{1} << 20);
        if (!there)
            return Error{there.error()};
        text = std::move(*there);
    }
    GamePtr game = gameFromText(text);
    if (!game)
        return Error{path + ": could not read this game definition"};
    if (!AuxiliaryGame::fits(*game) || game->numPlayers != players ||
        game->numBoardCards[0] != roundBoardCards[static_cast<size_t>(round)])
        return Error{path + ": this is no auxiliary game of the " +
                     roundNames[static_cast<size_t>(round)] + ": put " +
                     auxiliaryGameName(players, round) + " of this program there, or none"};
    return game;
}

} // namespace tamarin
