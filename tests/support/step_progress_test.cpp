#include "support/step_progress.h"

#include "support/progress_doubles.h"

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

TEST(StepProgress, EndsAStepWhenAnotherBegins) {
    MemoryStream out;
    ManualClock clock;
    StepProgress progress(false, out.stream(), clock);
    progress.at("Counting", 0, 100);
    clock.advance(2);
    progress.at("Counting", 100, 100);
    progress.at("Sorting", 0, 10);
    clock.advance(1);
    progress.at("Sorting", 10, 10);
    progress.line("all done");
    EXPECT_EQ(out.text(), "Counting: 100 in 2.0 s, 50.0/s\n"
                          "Sorting: 10 in 1.0 s, 10.0/s\n"
                          "all done\n");
}

TEST(StepProgress, NeverMovesBackAndClaimsNoMoreThanWasDone) {
    MemoryStream out;
    ManualClock clock;
    {
        StepProgress progress(false, out.stream(), clock);
        progress.at("Counting", 60, 100);
        clock.advance(2);
        progress.at("Counting", 50, 100);
    }
    EXPECT_EQ(out.text(), "Counting: 60 in 2.0 s, 30.0/s\n");
}

TEST(StepProgress, QuietShowsNothing) {
    MemoryStream out;
    ManualClock clock;
    {
        StepProgress progress(true, out.stream(), clock);
        progress.at("Counting", 60, 100);
        progress.line("all done");
    }
    EXPECT_EQ(out.text(), "");
}

} // namespace
} // namespace tamarin::test
