#include "support/fixed_assert.h"

#include <gtest/gtest.h>

namespace tamarin::test {

TEST(FixedAssertDeathTest, SaysItsOwnWords) {
    bool holds = true;
    TAMARIN_FIXED_ASSERT(holds, "text", "file", "f()");
    holds = false;
    EXPECT_DEATH(TAMARIN_FIXED_ASSERT(holds, "spent[ p ] > 0", "src/old.cpp", "void f(int)"),
                 "src/old.cpp:[0-9]+: void f\\(int\\): Assertion `spent\\[ p \\] > 0' failed\\.");
}

TEST(FixedAssert, EvaluatesItsConditionOnce) {
    int evaluated = 0;
    TAMARIN_FIXED_ASSERT(++evaluated > 0, "text", "file", "f()");
    EXPECT_EQ(evaluated, 1);
}

} // namespace tamarin::test
