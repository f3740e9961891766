// Slices of what the table builder makes: equities, clusters, utilities, buckets.
#include "abstraction/boards.h"
#include "abstraction/holding_index.h"
#include "abstraction/large_buffer.h"
#include "abstraction/next_card.h"
#include "abstraction/quantise.h"
#include "abstraction/river_sweep.h"
#include "abstraction/round_indexers.h"
#include "eval/equity_question.h"
#include "eval/exact_equity.h"
#include "eval/hand_table.h"
#include "holdem/auxiliary_deals.h"
#include "holdem/auxiliary_equilibrium.h"
#include "holdem/auxiliary_game.h"
#include "holdem/exact_utilities.h"
#include "signature/parts.h"
#include "support/rng.h"
#include "support/util.h"
#include "table_builder/built_in_games.h"
#include "table_builder/round_boards.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <map>
#include <vector>

namespace tamarin {

namespace {

constexpr size_t boardsOfRound = 16;

void addCounts(Fnv1a& hash, const DealCounts& counts) {
    for (const uint64_t count : counts.best)
        hash.add(count);
    hash.add(counts.deals);
    const Equity equity = equityOf(counts);
    for (const double share : {equity.win, equity.tie, equity.loss, equity.pot})
        hash.add(share);
    hash.add(standardErrorOfPot(counts));
}

// River boards swept one by one, and the indices of their holdings.
void addBoards(Fnv1a& hash, const BoardSet& boards, int round) {
    const RoundIndexer indexer(round);
    const HoldingIndexer holdings(round, *indexer.get());
    std::vector<uint32_t> indices(boards.holdings());
    std::vector<RiverWins> wins(riverHoldings);
    hash.add(uint64_t{boards.size()});
    for (size_t number = 0; number < boards.size(); number += boards.size() / boardsOfRound) {
        for (int i = 0; i < boards.cards(); ++i)
            hash.add(boards.board(number)[i]);
        hash.add(boards.multiplicity(number));
        holdings.indices(boards.board(number), indices.data());
        for (const uint32_t index : indices)
            hash.add(index);
        if (round != 3)
            continue;
        sweepRiver(boards.board(number), wins.data());
        for (const RiverWins count : wins)
            hash.add(count);
    }
}

// The exact equities of every holding on one flop, as the builder finds them: from its rivers.
struct FlopEquities {
    std::vector<double> overOne;
    std::vector<double> overTwo;
};
FlopEquities flopEquities(const BoardSet& rivers, const BoardSet& turns, const uint8_t* flop) {
    std::map<size_t, std::vector<RiverWins>> swept;
    const std::function riverRow = [&](size_t number) -> const RiverWins* {
        std::vector<RiverWins>& wins = swept[number];
        if (wins.empty()) {
            wins.resize(riverHoldings);
            sweepRiver(rivers.board(number), wins.data());
        }
        return wins.data();
    };
    std::map<size_t, std::vector<Wins>> summed;
    const std::function turnRow = [&](size_t number) -> const Wins* {
        std::vector<Wins>& wins = summed[number];
        if (wins.empty()) {
            wins.resize(turns.holdings());
            sumNextCards(rivers, turns.board(number), riverRow, wins.data());
        }
        return wins.data();
    };
    std::vector<Wins> wins(numHoldings(deckCards - 3));
    sumNextCards(turns, flop, turnRow, wins.data());
    FlopEquities equities;
    for (const Wins& count : wins) {
        equities.overOne.push_back(count.overOne / static_cast<double>(flopRivers * riverDeals2));
        equities.overTwo.push_back(count.overTwo / (static_cast<double>(flopRivers) * riverDeals3));
    }
    return equities;
}

// Equities cut into clusters and buckets, and grouped by k-means.
void addClasses(Fnv1a& hash, const FlopEquities& equities) {
    const size_t size = equities.overOne.size();
    const TableRange ranges[] = {rangeOf(equities.overOne), rangeOf(equities.overTwo)};
    for (const TableRange& range : ranges) {
        hash.add(range.min);
        hash.add(range.max);
    }
    std::vector<uint8_t> classes(size);
    clustersOf(equities.overOne, ranges[0], classes.data());
    for (const uint8_t cluster : classes)
        hash.add(cluster);
    holdemBucketsOf(equities.overTwo, ranges[1], equities.overOne, ranges[0], classes.data());
    for (const uint8_t bucket : classes)
        hash.add(bucket);

    std::vector<std::array<double, 2>> points(size);
    std::vector<double*> data(size);
    for (size_t i = 0; i < size; ++i) {
        points[i] = {equities.overOne[i], equities.overTwo[i]};
        data[i] = points[i].data();
    }
    std::array<std::array<double, 2>, 8> centres{};
    std::array<double*, 8> centroids;
    for (size_t c = 0; c < centres.size(); ++c)
        centroids[c] = centres[c].data();
    uint8_t* const labels = k_means(data.data(), static_cast<int>(size), 2,
                                    static_cast<int>(centres.size()), 1e-6, centroids.data());
    for (size_t i = 0; i < size; ++i)
        hash.add(labels[i]);
    std::free(labels);
    for (const auto& centre : centres)
        for (const double at : centre)
            hash.add(at);
}

// One hand a round, exactly and by sampling.
void addEquities(Fnv1a& hash, const SevenCardTable& table) {
    uint8_t cards[] = {50, 45, 41, 25, 5, 38, 3};        // AhKd Qd8d3d Jh2s
    int* const entries = const_cast<int*>(table.data()); // only read
    using Evaluate = double (*)(unsigned char*, unsigned int, int*);
    constexpr std::array<Evaluate, holdemRounds> evaluate{evaluateHand2, evaluateHand5,
                                                          evaluateHand6, evaluateHand7};
    global_urng().seed(31);
    for (size_t round = 0; round < evaluate.size(); ++round) {
        const auto boardCards = static_cast<size_t>(roundBoardCards[round]);
        for (int opponents = 0; opponents <= 2; ++opponents) {
            addCounts(hash,
                      exactEquity(std::span<const uint8_t>(cards, 2),
                                  std::span<const uint8_t>(cards + 2, boardCards), opponents));
            hash.add(evaluate[round](cards, static_cast<unsigned>(opponents) + 1, entries));
        }
    }
    for (const EquityMethod method : {EquityMethod::exact, EquityMethod::sampled}) {
        EquityQuestion question;
        for (const char* range : {"TT+, AKs", "76s, A5s-A4s"}) {
            auto parsed = parseHandRange(range);
            assert(parsed);
            question.players.push_back(*parsed);
        }
        question.board = cardSetOf({41, 25, 5});
        EquityOptions options;
        options.method = method;
        options.deals = 4096;
        options.seed = 37;
        const auto answer = answerEquity(question, options);
        assert(answer);
        addCounts(hash, answer->counts);
    }
}

// Three ranges at once, and four, which are counted in another way.
void addManyRanges(Fnv1a& hash) {
    EquityQuestion question;
    question.board = cardSetOf({41, 25, 5, 30});
    EquityOptions options;
    options.method = EquityMethod::exact;
    for (const char* range : {"TT+, AKs", "76s, A5s-A4s", "KQ, 22", "AJs"}) {
        auto parsed = parseHandRange(range);
        assert(parsed);
        question.players.push_back(*parsed);
        if (question.players.size() < 3)
            continue;
        const auto answer = answerEquity(question, options);
        assert(answer);
        addCounts(hash, answer->counts);
    }
}

// One pattern over and over: quick to lay down however slow the build.
LargeBuffer<uint8_t> madeUpClusters(size_t size) {
    auto clusters = LargeBuffer<uint8_t>::take(size, "clusters");
    if (!clusters)
        throw std::bad_alloc();
    std::vector<uint8_t> pattern(std::min<size_t>(size, 99'991));
    for (size_t i = 0; i < pattern.size(); ++i)
        pattern[i] = static_cast<uint8_t>((i * 2654435761U >> 7U) % AuxiliaryGame::numBuckets);
    for (size_t at = 0; at < size; at += pattern.size())
        std::copy_n(pattern.data(), std::min(pattern.size(), size - at), clusters->data() + at);
    return std::move(*clusters);
}

void startWithRisingChances(AuxiliaryGame& auxiliary) {
    std::array<double, AuxiliaryGame::numBuckets> winProb;
    for (size_t b = 0; b < winProb.size(); ++b)
        winProb[b] = static_cast<double>(b) / 100.0;
    auxiliary.start(winProb);
}

// An auxiliary game over made-up clusters, trained a little, and utilities of its first hands.
void addUtilities(Fnv1a& hash, int players, int round, unsigned long long iterations) {
    const GamePtr game = gameFromText(auxiliaryGameText(players, round));
    const RoundIndexer indexer(round);
    const size_t size = roundSizes[static_cast<size_t>(round)];
    const auto clusters = madeUpClusters(size);
    AuxiliaryGame auxiliary(*game);
    startWithRisingChances(auxiliary);
    const ClusterLookup lookup{indexer.get(), clusters.data()};
    std::minstd_rand0 engine(41);
    AuxiliaryTraining(auxiliary, lookup).run(iterations, engine);
    constexpr size_t hands = 169;
    std::vector<std::array<double, hands>> utilities(static_cast<size_t>(players));
    std::vector<double*> seats;
    for (auto& ofSeat : utilities)
        seats.push_back(ofSeat.data());
    UtilityFiller(auxiliary, lookup, round).fill(0, hands, seats.data(), engine);
    for (const auto& ofSeat : utilities)
        for (const double chips : ofSeat)
            hash.add(chips);
    hash.add(static_cast<uint32_t>(engine()));
}

// The same clusters' game over a few boards, solved and counted out.
void addExactUtilities(Fnv1a& hash, int round) {
    const GamePtr game = gameFromText(auxiliaryGameText(2, round));
    const size_t size = roundSizes[static_cast<size_t>(round)];
    const auto clusters = madeUpClusters(size);
    AuxiliaryGame auxiliary(*game);
    startWithRisingChances(auxiliary);
    const RoundBoards boards(round);
    const size_t step = std::max<size_t>(1, boards.size() / boardsOfRound);
    RankedBoard board;
    ClusterMeetings meetings;
    const auto rank = [&](size_t number) {
        boards.rank(number, board);
        return HoldingOrder(board.values.data(), board.cardsLeft);
    };
    for (size_t number = 0; number < boards.size(); number += step) {
        std::array<uint8_t, numHoldings(deckCards)> cluster;
        const HoldingOrder order = rank(number);
        for (size_t h = 0; h < order.size(); ++h)
            cluster[h] = clusters[board.indices[h]];
        meetings.addBoard(order, cluster.data(), board.weights.data(), board.multiplicity);
    }
    AuxiliaryEquilibrium equilibrium(auxiliary, meetings);
    equilibrium.run(40);
    hash.add(equilibrium.nashConv());
    equilibrium.write();
    const ExactUtilities exact(auxiliary, clusters.data());
    const HoldingOrder order = rank(boards.size() / 2);
    std::array<double, numHoldings(deckCards)> utilities;
    for (size_t seat = 0; seat < 2; ++seat) {
        exact.ofBoard(order, board.indices.data(), seat, utilities.data());
        for (size_t h = 0; h < order.size(); ++h)
            hash.add(utilities[h]);
    }
}

} // namespace

void addTables(Fnv1a& hash, const SevenCardTable& table) {
    const BoardSet flops(3);
    const BoardSet turns(4);
    const BoardSet rivers(5);
    addBoards(hash, flops, 1);
    addBoards(hash, turns, 2);
    addBoards(hash, rivers, 3);

    const FlopEquities equities = flopEquities(rivers, turns, flops.board(1'000));
    for (const double equity : equities.overOne)
        hash.add(equity);
    for (const double equity : equities.overTwo)
        hash.add(equity);
    addClasses(hash, equities);
    addEquities(hash, table);
    addManyRanges(hash);
    for (int round = 0; round < holdemRounds; ++round)
        addUtilities(hash, 2, round, 3);
    addUtilities(hash, 3, 1, 2);
    for (int round = 0; round < holdemRounds; ++round)
        addExactUtilities(hash, round);
}

} // namespace tamarin
