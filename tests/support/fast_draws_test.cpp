#include "support/fast_draws.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

namespace tamarin {
namespace {

TEST(FastDraws, DrawTheLibrarysNumbersAndLeaveItsState) {
    for (int range = 1; range <= 60; ++range) {
        EXPECT_TRUE(FastDraws::matchesLibrary(static_cast<uint32_t>(range)));
        global_urng().seed(static_cast<uint32_t>(range) * 7919);
        FastDraws draws(static_cast<uint32_t>(range));
        for (int i = 0; i < 20000; ++i)
            ASSERT_EQ(draws.next(), static_cast<uint32_t>(pick_a_number(0, range - 1)));
        const std::minstd_rand0 expected = global_urng();
        global_urng().seed(1);
        draws.store();
        EXPECT_EQ(global_urng(), expected);
    }
}

// The engine's last values before the parts end are thrown away and drawn again: seeds that step
// right to the edges.
TEST(FastDraws, RejectTheSameNumbers) {
    constexpr uint64_t modulus = std::minstd_rand0::modulus;
    constexpr uint64_t inverse = 1407677000; // of 16807
    static_assert(inverse * 16807 % modulus == 1);
    for (const uint32_t range : {3U, 4U, 7U, 24U, 36U, 52U}) {
        const uint64_t past = (modulus - 2) / range * range;
        for (uint64_t output = past - 3; output < modulus; ++output) {
            if (output == 0)
                continue;
            std::minstd_rand0 engine(static_cast<uint32_t>(output * inverse % modulus));
            FastDraws draws(range, engine);
            std::uniform_int_distribution<int> library(0, static_cast<int>(range) - 1);
            ASSERT_EQ(draws.next(), static_cast<uint32_t>(library(engine))) << output;
            std::minstd_rand0 left;
            draws.store(left);
            ASSERT_EQ(left, engine);
        }
    }
}

RC_GTEST_PROP(FastDraws, MatchAnySeedAndDeck, ()) {
    std::minstd_rand0 engine(*rc::gen::arbitrary<uint32_t>());
    const auto range = *rc::gen::inRange<uint32_t>(1, 1000);
    FastDraws draws(range, engine);
    std::uniform_int_distribution<int> library(0, static_cast<int>(range) - 1);
    for (int i = 0; i < 50; ++i)
        RC_ASSERT(draws.next() == static_cast<uint32_t>(library(engine)));
}

} // namespace
} // namespace tamarin
