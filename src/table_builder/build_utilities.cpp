// Utilities: the auxiliary game of each round, solved and counted out.
//
// All of it is exact: how often the clusters meet is counted over every board, hand and opponent,
// the game over these numbers is solved until hardly anything can be gained, and what each hand
// wins in it is the mean over every opponent. So the tables depend on nothing but their sources.

#include "abstraction/large_buffer.h"
#include "abstraction/table_names.h"
#include "abstraction/table_output.h"
#include "holdem/auxiliary_equilibrium.h"
#include "holdem/exact_utilities.h"
#include "support/background_commits.h"
#include "table_builder/build_steps.h"
#include "table_builder/built_in_games.h"
#include "table_builder/round_boards.h"
#include "table_builder/table_parts.h"

#include <algorithm>
#include <array>
#include <span>

namespace tamarin {

namespace {

// CFR+ comes to 1e-5 of a chip within some hundred iterations of a millisecond.
constexpr double enoughNashConv = 1e-5;
constexpr size_t iterationsAtATime = 100;
constexpr size_t mostIterations = 20'000;

// A utility as it is gathered, of both seats: 24 bits of each.
using Gathered = std::array<float, 2>;

struct Round {
    int number;
    size_t hands;
    GamePtr game;
    RoundBoards boards;
    LargeBuffer<uint8_t> clusters;

    std::string name() const { return roundNames[static_cast<size_t>(number)]; }
};

// The clusters, copied onto huge pages: they are looked up all over the table, and with small pages
// every look-up would wait for an address first.
Result<LargeBuffer<uint8_t>> readClusters(const BuildOptions& options, int round) {
    const size_t hands = roundSizes[static_cast<size_t>(round)];
    const auto file =
        MappedFile::open(inDirectory(options.directory, clusterPath(2, round)), hands);
    if (!file)
        return Error{file.error()};
    auto clusters = LargeBuffer<uint8_t>::take(hands, "clusters");
    if (!clusters)
        return clusters;
    std::copy_n(file->as<uint8_t>().data(), hands, clusters->data());
    // The file has been looked into, but what is counted with is this copy: a byte that changed
    // since must not reach beyond the clusters.
    uint8_t largest = 0; // std::max_element() keeps the place, too, and goes byte by byte
    for (const uint8_t cluster : std::span(clusters->data(), hands))
        largest = std::max(largest, cluster);
    if (largest >= AuxiliaryGame::numBuckets)
        return Error{clusterPath(2, round) + " holds clusters above 100: delete it"};
    return clusters;
}

Result<ClusterMeetings> countMeetings(const Round& round, const Work& work) {
    std::vector<ClusterMeetings> ofThreads(static_cast<size_t>(work.threadCount()));
    const bool counted = forEach(work, round.boards.size(), [&](size_t b) {
        RankedBoard board;
        round.boards.rank(b, board);
        std::array<uint8_t, numHoldings(deckCards)> clusters;
        for (size_t h = 0; h < board.holdings(); ++h)
            clusters[h] = round.clusters[board.indices[h]];
        ofThreads[static_cast<size_t>(omp_get_thread_num())].addBoard(
            HoldingOrder(board.values.data(), board.cardsLeft), clusters.data(),
            board.weights.data(), board.multiplicity);
    });
    if (!counted)
        return stopped();
    ClusterMeetings meetings;
    for (const ClusterMeetings& ofThread : ofThreads)
        meetings.add(ofThread);
    return meetings;
}

// A game solved for the meetings of its round's clusters.
Status solve(const BuildOptions& options, const Work& work, const Round& round,
             AuxiliaryGame& auxiliary) {
    const auto equities = MappedFile::open(
        inDirectory(options.directory, equityPath(2, round.number)), round.hands * sizeof(double));
    if (!equities)
        return Error{equities.error()};
    const TableRange range = rangeOfFile(*equities, work.threads);
    std::array<double, AuxiliaryGame::numBuckets> winProb;
    for (size_t b = 0; b < winProb.size(); ++b)
        winProb[b] = static_cast<double>(b) / clusterLevels * (range.max - range.min) + range.min;
    auxiliary.start(winProb);

    const auto meetings =
        countMeetings(round, reporting(options, work, "Counting " + round.name() + " meetings"));
    if (!meetings)
        return Error{meetings.error()};
    AuxiliaryEquilibrium equilibrium(auxiliary, *meetings);
    size_t iterations = 0;
    do {
        if (work.shouldStop())
            return stopped();
        equilibrium.run(iterationsAtATime);
        iterations += iterationsAtATime;
    } while (iterations < mostIterations && equilibrium.nashConv() > enoughNashConv);
    if (const double left = equilibrium.nashConv(); left > enoughNashConv && options.log)
        options.log("the auxiliary game of the " + round.name() + " is solved to " +
                    std::to_string(left) + " chips alone");
    equilibrium.write();
    return {};
}

// Both seats are counted in one go, but only the files asked for are written.
Status countOut(const BuildOptions& options, const Work& work, const Round& round,
                const AuxiliaryGame& auxiliary, std::vector<TableOutput>& outputs) {
    const uint64_t allowed =
        options.memory == 0 ? UINT64_MAX
                            : options.memory - std::min(options.memory, round.hands + otherMemory);
    const size_t window = std::min(round.hands, std::max(leastWindow, allowed) / sizeof(Gathered));
    auto gathered = LargeBuffer<Gathered>::take(window, "gathering utilities");
    if (!gathered)
        return Error{gathered.error()};
    const ExactUtilities exact(auxiliary, round.clusters.data());
    const size_t passes = (round.hands + window - 1) / window;
    for (size_t pass = 0; pass < passes; ++pass) {
        const size_t begin = pass * window;
        const size_t count = std::min(window, round.hands - begin);
        Work part = reporting(options, work, "Counting " + round.name() + " utilities");
        part.progress = [&, whole = part.progress](uint64_t done, uint64_t total) {
            whole(pass * total + done, passes * total);
        };
        const bool counted = forEach(part, round.boards.size(), [&](size_t b) {
            RankedBoard board;
            round.boards.rank(b, board);
            const HoldingOrder order(board.values.data(), board.cardsLeft);
            std::array<double, numHoldings(deckCards)> utilities;
            for (size_t seat = 0; seat < 2; ++seat) {
                exact.ofBoard(order, board.indices.data(), seat, utilities.data());
                for (size_t h = 0; h < board.holdings(); ++h)
                    if (board.indices[h] - begin < count)
                        (*gathered)[board.indices[h] - begin][seat] =
                            static_cast<float>(utilities[h]);
            }
        });
        if (!counted)
            return stopped();
        const Status written = onEachOutput(outputs, work, [&](TableOutput& output) {
            return appendEntries(output.file, count, work, [&](size_t i) {
                return static_cast<double>((*gathered)[i][output.which]);
            });
        });
        if (!written)
            return written;
    }
    return {};
}

Status buildRound(const BuildOptions& options, const Work& work, int number, const Files& files,
                  BackgroundCommits& commits) {
    std::vector<TableOutput> outputs;
    for (const TableFile* table : files) {
        if (table->round != number)
            continue;
        auto file = AtomicFile::create(inDirectory(options.directory, table->path));
        if (!file)
            return Error{file.error()};
        outputs.push_back({static_cast<size_t>(table->seat), std::move(*file)});
    }
    if (outputs.empty())
        return {};
    auto game = auxiliaryGameIn(options.directory, 2, number);
    if (!game)
        return Error{game.error()};
    auto clusters = readClusters(options, number);
    if (!clusters)
        return Error{clusters.error()};
    const Round round{number, roundSizes[static_cast<size_t>(number)], std::move(*game),
                      RoundBoards(number), std::move(*clusters)};
    AuxiliaryGame auxiliary(*round.game);
    if (Status solved = solve(options, work, round, auxiliary); !solved)
        return solved;
    if (Status counted = countOut(options, work, round, auxiliary, outputs); !counted)
        return counted;
    for (TableOutput& output : outputs)
        commits.add(std::move(output.file));
    return {};
}

} // namespace

uint64_t leastUtilityMemory() {
    return roundSizes[3] + leastWindow + otherMemory;
}

Status buildUtilities(const BuildOptions& options, const Work& work, const Files& files) {
    BackgroundCommits commits;
    for (int round = holdemRounds; round-- > 0;) // the longest first
        if (Status built = buildRound(options, work, round, files, commits); !built)
            return built;
    return commits.wait();
}

} // namespace tamarin
