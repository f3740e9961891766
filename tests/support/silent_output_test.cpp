#include "support/silent_output.h"

#include <sstream>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

TEST(SilentOutput, EndsWithTheObject) {
    std::ostringstream shown;
    std::streambuf* const before = std::cout.rdbuf(shown.rdbuf());
    std::cout << "before ";
    {
        const SilentOutput silent;
        std::cout << "during " << std::endl;
    }
    std::cout << "after";
    std::cout.rdbuf(before);
    EXPECT_EQ(shown.str(), "before after");
    EXPECT_TRUE(std::cout.good());
}

} // namespace
} // namespace tamarin::test
