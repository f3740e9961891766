#include "sampling/sampling_trainer.h"

#include "abstraction/work.h"
#include "training/checkpoint_frame.h"

#include <algorithm>
#include <atomic>
#include <cassert>
#include <cstdio>

namespace tamarin {

namespace {

constexpr CheckpointKind samplingKind{"tmrnescp", 1, "a checkpoint of sampled training"};
constexpr uint64_t firstBlock = 8;      // batches
constexpr int32_t largestSum = 1 << 28; // beyond, all strategy sums are halved
constexpr size_t scaledTogether = size_t{1} << 16U;
constexpr int32_t pruneBelow = SamplingTrainer::leastRegret / 8; // some hundred pots
constexpr size_t mostSeats = 4;                                  // showdowns have 75 outcomes then

std::vector<uint32_t> bucketsOf(const Game& game, const SeatBuckets& buckets) {
    std::vector<uint32_t> counts;
    for (int round = 0; round < game.numRounds; ++round)
        counts.push_back(buckets.numBuckets(round));
    return counts;
}

// The power of two that brings the most that a seat can win or lose to 2^16 or above, and below
// 2^17.
double unitsFor(const MenuTree& tree) {
    double most = 1;
    for (const auto& settlement : tree.settlements()) {
        double pot = 0;
        for (const int32_t spent : settlement.spent)
            pot += spent;
        most = std::max(most, pot);
    }
    double units = 1;
    while (most * units < 0x1p16)
        units *= 2;
    while (most * units >= 0x1p17)
        units /= 2;
    return units;
}

// A run of batches of one weight.
struct WeightBlock {
    uint64_t begin = 0;
    uint64_t end = firstBlock;

    void moveOn() {
        begin = end;
        end += std::max(firstBlock, end / 8);
    }
    // Its weight, which is that of its middle, over that of the next.
    double overNext() const {
        WeightBlock next = *this;
        next.moveOn();
        return static_cast<double>(begin + end) / static_cast<double>(next.begin + next.end);
    }
};

WeightBlock blockOf(uint64_t batch) {
    WeightBlock block;
    while (batch >= block.end)
        block.moveOn();
    return block;
}

uint64_t walkSeed(uint64_t seed, uint64_t iteration, size_t seat) {
    return mixBits((mixBits(seed + splitMixStep) ^ iteration * MAX_PLAYERS ^ (seat + 1)) +
                   2 * splitMixStep);
}

} // namespace

Status SamplingTrainer::fits(const Game& game) {
    if (game.numPlayers > mostSeats)
        return Error{"sampled training is for up to " + std::to_string(mostSeats) +
                     " players, and the game has " + std::to_string(game.numPlayers)};
    return {};
}

SamplingTrainer::SamplingTrainer(const Game& game, const MenuTree& tree, const SeatBuckets& buckets,
                                 const SamplingOptions& options)
    : game_(game), tree_(tree), options_(options),
      threads_(Work{options.threads, {}, {}}.threadCount()),
      sets_(tree, game.numPlayers, bucketsOf(game, buckets)), sampler_(game, buckets),
      showdowns_(game, tree.settlements()), units_(unitsFor(tree)) {
    assert(fits(game));
    assert(options.batch >= 1 && options.batch <= mostBatch);
    deals_.resize(options.batch);
    logs_.assign(size_t{options.batch} * game.numPlayers, WalkLog(static_cast<size_t>(threads_)));
    walkers_ = std::vector<ExternalWalk>(static_cast<size_t>(threads_), ExternalWalk(sets_));
}

uint64_t SamplingTrainer::memory() const {
    // A walk's log is seldom longer than a few thousand numbers; each thread has one under way.
    return sets_.memory() + deals_.size() * sizeof(BatchDeal) + logs_.size() * uint64_t{32'768};
}

void SamplingTrainer::run(uint64_t iterations) {
    for (uint64_t done = 0; done < iterations; done += options_.batch)
        runBatch();
}

void SamplingTrainer::runBatch() {
    assert(iteration() < mostIterations);
    dealBatch();
    ParallelErrors errors;
    std::atomic<size_t> next{0};
#pragma omp parallel num_threads(threads_)
    errors.run([&] {
        ExternalWalk& walker = walkers_[static_cast<size_t>(omp_get_thread_num())];
        for (size_t job = next++; job < logs_.size() && !errors.met(); job = next++)
            walk(job, walker);
    });
    errors.rethrow();
    // Nothing in here throws.
#pragma omp parallel for num_threads(threads_) schedule(static, 1)
    for (int part = 0; part < threads_; ++part)
        addUp(static_cast<size_t>(part));
    const WeightBlock block = blockOf(batches_++);
    if (batches_ == block.end)
        scale(block.overNext());
}

void SamplingTrainer::dealBatch() {
    const uint64_t first = iteration();
    // Nothing in here throws.
#pragma omp parallel for num_threads(threads_) schedule(static)
    for (size_t i = 0; i < deals_.size(); ++i) {
        sampler_.draw(options_.seed, first + i, deals_[i].cards);
        sampler_.lookUp(deals_[i].cards, deals_[i].deal);
    }
    for (BatchDeal& dealt : deals_) {
        dealt.deal.outcome = showdowns_.outcomeOf(dealt.cards);
        takeOutcome(dealt.deal.outcome);
    }
}

// The table of an outcome that is met for the first time.
void SamplingTrainer::takeOutcome(uint32_t outcome) {
    if (outcome < payoffs_.size())
        return;
    const size_t rows = tree_.settlements().size();
    std::vector<int32_t> table(rows * game_.numPlayers);
    for (size_t seat = 0; seat < game_.numPlayers; ++seat)
        for (size_t row = 0; row < rows; ++row) {
            const double value =
                showdowns_.table(outcome)[row * showdowns_.stride() + seat] * units_;
            table[seat * rows + row] = static_cast<int32_t>(value + (value < 0 ? -0.5 : 0.5));
        }
    payoffs_.push_back(std::move(table));
}

void SamplingTrainer::walk(size_t job, ExternalWalk& walker) {
    const size_t i = job / game_.numPlayers;
    const size_t seat = job % game_.numPlayers;
    const SampledDeal& deal = deals_[i].deal;
    const uint64_t random = walkSeed(options_.seed, iteration() + i, seat);
    logs_[job].clear();
    const ExternalWalk::Pruning pruning{options_.prune && mixBits(random) % 16 != 0, pruneBelow};
    walker.run(deal, seat, payoffsOf(deal.outcome, seat), random, pruning, logs_[job]);
}

void SamplingTrainer::addUp(size_t part) {
    for (const WalkLog& log : logs_)
        log.forEach(part, [&](const WalkLog::Entry& entry) {
            if (entry.kind == WalkLog::Kind::sums) {
                int32_t* const sums = sets_.sums() + entry.place;
                for (size_t i = 0; i < entry.count; ++i)
                    sums[i] += entry.numbers[i];
                return;
            }
            int32_t* const regrets = sets_.regrets() + entry.place;
            for (size_t i = 0; i < entry.count; ++i)
                regrets[i] = std::clamp(regrets[i] + entry.numbers[i], leastRegret, mostRegret);
        });
}

// Towards 0.
void SamplingTrainer::scale(double factor) {
    const auto multiply = [this](std::span<int32_t> numbers, double by) {
        int32_t largest = 0;
        // Nothing in here throws.
#pragma omp parallel for num_threads(threads_) reduction(max : largest)
        for (size_t begin = 0; begin < numbers.size(); begin += scaledTogether) {
            const size_t end = std::min(begin + scaledTogether, numbers.size());
            for (size_t i = begin; i < end; ++i) {
                numbers[i] = static_cast<int32_t>(numbers[i] * by);
                largest = std::max(largest, numbers[i]);
            }
        }
        return largest;
    };
    multiply(sets_.allRegrets(), factor);
    if (multiply(sets_.allSums(), factor) > largestSum)
        multiply(sets_.allSums(), 0.5);
}

double SamplingTrainer::weightOf(uint64_t batches) {
    double weight = 0;
    for (WeightBlock block;; block.moveOn()) {
        if (batches < block.end)
            return weight + static_cast<double>(batches - block.begin);
        weight = (weight + static_cast<double>(block.end - block.begin)) * block.overNext();
    }
}

TrainingMeasure SamplingTrainer::measure() const {
    int64_t sum = 0;
    for (const int32_t regret : sets_.allRegrets())
        sum += std::max(regret, 0);
    const double weight = std::max(weightOf(batches_) * options_.batch, 1.0);
    return AverageRegret{static_cast<double>(sum) / units_ / weight /
                         static_cast<double>(sets_.numSets())};
}

std::string SamplingTrainer::configuration(uint64_t abstraction, uint64_t menu) const {
    const auto hex = [](uint64_t number) {
        char text[17];
        std::snprintf(text, sizeof text, "%016llx", static_cast<unsigned long long>(number));
        return std::string(text);
    };
    std::string text = gameConfig(game_) + "seed = " + std::to_string(options_.seed) + '\n';
    for (size_t round = 0; round < sets_.buckets().size(); ++round)
        text += "buckets of round " + std::to_string(round) + " = " +
                std::to_string(sets_.buckets()[round]) + '\n';
    return text + "card abstraction = " + hex(abstraction) + "\nmenu = " + hex(menu) +
           "\nbatch = " + std::to_string(options_.batch) +
           "\npruning = " + (options_.prune ? "1" : "0") + '\n';
}

Status SamplingTrainer::writeCheckpoint(const std::string& path, uint64_t abstraction,
                                        uint64_t menu, FileSystem& files) const {
    return writeCheckpointFile(path, samplingKind, configuration(abstraction, menu), iteration(),
                               {std::as_bytes(sets_.allRegrets()), std::as_bytes(sets_.allSums())},
                               files);
}

Status SamplingTrainer::readCheckpoint(const std::string& path, uint64_t abstraction, uint64_t menu,
                                       FileSystem& files) {
    Result<CheckpointFile> file = CheckpointFile::open(path, samplingKind, files);
    if (!file)
        return Error{file.error()};
    if (Status same = file->madeWith(configuration(abstraction, menu)); !same)
        return same;
    if (Status read = file->read(
            {std::as_writable_bytes(sets_.allRegrets()), std::as_writable_bytes(sets_.allSums())});
        !read)
        return read;
    batches_ = file->iteration() / options_.batch;
    return {};
}

} // namespace tamarin
