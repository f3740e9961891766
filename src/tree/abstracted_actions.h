// What a player may do in the abstracted game: 0 fold, 1 call, 2 raise.
#pragma once

inline constexpr int numAbstractedActions = 3;

inline constexpr const char* abstractedActionNames[numAbstractedActions] = {"fold", "call",
                                                                            "raise"};
