#include "support/exception_text.h"

#include <new>
#include <stdexcept>

#include <gtest/gtest.h>

namespace tamarin {
namespace {

template <class Thrown>
std::string textOf(const Thrown& thrown) {
    try {
        throw thrown;
    } catch (...) {
        return describeException();
    }
}

TEST(ExceptionText, SaysWhatToDoAboutMemory) {
    EXPECT_EQ(textOf(std::bad_alloc()), "out of memory: end other programs, or raise the limit "
                                        "(ulimit -v), and start again");
}

TEST(ExceptionText, KeepsTheTextThatWasThrown) {
    EXPECT_EQ(textOf(std::runtime_error("a table is missing")), "a table is missing");
    EXPECT_EQ(textOf<const char*>("not implemented"),
              "the solver cannot go on: not implemented: check the game, and its tables and "
              "strategies with 'tamarin verify'");
    EXPECT_EQ(textOf(3), "an unknown failure");
}

} // namespace
} // namespace tamarin
