// Memory that runs out while the indexers are made.
#include "abstraction/EquityTables.h"

#include <cstddef>
#include <cstdlib>
#include <new>

#include <gtest/gtest.h>

namespace {

// failAt 0 lets all through; otherwise the failAt-th from now fails, and those after it pass.
long failAt = 0;
long taken = 0;

void* take(size_t size) {
    ++taken;
    return failAt > 0 && --failAt == 0 ? nullptr : std::malloc(size);
}
void* takeOrThrow(size_t size) {
    void* const memory = take(size);
    if (memory == nullptr)
        throw std::bad_alloc();
    return memory;
}

} // namespace

void* operator new(size_t size) {
    return takeOrThrow(size);
}
void* operator new[](size_t size) {
    return takeOrThrow(size);
}
void* operator new(size_t size, const std::nothrow_t&) noexcept {
    return take(size);
}
void* operator new[](size_t size, const std::nothrow_t&) noexcept {
    return take(size);
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete[](void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, size_t) noexcept {
    std::free(memory);
}
void operator delete[](void* memory, size_t) noexcept {
    std::free(memory);
}
void operator delete(void* memory, const std::nothrow_t&) noexcept {
    std::free(memory);
}
void operator delete[](void* memory, const std::nothrow_t&) noexcept {
    std::free(memory);
}

namespace tamarin::test {
namespace {

// How many allocations come before the round's indexer.
long allocationsBefore(int round) {
    long before = 0;
    for (int r = 0; r < round; ++r) {
        hand_indexer_t indexer;
        const long start = taken;
        EXPECT_TRUE(initRoundIndexer(r, &indexer));
        before += taken - start;
        hand_indexer_free(&indexer);
    }
    return before;
}

void createWithAFailure(long nth) {
    failAt = nth;
    EquityTables tables;
}

TEST(EquityTablesDeathTest, NoMemoryForAnIndexerEndsTheProgram) {
    const std::string place =
        "EquityTables\\.cpp:[0-9]+: EquityTables::EquityTables\\(\\): Assertion `";
    EXPECT_DEATH(createWithAFailure(1 + allocationsBefore(0)),
                 place + "hand_indexer_init\\(1, preflop_structure, &preflop_indexer\\)'");
    EXPECT_DEATH(createWithAFailure(1 + allocationsBefore(1)),
                 place + "hand_indexer_init\\(2, flop_structure, &flop_indexer\\)'");
    EXPECT_DEATH(createWithAFailure(1 + allocationsBefore(2)),
                 place + "hand_indexer_init\\(2, turn_structure, &turn_indexer\\)'");
    EXPECT_DEATH(createWithAFailure(1 + allocationsBefore(3)),
                 place + "hand_indexer_init\\(2, river_structure, &river_indexer\\)'");
}

} // namespace
} // namespace tamarin::test
