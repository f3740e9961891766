#include "clustering/abstraction_check.h"

#include "abstraction/work.h"
#include "clustering/deck_samples.h"
#include "clustering/equity_shares.h"
#include "clustering/nearest_centre.h"
#include "eval/hand_evaluator.h"
#include "support/split_mix.h"

#include <cstring>
#include <mutex>

namespace tamarin {

namespace {

// Against one holding after the other, without the sweep that the making counts by.
uint32_t potOnRiver(const uint8_t* hole, const uint8_t* board) {
    const HandEvaluator& evaluator = HandEvaluator::shared();
    uint8_t cards[7];
    std::copy_n(hole, 2, cards);
    std::copy_n(board, 5, cards + 2);
    const uint32_t own = evaluator.rank7(cards);
    uint8_t left[deckCards];
    const size_t count = cardsWithout(cards, 7, left);
    HandKey shared;
    for (int i = 2; i < 7; ++i)
        shared = shared + cardKeys[cards[i]];
    uint32_t pot = 0;
    for (size_t high = 1; high < count; ++high) {
        const HandKey withHigh = shared + cardKeys[left[high]];
        for (size_t low = 0; low < high; ++low) {
            const uint32_t theirs = evaluator.value<7>(withHigh + cardKeys[left[low]]);
            pot += own > theirs ? 2 : own == theirs ? 1 : 0;
        }
    }
    return pot;
}

using ChooseBucket = std::function<uint32_t(const uint8_t* cards)>;

std::vector<uint64_t> limitsOf(const RoundDescription& round) {
    std::vector<uint64_t> limits(round.centres.size() / sizeof(uint64_t));
    std::memcpy(limits.data(), round.centres.data(), limits.size() * sizeof(uint64_t));
    return limits;
}

ChooseBucket byPercentile(const AbstractionDescription& description, int round) {
    const std::vector<uint64_t> limits = limitsOf(description.rounds[static_cast<size_t>(round)]);
    return [limits, round](const uint8_t* cards) {
        return shareOf(limits, round == 3 ? potOnRiver(cards, cards + 2)
                                          : plainEquities(cards, round + 2).sum);
    };
}

ChooseBucket byDistance(const AbstractionDescription& description, int round) {
    const std::vector<uint8_t>& rows = description.rounds[static_cast<size_t>(round)].centres;
    if (round == 3)
        return [centres = NearestCentres<StrengthMetric>(rows),
                strength = RiverStrength(description.startingHandClusters,
                                         description.options.clusters)](const uint8_t* cards) {
            return centres.find(strength.row(cards).data()).number;
        };
    return [centres = NearestCentres<HistogramMetric>(rows), round](const uint8_t* cards) {
        return centres.find(plainEquities(cards, round + 2).row().data()).number;
    };
}

// Sorted as the search for the nearest wants them, or limits that rise. Starting hands that have
// a bucket each are in the order of their strength instead, and nothing is searched.
bool inOrder(const AbstractionDescription& description, size_t round) {
    const RoundDescription& own = description.rounds[round];
    if (description.options.method == AbstractionMethod::percentile) {
        const std::vector<uint64_t> limits = limitsOf(own);
        return std::is_sorted(limits.begin(), limits.end());
    }
    std::vector<uint8_t> sorted = own.centres;
    if (round == 3)
        sortCentres<StrengthMetric>(sorted);
    else if (round > 0 || own.buckets != roundSizes[0])
        sortCentres<HistogramMetric>(sorted);
    return sorted == own.centres;
}

// The centres are such that bucket choices can be made of them.
Status checkCentres(const AbstractionDescription& description, const std::string& folder) {
    const bool emd = description.options.method == AbstractionMethod::emd;
    for (size_t round = 0; round < holdemRounds; ++round) {
        const RoundDescription& own = description.rounds[round];
        if (own.centres.size() != own.buckets * centreWidth(description.options.method, round))
            return Error{folder + ": has no centres for the " + roundNames[round]};
        if (!inOrder(description, round))
            return Error{folder + ": its centres are out of order on the " + roundNames[round]};
    }
    const auto& clusters = description.startingHandClusters;
    const auto above = [&](uint8_t cluster) { return cluster >= description.options.clusters; };
    if (emd && (clusters.empty() || description.options.clusters > strengthWidth ||
                std::any_of(clusters.begin(), clusters.end(), above)))
        return Error{folder + ": its clusters of starting hands are none"};
    return {};
}

Status checkRound(const AbstractionCheck& options, const CardAbstraction& abstraction, int round,
                  uint64_t hands, const Work& work) {
    const AbstractionDescription& description = abstraction.description();
    const ChooseBucket choose = description.options.method == AbstractionMethod::emd
                                    ? byDistance(description, round)
                                    : byPercentile(description, round);
    const RoundIndexer indexer(round);
    std::mutex failing;
    uint64_t firstWrong = UINT64_MAX;
    std::string problem;
    const bool done = forEach(work, hands, [&](size_t i) {
        uint8_t cards[7];
        drawCards(mixBits(options.seed) + static_cast<uint64_t>(round), i, round + 4, cards);
        const size_t hand = hand_index_last(indexer.get(), cards);
        const uint32_t bucket = abstraction.bucket(round, hand);
        const uint32_t wanted = choose(cards);
        if (bucket == wanted)
            return;
        const std::lock_guard<std::mutex> lock(failing);
        if (i < firstWrong) {
            firstWrong = i;
            problem = abstractionFolder(options.directory, options.name) + "/" +
                      bucketFileNames[static_cast<size_t>(round)] + ": hand " +
                      std::to_string(hand) + " has bucket " + std::to_string(bucket) +
                      " and belongs in " + std::to_string(wanted);
        }
    });
    if (!done)
        return stopped();
    if (!problem.empty())
        return Error{problem};
    return {};
}

Status checkPreflop(const CardAbstraction& abstraction, const std::string& folder,
                    const Work& work) {
    const BoardSet rivers(5);
    const auto bins = riverBins(rivers, work);
    if (!bins)
        return Error{bins.error()};
    const auto early = earlyHistograms(EquityHistograms(rivers, *bins), work);
    if (!early)
        return Error{early.error()};
    std::array<uint16_t, roundSizes[0]> wanted;
    if (abstraction.buckets(0) == wanted.size()) {
        wanted = ranksOfStartingHands(*early);
    } else {
        const NearestCentres<HistogramMetric> centres(abstraction.description().rounds[0].centres);
        for (size_t hand = 0; hand < wanted.size(); ++hand)
            wanted[hand] = static_cast<uint16_t>(centres.find(early->preflop[hand].data()).number);
    }
    for (size_t hand = 0; hand < wanted.size(); ++hand)
        if (abstraction.bucket(0, hand) != wanted[hand])
            return Error{folder + "/preflop: hand " + std::to_string(hand) + " has bucket " +
                         std::to_string(abstraction.bucket(0, hand)) + " and belongs in " +
                         std::to_string(wanted[hand])};
    return {};
}

} // namespace

HistogramRow PlainEquities::row() const {
    uint64_t total = 0;
    for (const uint32_t count : bins)
        total += count;
    HistogramRow row;
    uint64_t above = 0;
    for (size_t bin = histogramWidth; bin > 0; --bin) {
        above += bins[bin];
        row[bin - 1] =
            total == turnRiverCount ? static_cast<uint8_t>(above) : scaledCount(above, total);
    }
    return row;
}

PlainEquities plainEquities(const uint8_t* cards, int boardCards) {
    PlainEquities equities;
    uint8_t board[5];
    std::copy_n(cards + 2, boardCards, board);
    uint8_t left[deckCards];
    const size_t cardsLeft = cardsWithout(cards, boardCards + 2, left);
    const auto add = [&] {
        const uint32_t pot = potOnRiver(cards, board);
        ++equities.bins[equityBin(pot)];
        equities.sum += pot;
    };
    for (size_t last = 0; last < cardsLeft; ++last) {
        board[4] = left[last];
        if (boardCards == 4) {
            add();
            continue;
        }
        for (size_t other = 0; other < last; ++other) {
            board[3] = left[other];
            add();
        }
    }
    return equities;
}

Result<std::array<uint64_t, holdemRounds>> checkAbstraction(const AbstractionCheck& options) {
    const auto opened = CardAbstraction::open(options.directory, options.name);
    if (!opened)
        return Error{opened.error()};
    const std::string folder = abstractionFolder(options.directory, options.name);
    if (const Status good = checkCentres(opened->description(), folder); !good)
        return Error{good.error()};
    Work work;
    work.threads = options.threads;
    work.stop = options.stop;
    const auto tell = [&](int round) {
        if (options.progress)
            work.progress = [&options, round](uint64_t done, uint64_t total) {
                options.progress("checking the " +
                                     std::string(roundNames[static_cast<size_t>(round)]),
                                 done, total);
            };
    };
    std::array<uint64_t, holdemRounds> hands{0, (options.hands + 9) / 10, options.hands,
                                             options.hands};
    if (opened->description().options.method == AbstractionMethod::emd) {
        tell(0);
        if (const Status good = checkPreflop(*opened, folder, work); !good)
            return Error{good.error()};
        hands[0] = roundSizes[0];
    }
    for (int round = 1; round < holdemRounds; ++round) {
        tell(round);
        if (const Status good =
                checkRound(options, *opened, round, hands[static_cast<size_t>(round)], work);
            !good)
            return Error{good.error()};
    }
    return hands;
}

} // namespace tamarin
