// Utilities: the auxiliary game of each round, solved and sampled.
//
// The rounds are trained side by side, since one training is a chain of updates that cannot be
// shared out; sampling is shared out in blocks. Every training and every block has an engine of its
// own, seeded from the seed, the round and the block's number.

#include "abstraction/large_buffer.h"
#include "abstraction/table_names.h"
#include "holdem/auxiliary_deals.h"
#include "support/file.h"
#include "support/parallel_errors.h"
#include "support/split_mix.h"
#include "table_builder/build_steps.h"
#include "table_builder/built_in_games.h"
#include "table_builder/table_parts.h"

#include <algorithm>
#include <array>
#include <memory>

namespace tamarin {

namespace {

constexpr size_t blockHands = 4096;
constexpr size_t blocksAtOnce = 128; // of each seat: four megabytes
constexpr uint64_t trainingPart = 100;

// An engine for one purpose, far from those of neighbouring rounds, purposes and seeds.
std::minstd_rand0 engineFor(uint64_t seed, int round, uint64_t purpose) {
    uint64_t mixed = seed;
    for (const uint64_t part : {static_cast<uint64_t>(round) + 1, purpose + 1})
        mixed = mixBits(mixed + part * splitMixStep);
    return std::minstd_rand0(static_cast<uint32_t>(mixed % (std::minstd_rand0::modulus - 1) + 1));
}

struct RoundGame {
    int round;
    GamePtr game;
    RoundIndexer indexer;
    LargeBuffer<uint8_t> clusters;
    std::unique_ptr<AuxiliaryGame> auxiliary;

    ClusterLookup lookup() const { return {indexer.get(), clusters.data()}; }
};

Result<std::unique_ptr<RoundGame>> openRound(const BuildOptions& options, const Work& work,
                                             int round) {
    const size_t hands = roundSizes[static_cast<size_t>(round)];
    auto game = auxiliaryGameIn(options.directory, 2, round);
    if (!game)
        return Error{game.error()};
    const auto clusterFile =
        MappedFile::open(inDirectory(options.directory, clusterPath(2, round)), hands);
    if (!clusterFile)
        return Error{clusterFile.error()};
    // Copied onto huge pages: clusters are looked up all over the table, and with small pages every
    // look-up would wait for an address first. A third off the river's training.
    auto clusters = LargeBuffer<uint8_t>::take(hands, "clusters");
    if (!clusters)
        return Error{clusters.error()};
    std::copy_n(clusterFile->as<uint8_t>().data(), hands, clusters->data());
    auto equities = MappedFile::open(inDirectory(options.directory, equityPath(2, round)),
                                     hands * sizeof(double));
    if (!equities)
        return Error{equities.error()};
    // The file has been looked into, but what is trained on is this copy: a byte that changed since
    // must not reach beyond the buckets.
    if (*std::max_element(clusters->data(), clusters->data() + hands) >= AuxiliaryGame::numBuckets)
        return Error{clusterPath(2, round) + " holds clusters above 100: delete it"};

    const TableRange range = rangeOfFile(*equities, work.threads);
    std::array<double, AuxiliaryGame::numBuckets> winProb;
    for (size_t b = 0; b < winProb.size(); ++b)
        winProb[b] = static_cast<double>(b) / 100.0 * (range.max - range.min) + range.min;
    auto opened = std::unique_ptr<RoundGame>(
        new RoundGame{round, std::move(*game), RoundIndexer(round), std::move(*clusters), nullptr});
    opened->auxiliary = std::make_unique<AuxiliaryGame>(*opened->game);
    opened->auxiliary->start(winProb);
    return opened;
}

Status train(const BuildOptions& options, const Work& work,
             const std::vector<std::unique_ptr<RoundGame>>& rounds) {
    const uint64_t iterations = options.trainingIterations;
    std::atomic<uint64_t> done{0};
    std::atomic<bool> stopping{false};
    ParallelErrors errors;
    const auto trainRound = [&](RoundGame& round) {
        AuxiliaryTraining training(*round.auxiliary, round.lookup());
        std::minstd_rand0 engine = engineFor(options.seed, round.round, 0);
        for (uint64_t it = 0; it < iterations && !stopping && !errors.met(); it += trainingPart) {
            const uint64_t part = std::min(trainingPart, iterations - it);
            training.run(part, engine);
            const uint64_t now = done += part;
            if (work.shouldStop())
                stopping = true;
            if (omp_get_thread_num() == 0 && options.progress)
                options.progress("Training auxiliary games", now, iterations * rounds.size());
        }
    };
#pragma omp parallel for schedule(dynamic, 1) num_threads(work.threadCount())
    for (size_t r = 0; r < rounds.size(); ++r)
        errors.run([&] { trainRound(*rounds[r]); });
    errors.rethrow();
    if (options.progress)
        options.progress("Training auxiliary games", done, iterations * rounds.size());
    return stopping ? Status(stopped()) : Status();
}

// Both seats are sampled in one go, but only the files asked for are written: the other one, good
// already, may come from another seed.
Status fill(const BuildOptions& options, const Work& work, const RoundGame& round,
            const Files& wanted) {
    const size_t hands = roundSizes[static_cast<size_t>(round.round)];
    const UtilityFiller filler(*round.auxiliary, round.lookup(), round.round);
    struct Output {
        size_t seat;
        AtomicFile file;
    };
    std::vector<Output> outputs;
    for (const TableFile* table : wanted) {
        if (table->round != round.round)
            continue;
        auto file = AtomicFile::create(inDirectory(options.directory, table->path));
        if (!file)
            return Error{file.error()};
        outputs.push_back({static_cast<size_t>(table->seat), std::move(*file)});
    }
    const std::string step =
        "Sampling " + std::string(roundNames[static_cast<size_t>(round.round)]) + " utilities";
    std::array<std::vector<double>, 2> utilities;
    for (auto& ofSeat : utilities)
        ofSeat.resize(std::min(hands, blockHands * blocksAtOnce));
    for (size_t first = 0; first < hands; first += utilities[0].size()) {
        const size_t last = std::min(first + utilities[0].size(), hands);
        const size_t blocks = (last - first + blockHands - 1) / blockHands;
        const auto fillBlock = [&](size_t b) {
            if (work.shouldStop())
                return;
            const size_t begin = first + b * blockHands;
            double* const at[] = {&utilities[0][begin - first], &utilities[1][begin - first]};
            std::minstd_rand0 engine = engineFor(options.seed, round.round, 1 + begin / blockHands);
            filler.fill(begin, std::min(begin + blockHands, last), at, engine);
        };
        ParallelErrors errors;
#pragma omp parallel for schedule(dynamic, 1) num_threads(work.threadCount())
        for (size_t b = 0; b < blocks; ++b)
            errors.run([&] { fillBlock(b); });
        errors.rethrow();
        if (work.shouldStop())
            return stopped();
        for (Output& output : outputs)
            if (Status written = output.file.write(utilities[output.seat].data(),
                                                   (last - first) * sizeof(double));
                !written)
                return written;
        if (options.progress)
            options.progress(step, last, hands);
    }
    for (Output& output : outputs)
        if (Status committed = output.file.commit(); !committed)
            return committed;
    return {};
}

} // namespace

Status buildUtilities(const BuildOptions& options, const Work& work, const Files& files) {
    // The longest first.
    std::vector<std::unique_ptr<RoundGame>> rounds;
    for (int round = holdemRounds; round-- > 0;) {
        if (std::none_of(files.begin(), files.end(),
                         [&](const TableFile* file) { return file->round == round; }))
            continue;
        auto opened = openRound(options, work, round);
        if (!opened)
            return Error{opened.error()};
        rounds.push_back(std::move(*opened));
    }
    if (Status trained = train(options, work, rounds); !trained)
        return trained;
    for (const auto& round : rounds)
        if (Status filled = fill(options, work, *round, files); !filled)
            return filled;
    return {};
}

} // namespace tamarin
