// The small one-round games behind the utility tables, compiled: full deck, two hole cards, the
// board of one round, card information cut into 101 clusters.
//
// A handful of decision nodes serve every deal. What a deal changes is the bucket of each seat and
// who beats whom, of which there are few possibilities, so a visit of the tree is a few dozen
// additions on two rows of numbers. The sums are to the bit those of CFR::calc and CFR::calcUtil.
#pragma once

#include "strategy/node_maps.h"
#include "tree/compiled_tree.h"
#include "tree/payoffs.h"
#include "tree/set_numbers.h"

#include <array>
#include <cstdint>
#include <vector>

namespace tamarin {

class AuxiliaryGame {
public:
    static constexpr int numBuckets = 101;
    static constexpr size_t maxPlayers = 3;

    // Whether this form can take the game: two or three players, one round, 52 cards, two hole
    // cards, at most five board cards.
    static bool fits(const Game& game);

    // game must fit and outlive the object. No set has any number yet.
    explicit AuxiliaryGame(const Game& game);
    AuxiliaryGame(const AuxiliaryGame&) = delete;
    AuxiliaryGame& operator=(const AuxiliaryGame&) = delete;

    const Game& game() const { return game_; }
    size_t numPlayers() const { return game_.numPlayers; }

    // All sums zero; actions as the rules and CFR::eliminateActions leave them for buckets that win
    // with these probabilities.
    void start(const std::array<double, numBuckets>& winProb);
    // Takes the sums out of node maps; false when they hold another tree or a number that is none.
    bool read(const NodeMap* nodeMaps);
    // Puts them back into the nodes they came from.
    void write() const;

    // One a seat; -1 where there is no seat.
    using Ranks = std::array<int, maxPlayers>;
    static constexpr Ranks noRanks{-1, -1, -1};
    // Who beats whom, for hands of these ranks: for each seat, how many are worse.
    static uint32_t outcome(const Ranks& ranks) {
        uint32_t code = 0;
        for (const int own : ranks) {
            uint32_t worse = 0;
            for (const int other : ranks)
                worse += other < own;
            code = code << 2U | worse;
        }
        return code;
    }
    static constexpr size_t outcomes = 1U << (2 * maxPlayers);

    // One training visit of the whole tree.
    void visit(const uint8_t* buckets, uint32_t outcome);

    // What the deal is worth to each seat when everybody plays the average strategy of the sums as
    // they are now; bound to the object.
    class Values {
    public:
        // One end of the betting of two players.
        struct Ending {
            // The product of a seat's probabilities on the way there, by its bucket.
            std::array<std::array<double, numBuckets>, 2> reach;
            // Chips for a seat whose hand is worse, as good and better.
            std::array<std::array<double, 3>, 2> payoff;
        };

        explicit Values(const AuxiliaryGame& auxiliary);
        // seatValues: numPlayers entries.
        void of(const uint8_t* buckets, uint32_t outcome, double* seatValues) const;
        // Two players: the values of both seats at once, looked up.
        const std::array<double, 2>& ofPair(const uint8_t* buckets, uint32_t outcome) const {
            return pairs_[(outcome * numBuckets + buckets[0]) * numBuckets + buckets[1]];
        }
        // Two players: all ends; ofPair is the sum of reach x reach x payoff over them.
        std::vector<Ending> endings() const;

    private:
        const AuxiliaryGame& auxiliary_;
        std::vector<std::array<double, numAbstractedActions>> average_; // by set
        std::vector<std::array<double, 2>> pairs_; // [outcome][bucket of seat 0][of seat 1]
    };

private:
    friend class AuxiliaryEquilibrium;

    size_t setOf(size_t node, const uint8_t* buckets) const {
        return buckets[tree_.nodes()[node].player] * tree_.nodes().size() + node;
    }
    const double* childValue(int32_t child, const double* values, const double* settled) const {
        return child >= 0 ? values + static_cast<size_t>(child) * stride_
                          : settled + static_cast<size_t>(~child) * stride_;
    }
    // Every outcome's table of settlements, from deals that have it.
    void findOutcomes();

    const Game& game_;
    CompiledTree tree_;
    Payoffs payoffs_;
    size_t stride_;
    std::array<const double*, outcomes> settled_{};
    std::vector<SetNumbers> numbers_; // [bucket][node]
    std::vector<SetActions> actions_;
    std::vector<CFRNode*> nodes_;

    // Scratch of a visit: by edge (3 x node + action), by node.
    std::vector<double> reach_;
    std::vector<double> strategy_;
    std::vector<uint8_t> open_;
    std::vector<double> values_;
    std::vector<uint32_t> visited_;
};

} // namespace tamarin
