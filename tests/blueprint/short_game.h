// Games with short decks and buckets that differ by round, for training.
#pragma once

#include "blueprint/board_step.h"
#include "response/measured.h"

namespace tamarin::test {

// By what a renaming of the suits does not change, with other numbers of buckets in every round.
class RandomBuckets : public HandBuckets {
public:
    explicit RandomBuckets(std::vector<uint32_t> counts) : counts_(std::move(counts)) {}

    uint32_t numBuckets(int round) const override { return counts_[static_cast<size_t>(round)]; }
    void fill(int round, std::span<const uint8_t> board, std::span<const HoleCards> holdings,
              uint16_t* out) const override {
        for (size_t h = 0; h < holdings.size(); ++h)
            out[h] = bucket(round, board, holdings[h]);
    }
    uint16_t bucket(int round, std::span<const uint8_t> board, HoleCards hole) const {
        uint64_t sum = (hole[0] / 4U + 1U) * (hole[1] / 4U + 1U);
        sum += hole[0] % 4 == hole[1] % 4 ? 100U : 0U;
        for (const uint8_t card : board) {
            sum += mixBits(card / 4U + 1);
            sum += card % 4 == hole[0] % 4 ? 1000U : 0U;
            sum += card % 4 == hole[1] % 4 ? 1000U : 0U;
        }
        return static_cast<uint16_t>(mixBits(sum) % numBuckets(round));
    }

private:
    std::vector<uint32_t> counts_;
};

struct ShortTraining {
    ShortTraining(const std::string& text, std::vector<uint32_t> counts)
        : game(parseGame(text)), tree(*game), deck(*game), buckets(counts), sets(tree, counts),
          dealer(*game, deck, buckets) {}

    GamePtr game;
    CompiledTree tree;
    PublicDeck deck;
    RandomBuckets buckets;
    BlueprintSets sets;
    BoardDealer dealer;
};

} // namespace tamarin::test
