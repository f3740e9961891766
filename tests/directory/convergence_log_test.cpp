#include "directory/convergence_log.h"

#include "support/temp_directory.h"

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

std::string lineOf(uint64_t iteration, double seconds) {
    return "{\"iteration\":" + std::to_string(iteration) +
           ",\"seconds\":" + std::to_string(seconds) + ",\"averageRegret\":1}";
}

TEST(ConvergenceLog, AddsTheSecondsOfItsRuns) {
    const TempDirectory directory;
    EXPECT_EQ(secondsTrained(directory.path(), 100), 0);
    {
        ConvergenceLog log(directory.path(), {});
        log.add(lineOf(8, 2));
        log.add(lineOf(16, 4.5));
    }
    {
        ConvergenceLog log(directory.path(), 16);
        log.add(lineOf(18, 1));
        log.add(lineOf(20, 2));
        log.add(R"({"iteration":20,"seconds":2.0,"exploitability":3})");
    }
    EXPECT_DOUBLE_EQ(secondsTrained(directory.path(), 100), 6.5);
    EXPECT_DOUBLE_EQ(secondsTrained(directory.path(), 20), 6.5);
    EXPECT_DOUBLE_EQ(secondsTrained(directory.path(), 19), 5.5) << "a checkpoint's iteration";
    EXPECT_DOUBLE_EQ(secondsTrained(directory.path(), 16), 4.5);
    EXPECT_DOUBLE_EQ(secondsTrained(directory.path(), 7), 0);
}

// A run that goes on forgets the lines after the checkpoint that it goes on from.
TEST(ConvergenceLog, GoesOnFromAnIteration) {
    const TempDirectory directory;
    ConvergenceLog(directory.path(), {}).add(lineOf(8, 2) + "\n" + lineOf(16, 4) + "\nnonsense");
    ConvergenceLog log(directory.path(), 8);
    EXPECT_TRUE(log.good());
    EXPECT_EQ(contentsOf(log.path()), lineOf(8, 2) + "\n");
}

} // namespace
} // namespace tamarin::test
