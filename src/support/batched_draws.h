// Several random numbers, each uniform below a bound of its own, from one word of 64 bits.
//
// A word times a bound has the number in its upper half and, in its lower half, what the next bound
// multiplies (Brackett-Rozinsky and Lemire 2024). Together these are the digits of the word times
// the product P of the bounds, divided by 2^64; as with one bound, they are exactly uniform once
// the words whose last lower half is below 2^64 mod P are drawn again. Bounds share a word as long
// as that happens less than once in 64 words: nine or ten cards of a deck, for example.
#pragma once

#include <array>
#include <cassert>
#include <cstddef>
#include <cstdint>

namespace tamarin {

// The numbers of one word, in turn.
class WordDigits {
public:
    explicit WordDigits(uint64_t word) : rest_(word) {}
    uint32_t next(uint32_t bound) {
        const Wide product = static_cast<Wide>(rest_) * bound;
        rest_ = static_cast<uint64_t>(product);
        return static_cast<uint32_t>(product >> 64U);
    }
    // To be compared with 2^64 mod P after the last.
    uint64_t rest() const { return rest_; }

private:
    __extension__ using Wide = unsigned __int128;
    uint64_t rest_;
};

// count numbers below the same bound; they must have room in one word.
template <uint32_t bound, size_t count, class Generator>
void drawAlike(Generator& random, std::array<uint32_t, count>& drawn) {
    constexpr uint64_t product = [] {
        uint64_t power = 1;
        for (size_t i = 0; i < count; ++i) {
            assert(power <= (uint64_t{1} << 58U) / bound);
            power *= bound;
        }
        return power;
    }();
    constexpr uint64_t least = (0 - product) % product;
    uint64_t rest;
    do {
        WordDigits digits(random());
        for (uint32_t& number : drawn)
            number = digits.next(bound);
        rest = digits.rest();
    } while (rest < least);
}

// Numbers below bounds that are known when the program runs.
class BatchedDraws {
public:
    static constexpr size_t most = 64; // numbers

    // One more number, below bound (not 0).
    void add(uint32_t bound) {
        assert(bound > 0 && count_ < most);
        if (words_ == 0 || mostOfWord / word_[words_ - 1].product < bound)
            word_[words_++] = {count_, 1, 0};
        Word& word = word_[words_ - 1];
        word.end = ++count_;
        word.product *= bound;
        word.least = (0 - word.product) % word.product;
        bounds_[count_ - 1] = bound;
    }
    size_t size() const { return count_; }

    // drawn: size() numbers. Any generator of words of 64 bits.
    template <class Generator>
    void draw(Generator& random, uint32_t* drawn) const {
        size_t i = 0;
        for (size_t w = 0; w < words_; ++w) {
            const size_t first = i;
            uint64_t rest;
            do {
                WordDigits digits(random());
                for (i = first; i < word_[w].end; ++i)
                    drawn[i] = digits.next(bounds_[i]);
                rest = digits.rest();
            } while (rest < word_[w].least);
        }
    }

private:
    static constexpr uint64_t mostOfWord = uint64_t{1} << 58U;

    struct Word {
        size_t end = 0; // the number behind its last
        uint64_t product = 1;
        uint64_t least = 0; // of the lower halves that are taken: 2^64 mod product
    };

    size_t count_ = 0;
    size_t words_ = 0;
    std::array<uint32_t, most> bounds_{};
    std::array<Word, most> word_{};
};

} // namespace tamarin
