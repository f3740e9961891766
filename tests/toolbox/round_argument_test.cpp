#include "toolbox/round_argument.h"

#include "toolbox/command.h"

#include <gtest/gtest.h>

namespace tamarin::test {

TEST(RoundArgument, IsANameOrANumber) {
    const char* const texts[][4] = {{"preflop", "flop", "turn", "river"},
                                    {"pre-flop", "flop", "turn", "river"},
                                    {"0", "1", "2", "3"}};
    for (const auto& rounds : texts)
        for (int round = 0; round < 4; ++round)
            EXPECT_EQ(readRound(rounds[round]), round) << rounds[round];
}

TEST(RoundArgument, IsNothingElse) {
    for (const char* text : {"", "4", "-1", "00", "1.0", "Flop", "flop ", "pre", "holdem"})
        try {
            (void)readRound(text);
            ADD_FAILURE() << text;
        } catch (const UsageError& error) {
            EXPECT_EQ(std::string(error.what()),
                      std::string("there is no round \"") + text +
                          "\"; they are 0 to 3, or preflop, flop, turn, river");
        }
}

} // namespace tamarin::test
