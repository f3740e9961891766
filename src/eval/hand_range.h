// Hands and cards as people write them.
//
//   AsKd        one hand of two cards          TT         a pair, six hands
//   AKs, AKo    suited (4), of two suits (12)  AK         both (16)
//   TT+         TT and every higher pair       ATs+       ATs, AJs, AQs, AKs: the higher kickers
//   77-TT       the pairs between              A5s-A2s    the kickers between
//   87s-54s     both ranks moved together      random     any of the 1,326 hands (also: any)
//
// and lists of these, separated by commas. Ranks are 2-9, T, J, Q, K, A, suits c, d, h, s, all in
// either case.
#pragma once

#include "game/showdown.h"
#include "support/result.h"

#include <cstdint>
#include <string>
#include <vector>

namespace tamarin {

// A set of two-card hands, each once, in ascending order of the card sets.
struct HandRange {
    std::string text; // as it was written
    std::vector<CardSet> hands;
};

// The error names the part of the list that is wrong, and how.
Result<HandRange> parseHandRange(const std::string& text);

// Different cards, written one after the other, with or without spaces or commas between them:
// "Qs8h3d", "Qs 8h 3d". In the order written.
Result<std::vector<uint8_t>> parseCards(const std::string& text);

// The cards' set; they must be different.
CardSet cardSetOf(const std::vector<uint8_t>& cards);

// "AsKd"; cards of a set in descending order.
std::string printCardSet(CardSet cards);

} // namespace tamarin
