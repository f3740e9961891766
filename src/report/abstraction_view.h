// A card abstraction as text or JSON; abstraction_page.h makes the page.
#pragma once

#include "clustering/bucket_summary.h"
#include "clustering/card_abstraction.h"

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

namespace tamarin {

struct AbstractionQuestion {
    std::string directory = ".";
    std::string name;
    std::optional<int> round;       // this one only
    std::optional<uint32_t> bucket; // this one only; wants a round
    int threads = 0;
    // Told how much of a round is weighed, on the thread that asks.
    std::function<void(const std::string& step, uint64_t done, uint64_t total)> progress;
    // Asked often, on any thread; true ends the work with the error stopped().
    std::function<bool()> stop;
};

// What is shown of one bucket.
struct BucketView {
    struct Hand {
        uint64_t index;
        double equity; // 0 without equities
    };
    uint32_t number = 0;
    std::vector<Hand> hands; // handsSpreadOver
};

struct RoundView {
    int round = 0;
    std::vector<BucketSummary> buckets;
    uint64_t deckHands = 0; // of all buckets
    std::string noEquities; // why there are none; empty where there are
    std::optional<BucketView> bucket;

    bool hasEquities() const { return noEquities.empty(); }
    // Of all hands of the deck.
    double deckShare(size_t number) const {
        return static_cast<double>(buckets[number].deckHands) / static_cast<double>(deckHands);
    }
};

struct AbstractionView {
    std::string path;
    AbstractionDescription description;
    std::vector<RoundView> rounds;
    std::vector<uint16_t> startingHands; // their buckets, by hand index
};

// Equities against one opponent are those of lookup/ROUND_2p of the directory. Refuses a round or
// bucket that there is not, and an abstraction that is missing or damaged.
Result<AbstractionView> viewAbstraction(const AbstractionQuestion& question);

// How many hands the buckets of a round have.
struct BucketSizes {
    struct Bin {
        uint64_t from;
        uint64_t to; // included
        uint64_t buckets;
    };
    uint64_t empty = 0;
    uint64_t least = 0;
    uint64_t median = 0; // the lower one of two
    uint64_t greatest = 0;
    std::vector<Bin> histogram; // up to ten equal parts
};
BucketSizes sizesOf(const std::vector<BucketSummary>& buckets);

// "flop"
std::string roundName(const RoundView& round);
// "0.4797"; "-" where the round has no equities.
std::string equityText(const RoundView& round, double equity);
// A line of the table of rounds, under the heads of summaryHeads.
inline constexpr std::array<const char*, 9> summaryHeads{
    "", "buckets", "empty", "least", "median", "greatest", "mean", "within", "between"};
std::array<std::string, summaryHeads.size()> summaryCells(const RoundView& round);

// "method emd, seed 1, ..."
std::string howMade(const AbstractionDescription& description);
// "flop bucket 17 of 200"
std::string titleOf(const AbstractionView& view, const RoundView& round);
// What the hands of a bucket are that are shown: "10 of its hands, spread evenly over ..."
std::string handsTitle(const RoundView& round);

std::string abstractionText(const AbstractionView& view);
nlohmann::ordered_json abstractionJson(const AbstractionView& view);

} // namespace tamarin
