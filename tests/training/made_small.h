// A small game that must be one.
#pragma once

#include "training/small_game.h"

#include <memory>

#include <gtest/gtest.h>

namespace tamarin::test {

inline std::unique_ptr<SmallGame> small(const GamePtr& game) {
    auto made = SmallGame::make(*game);
    EXPECT_TRUE(made.ok());
    return std::move(*made);
}

} // namespace tamarin::test
