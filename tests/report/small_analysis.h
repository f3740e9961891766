// Four hands of two duplicate deals, freed of luck.
#pragma once

#include "game/games.h"
#include "report/analysis_report.h"

#include <gtest/gtest.h>

namespace tamarin::test {

struct SmallAnalysis {
    SmallAnalysis() {
        add("STATE:0:rc/crf:Ts8d|Ad7s/2s5dAc", {"me", "b<t"}, {-3.0, 1.0});
        add("STATE:1:f:Ts8d|Ad7s", {"b<t", "me"}, {-5.0, 2.0});
        add("STATE:2:rf:Ah3h|Kh9d", {"me", "b<t"}, {-7.0, 4.0});
        add("STATE:3:f:Ah3h|Kh9d", {"b<t", "me"}, {2.0, 9.0});
    }
    void add(const std::string& state, const std::vector<std::string>& names,
             const FreedHand& freed) {
        LoggedHand hand{};
        EXPECT_GT(readState(state.c_str(), game.get(), &hand.state), 0);
        for (uint8_t seat = 0; seat < 2; ++seat)
            hand.chips.push_back(valueOfState(game.get(), &hand.state, seat));
        hand.names = names;
        EXPECT_TRUE(analysis.add(hand, freed).ok());
    }

    GamePtr game = loadGameFile("holdem.limit.2p.reverse_blinds.game");
    MatchAnalysis analysis{*game};
    AnalysisReport report{"some.log", "some.game", game.get(), &analysis};
};

} // namespace tamarin::test
