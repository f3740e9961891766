// The assertions of the rules engine. They name one source, `game`, whichever file of this room
// they stand in; the line is that of the file.
#pragma once

#include "support/fixed_assert.h"

#define ASSERT_IN_GAME(condition, text)                                                            \
    TAMARIN_FIXED_ASSERT(condition, text, "src/game/game.cpp", __PRETTY_FUNCTION__)
