// Hands drawn at random for the index tests.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <random>
#include <utility>

namespace tamarin {

// Deals hands of a fixed number of cards, each from the whole deck.
class RandomHands {
public:
    RandomHands(unsigned cards, uint64_t seed) : cards_(cards), random_(seed) {
        for (size_t i = 0; i < deck_.size(); ++i)
            deck_[i] = static_cast<uint8_t>(i);
    }

    // Valid until the next call.
    const uint8_t* next() {
        for (size_t i = 0; i < cards_; ++i)
            std::swap(deck_[i], deck_[i + random_() % (deck_.size() - i)]);
        return deck_.data();
    }

private:
    size_t cards_;
    std::mt19937_64 random_;
    std::array<uint8_t, 52> deck_{};
};

} // namespace tamarin
