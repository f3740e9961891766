// Memory: every allocation of hand_indexer_init fails once, and indexing takes none at all.
#include "index/hand_index.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>

#include <gtest/gtest.h>

namespace {

// failAt 0 lets all through; otherwise the failAt-th from now fails, and those after it pass.
long failAt = 0;
long taken = 0;
long held = 0;

void* take(size_t size, size_t alignment) {
    ++taken;
    if (failAt > 0 && --failAt == 0)
        return nullptr;
    void* memory = std::aligned_alloc(alignment, (size / alignment + 1) * alignment);
    held += memory != nullptr;
    return memory;
}

void* takeOrThrow(size_t size, size_t alignment) {
    void* memory = take(size, alignment);
    if (memory == nullptr)
        throw std::bad_alloc();
    return memory;
}

void give(void* memory) {
    held -= memory != nullptr;
    std::free(memory);
}

constexpr size_t plain = alignof(std::max_align_t);

} // namespace

void* operator new(size_t size) {
    return takeOrThrow(size, plain);
}
void* operator new[](size_t size) {
    return takeOrThrow(size, plain);
}
void* operator new(size_t size, const std::nothrow_t&) noexcept {
    return take(size, plain);
}
void* operator new[](size_t size, const std::nothrow_t&) noexcept {
    return take(size, plain);
}
void* operator new(size_t size, std::align_val_t a) {
    return takeOrThrow(size, static_cast<size_t>(a));
}
void operator delete(void* memory) noexcept {
    give(memory);
}
void operator delete[](void* memory) noexcept {
    give(memory);
}
void operator delete(void* memory, size_t) noexcept {
    give(memory);
}
void operator delete[](void* memory, size_t) noexcept {
    give(memory);
}
void operator delete(void* memory, const std::nothrow_t&) noexcept {
    give(memory);
}
void operator delete[](void* memory, const std::nothrow_t&) noexcept {
    give(memory);
}
void operator delete(void* memory, std::align_val_t) noexcept {
    give(memory);
}
void operator delete(void* memory, size_t, std::align_val_t) noexcept {
    give(memory);
}

TEST(HandIndexAllocation, EveryFailureIsRefusedAndLeavesNothing) {
    const uint8_t structure[] = {2, 3, 1, 1};
    const hand_indexer_t none = {};
    const long heldBefore = held;
    int refusals = 0;
    for (long nth = 1;; ++nth) {
        hand_indexer_t indexer;
        failAt = nth;
        const bool built = hand_indexer_init(4, structure, &indexer);
        const bool failed = failAt == 0;
        failAt = 0;
        if (built) {
            EXPECT_EQ(hand_indexer_size(&indexer, 3), 2428287420U);
            hand_indexer_free(&indexer);
        } else {
            ++refusals;
            EXPECT_EQ(std::memcmp(&indexer, &none, sizeof none), 0);
        }
        ASSERT_EQ(held, heldBefore) << "after failing allocation " << nth;
        if (!failed)
            break; // fewer than nth were asked for
    }
    EXPECT_GE(refusals, 24); // six tables in each of four rounds
}

TEST(HandIndexAllocation, IndexingTakesNone) {
    const uint8_t structure[] = {2, 3, 1, 1};
    hand_indexer_t indexer;
    ASSERT_TRUE(hand_indexer_init(4, structure, &indexer));
    const long before = taken;
    uint8_t cards[7];
    hand_index_t indices[4];
    hand_index_t wrong = 0;
    for (hand_index_t index = 0; index < 2428287420U; index += 1234567) {
        wrong += !hand_unindex(&indexer, 3, index, cards);
        wrong += hand_index_all(&indexer, cards, indices) != index;
        wrong += hand_index_last(&indexer, cards) != index;
    }
    EXPECT_EQ(taken, before);
    EXPECT_EQ(wrong, 0U);
    hand_indexer_free(&indexer);
}
