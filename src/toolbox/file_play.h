// What commands measure: a strategy file over ten buckets, or play by a simple rule.
#pragma once

#include "directory/holdem_game.h"
#include "directory/playing_directory.h"
#include "holdem/sets.h"
#include "response/hand_strategy.h"
#include "response/simple_play.h"
#include "support/result.h"

#include <memory>
#include <optional>
#include <string>

namespace tamarin {

// A strategy file of two-player hold'em, ready to be asked hand by hand, and all that it needs.
struct FilePlay {
    GameFile game;
    std::string path; // of the file
    std::unique_ptr<HoldemSets> sets;
    std::optional<HoldemTables> tables;
    std::unique_ptr<HandStrategy> strategy; // at the nodes of the sets' tree
};

// game: as the user named it. strategies: the folder of the file; empty: where `player` looks below
// the playing directory. An error for other games, for a file that is missing or damaged, and for
// tables that are missing or not those of the manifest.
Result<FilePlay> openFilePlay(const std::string& game, const std::string& directory,
                              const std::string& strategies);

// What --strategy says. Throws a UsageError for what is no simple rule.
SimplePlay simplePlayAsked(const std::string& text);

// "uniform play", "always call": for people.
std::string describePlay(SimplePlay play, const std::string& name);

} // namespace tamarin
