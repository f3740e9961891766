// A playing directory with a blueprint of two-player limit hold'em and its card abstraction, small
// and of a test's choice: sparse files of the right sizes, in which all hands but a few are in
// bucket 0.
#pragma once

#include "blueprint/blueprint_file.h"
#include "clustering/card_abstraction.h"
#include "driver/scratch.h"
#include "game/definition_file.h"
#include "index/hand_index.h"
#include "support/silent_output.h"

#include <array>
#include <cstdint>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

namespace tamarin::test {

inline const std::string limitGame = "holdem.limit.2p.reverse_blinds.game";
inline const std::string limitBlueprint = "strategies/holdem.limit.2p/blueprint";

// The abstraction alone.
class CardsDirectory : public PlayingDirectory {
public:
    static constexpr BucketCounts counts{20, 7, 8, 9};

    struct KnownHand {
        int round;
        std::string cards; // the hole cards and the board, "AsKd2c3d4h"
        uint16_t bucket;
    };

    explicit CardsDirectory(const std::vector<KnownHand>& known) { putAbstraction(known); }

    const AbstractionDescription& description() const { return description_; }

    static std::string abstractionFile(int round) {
        return abstractionFolder(".", "small") + "/" + bucketFileNames[static_cast<size_t>(round)];
    }
    static void flipBit(const std::string& path, uint64_t at) {
        std::fstream file(path, std::ios::binary | std::ios::in | std::ios::out);
        file.seekg(static_cast<std::streamoff>(at));
        const auto byte = static_cast<char>(file.get() ^ 1);
        file.seekp(static_cast<std::streamoff>(at));
        file.put(byte);
        ASSERT_TRUE(file.good()) << path;
    }

private:
    void putAbstraction(const std::vector<KnownHand>& known) {
        std::filesystem::create_directories(abstractionFolder(".", "small"));
        for (int round = 0; round < holdemRounds; ++round) {
            std::ofstream(abstractionFile(round), std::ios::binary).flush();
            std::filesystem::resize_file(abstractionFile(round),
                                         roundSizes[static_cast<size_t>(round)] * sizeof(uint16_t));
        }
        for (const KnownHand& hand : known)
            put(hand);
        for (size_t round = 0; round < counts.size(); ++round) {
            const auto file = MappedFile::open(abstractionFile(static_cast<int>(round)));
            ASSERT_TRUE(file.ok());
            description_.rounds[round].buckets = counts[round];
            description_.rounds[round].hands = roundSizes[round];
            description_.rounds[round].checksum = bucketChecksum(file->as<uint16_t>());
        }
        ASSERT_TRUE(writeDescription(abstractionFolder(".", "small") + "/" + descriptionFileName,
                                     description_)
                        .ok());
    }
    static void put(const KnownHand& hand) {
        uint8_t cards[7] = {};
        for (size_t i = 0; i < hand.cards.size() / 2; ++i)
            ASSERT_EQ(readCard(hand.cards.c_str() + 2 * i, &cards[i]), 2) << hand.cards;
        const uint64_t index = hand_index_last(RoundIndexer(hand.round).get(), cards);
        std::fstream file(abstractionFile(hand.round),
                          std::ios::binary | std::ios::in | std::ios::out);
        file.seekp(static_cast<std::streamoff>(index * sizeof hand.bucket));
        file.write(reinterpret_cast<const char*>(&hand.bucket), sizeof hand.bucket);
        ASSERT_TRUE(file.good()) << hand.cards;
    }
    AbstractionDescription description_;
};

class BlueprintDirectory : public CardsDirectory {
public:
    static constexpr uint64_t steps = 4321;

    // Weights of fold, call and raise at a node, by the actions before it.
    using Weights = std::array<float, numAbstractedActions>;
    using Choose = std::function<Weights(const std::string& actions, size_t bucket)>;

    BlueprintDirectory(const std::vector<KnownHand>& known, const Choose& choose)
        : CardsDirectory(known), game_(readDefinitionFile(limitGame.c_str())), tree_(*game_) {
        putBlueprint(choose);
    }

    const Game& game() const { return *game_; }
    const CompiledTree& tree() const { return tree_; }

private:
    void putBlueprint(const Choose& choose) {
        BlueprintSets sets(tree_, counts);
        for (size_t n = 0; n < tree_.nodes().size(); ++n) {
            const auto number = static_cast<int32_t>(n);
            const std::string actions = tree_.sequence(number);
            const LineBlocks::Place place = sets.lines().placeOf(number);
            const LineBlock& block = sets.lines().blocks()[place.block];
            const LineBlock::Node& node = block.nodes[place.node];
            for (size_t bucket = 0; bucket < counts[block.round]; ++bucket) {
                const Weights weights = choose(actions, bucket);
                for (size_t e = 0; e < node.edges; ++e)
                    sets.sums(place.block, place.node)[bucket * node.edges + e].lanes[place.lane] =
                        weights[block.edges[node.firstEdge + e].action];
            }
        }
        std::filesystem::create_directories("strategies/holdem.limit.2p");
        ASSERT_TRUE(writeBlueprint(limitBlueprint, sets,
                                   {hashOfGame(*game_),
                                    "small",
                                    hashOfBuckets(description()),
                                    {counts.begin(), counts.end()},
                                    1,
                                    steps})
                        .ok());
    }

    GamePtr game_;
    CompiledTree tree_;
};

} // namespace tamarin::test
