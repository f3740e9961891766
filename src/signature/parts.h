// The parts of the signature, a file each. Each seeds what it draws from, so that a part can be
// computed alone, and all in any order.
#pragma once

#include "eval/seven_card_table.h"
#include "support/fnv.h"

namespace tamarin {

// Hands of one to seven cards by the rules, by the seven-card table and in words.
void addRanks(Fnv1a& hash, const SevenCardTable& table);
// Hands to indices and back, by every indexer the program uses and some that it does not.
void addIndices(Fnv1a& hash);
// Small games: the player's own training and every other algorithm, values, best responses.
void addSmallGames(Fnv1a& hash);
// Hold'em training over made-up buckets, for two and three, and sampled values.
void addHoldem(Fnv1a& hash);
// Slices of what the table builder makes: equities, clusters, utilities, buckets.
void addTables(Fnv1a& hash, const SevenCardTable& table);
// Card abstractions: rows of river hands, centres, and which is nearest.
void addClustering(Fnv1a& hash);
// Hands of every game between simple opponents, through the text that dealer and player exchange.
void addMatch(Fnv1a& hash);

} // namespace tamarin
