// A definition read while memory runs out. This program is linked so that its own calls of malloc
// come here; those of the C library do not, and can still print the assertion's words.
#include "game/games.h"

#include <gtest/gtest.h>

namespace {

int callsToCome = -1; // the malloc that fails is this many calls away; none when negative

} // namespace

extern "C" void* __real_malloc(size_t size);
extern "C" void* __wrap_malloc(size_t size) {
    if (callsToCome == 0)
        return nullptr;
    if (callsToCome > 0)
        --callsToCome;
    return __real_malloc(size);
}

namespace tamarin::test {
namespace {

GamePtr readWithMemoryFor(int calls) {
    const std::string text = threePlayerLimit;
    FILE* file = fmemopen(const_cast<char*>(text.data()), text.size(), "r");
    callsToCome = calls;
    GamePtr game(readGame(file));
    callsToCome = -1;
    std::fclose(file);
    return game;
}

} // namespace

TEST(ReadGameMemoryDeathTest, EndsByAssertionWithoutMemory) {
    EXPECT_DEATH(readWithMemoryFor(0), "/game.cpp:.*`game != 0' failed");
    EXPECT_DEATH(readWithMemoryFor(1), "/game.cpp:.*`fmt != 0' failed");
    // Each list of numbers takes memory for its format: the last one too.
    EXPECT_DEATH(readWithMemoryFor(10), "/game.cpp:.*`fmt != 0' failed");
    EXPECT_NE(readWithMemoryFor(11), nullptr);
}

} // namespace tamarin::test
