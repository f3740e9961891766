// A strategy as a page (report/page.h): the betting tree, every information set's probabilities as
// a bar, the reach of every sequence, and what each ending is worth.
#pragma once

#include "directory/strategies.h"
#include "training/best_response.h"

#include <string>

namespace tamarin {

// source: where the strategy came from, for the page's heading.
std::string strategyPage(const NamedGame& game, const Profile& profile, const ProfileValue& value,
                         const std::string& source);

// What a card field means to a reader: the card's letter in a four-rank deck, which is dealt from
// jack to ace; else the rank's letter.
std::string cardLabel(const Game& game, uint32_t field);

} // namespace tamarin
