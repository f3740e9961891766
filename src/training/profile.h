// A strategy for every seat: the probability of each action in each card-rank information set.
#pragma once

#include "strategy/node_store.h"
#include "training/small_game.h"

#include <array>
#include <vector>

namespace tamarin {

// By SmallGame::layout()'s index; 0 for what the rules do not allow.
using Profile = std::vector<std::array<double, numAbstractedActions>>;

// Everybody takes every legal action alike.
Profile uniformProfile(const SmallGame& game);

// The average strategies of nodes, as an agent plays them: where elimination has left no
// action, that is a call. An error names the first set that is missing, or that allows what the
// rules forbid: the solver then belongs to another game.
Result<Profile> averageProfile(const SmallGame& game, const NodeStore& strategy);

} // namespace tamarin
