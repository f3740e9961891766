#include "training/equilibrium.h"

#include "support/parallel_errors.h"
#include "support/split_mix.h"
#include "tree/deck.h"
#include "tree/regret_matching.h"

#include <algorithm>
#include <cassert>
#include <cmath>

namespace tamarin {

namespace {

// Deals of one batch: enough for the vector loops, few enough to share a large game among threads.
// Fixed, because the order of additions, and so the sums, hang on it.
constexpr size_t batchSize = 1024;

} // namespace

struct EquilibriumTrainer::Batch {
    size_t size = 0;
    std::vector<double> weight;
    std::vector<const double*> paid;          // the outcome's settlements
    std::vector<std::vector<uint32_t>> field; // [seat][deal]

    void resize(size_t deals, size_t seats) {
        size = deals;
        weight.resize(deals);
        paid.resize(deals);
        field.resize(seats);
        for (auto& of : field)
            of.resize(deals);
    }
    void set(size_t at, const SmallGame& game, size_t deal, double dealWeight) {
        const DealTable& deals = game.keyDeals();
        weight[at] = dealWeight;
        paid[at] = game.payoffs().table(deals.outcome[deal]);
        for (size_t p = 0; p < field.size(); ++p)
            field[p][at] = deals.field[p][deal];
    }
};

EquilibriumTrainer::EquilibriumTrainer(const SmallGame& game, const TrainerConfig& config)
    : SmallGameTrainer(game, config.threads), config_(config), current_(uniformProfile(game)),
      nodesOf_(game.game().numPlayers), fields_(static_cast<size_t>(numCardFields(game.game()))) {
    state_.random = config.seed;
    state_.sets.resize(game.layout().numSets());
    const auto& nodes = game.tree().nodes();
    for (size_t n = 0; n < nodes.size(); ++n)
        nodesOf_[nodes[n].player].push_back(n);
    ownReach_.resize(nodes.size() * numAbstractedActions * fields_);

    const size_t seats = game.game().numPlayers;
    const size_t deals = config.sampledDeals != 0 ? config.sampledDeals : game.keyDeals().size;
    for (size_t first = 0; first < deals; first += batchSize) {
        auto batch = std::make_unique<Batch>();
        batch->resize(std::min(batchSize, deals - first), seats);
        if (config.sampledDeals == 0)
            for (size_t i = 0; i < batch->size; ++i)
                batch->set(i, game, first + i, game.keyDeals().weight[first + i]);
        batches_.push_back(std::move(batch));
    }
    gained_.assign(batches_.size(), std::vector<Shares>(game.layout().numSets()));
}

EquilibriumTrainer::~EquilibriumTrainer() = default;

// One seat's walk over a batch: every number below is a vector with one entry a deal.
class EquilibriumTrainer::Pass {
public:
    Pass(const SmallGame& game, const Profile& current, const Batch& batch, size_t seat,
         std::vector<Shares>& gained)
        : game_(game), nodes_(game.tree().nodes()), current_(current), batch_(batch), seat_(seat),
          gained_(gained) {
        static thread_local std::vector<double> space;
        space_ = &space;
        used_ = 0;
    }

    void run() {
        const size_t depth = 4 * depthOf(0) + 4;
        if (space_->size() < depth * batch_.size)
            space_->resize(depth * batch_.size);
        double* const value = take();
        visit(0, batch_.weight.data(), value);
    }

private:
    double* take() { return space_->data() + batch_.size * used_++; }

    size_t depthOf(int32_t child) const {
        if (child < 0)
            return 0;
        size_t deepest = 0;
        for (const int32_t below : nodes_[static_cast<size_t>(child)].child)
            if (below != CompiledTree::noChild)
                deepest = std::max(deepest, depthOf(below));
        return deepest + 1;
    }

    // value = reach x the seat's value at child, where reach is the probability of the deal and of
    // the others' play to here.
    void visit(int32_t child, const double* reach, double* value) {
        if (child < 0) {
            const size_t at = static_cast<size_t>(~child) * game_.payoffs().stride() + seat_;
            for (size_t d = 0; d < batch_.size; ++d)
                value[d] = reach[d] * batch_.paid[d][at];
            return;
        }
        const CompiledTree::Node& node = nodes_[static_cast<size_t>(child)];
        const size_t start = game_.layout().index(node, 0);
        const size_t stride = game_.layout().index(node, 1) - start;
        const uint32_t* const field = batch_.field[node.player].data();
        if (node.player == seat_)
            act(node, start, stride, field, reach, value);
        else
            wait(node, start, stride, field, reach, value);
    }

    void wait(const CompiledTree::Node& node, size_t start, size_t stride, const uint32_t* field,
              const double* reach, double* value) {
        double* const below = take();
        double* const part = take();
        std::fill_n(value, batch_.size, 0.0);
        for (size_t a = 0; a < numAbstractedActions; ++a) {
            if (node.child[a] == CompiledTree::noChild)
                continue;
            double any = 0.0;
            for (size_t d = 0; d < batch_.size; ++d) {
                below[d] = reach[d] * current_[start + field[d] * stride][a];
                any += below[d];
            }
            if (any == 0.0)
                continue;
            visit(node.child[a], below, part);
            for (size_t d = 0; d < batch_.size; ++d)
                value[d] += part[d];
        }
        used_ -= 2;
    }

    void act(const CompiledTree::Node& node, size_t start, size_t stride, const uint32_t* field,
             const double* reach, double* value) {
        double* part[numAbstractedActions] = {};
        size_t taken = 0;
        std::fill_n(value, batch_.size, 0.0);
        for (size_t a = 0; a < numAbstractedActions; ++a) {
            if (node.child[a] == CompiledTree::noChild)
                continue;
            part[a] = take();
            ++taken;
            visit(node.child[a], reach, part[a]);
            for (size_t d = 0; d < batch_.size; ++d)
                value[d] += current_[start + field[d] * stride][a] * part[a][d];
        }
        for (size_t a = 0; a < numAbstractedActions; ++a) {
            if (part[a] == nullptr)
                continue;
            for (size_t d = 0; d < batch_.size; ++d)
                gained_[start + field[d] * stride][a] += part[a][d] - value[d];
        }
        used_ -= taken;
    }

    const SmallGame& game_;
    const std::vector<CompiledTree::Node>& nodes_;
    const Profile& current_;
    const Batch& batch_;
    size_t seat_;
    std::vector<Shares>& gained_;
    std::vector<double>* space_;
    size_t used_;
};

void EquilibriumTrainer::run(uint64_t iterations) {
    for (uint64_t i = 0; i < iterations; ++i)
        iterate();
}

void EquilibriumTrainer::iterate() {
    ++state_.iteration;
    if (config_.sampledDeals != 0)
        drawDeals();
    for (size_t seat = 0; seat < nodesOf_.size(); ++seat) {
        walk(seat);
        addToAverage(seat);
        update(seat);
    }
}

// By SplitMix64, whose whole state is one word of the checkpoint.
void EquilibriumTrainer::drawDeals() {
    const DealTable& deals = game_.keyDeals();
    for (const auto& batch : batches_)
        for (size_t i = 0; i < batch->size; ++i) {
            double left = unitInterval(mixBits(state_.random += splitMixStep));
            size_t deal = 0;
            while (deal + 1 < deals.size && left >= deals.weight[deal])
                left -= deals.weight[deal++];
            batch->set(i, game_, deal, 1.0 / config_.sampledDeals);
        }
}

void EquilibriumTrainer::walk(size_t seat) {
    const auto count = static_cast<int>(batches_.size());
    const int team = threads_;
    const auto walkBatch = [&](size_t i) {
        for (const size_t n : nodesOf_[seat])
            for (size_t field = 0; field < fields_; ++field)
                gained_[i][game_.layout().index(game_.tree().nodes()[n], field)] = {};
        Pass(game_, current_, *batches_[i], seat, gained_[i]).run();
    };
    ParallelErrors errors;
#pragma omp parallel for schedule(dynamic)                                                         \
    num_threads(team > 0 ? team : count) if (count > 1 && team != 1)
    for (int b = 0; b < count; ++b)
        errors.run([&] { walkBatch(static_cast<size_t>(b)); });
    errors.rethrow();
}

void EquilibriumTrainer::addToAverage(size_t seat) {
    const auto t = static_cast<double>(state_.iteration);
    double weight = 1.0;
    if (config_.algorithm == Algorithm::cfrPlus || config_.algorithm == Algorithm::linear)
        weight = t;
    else if (config_.algorithm != Algorithm::cfr)
        weight = t * t;
    for (const size_t n : nodesOf_[seat]) {
        const CompiledTree::Node& node = game_.tree().nodes()[n];
        for (size_t field = 0; field < fields_; ++field) {
            const double reach =
                node.ownEdge == CompiledTree::noEdge
                    ? 1.0
                    : ownReach_[static_cast<size_t>(node.ownEdge) * fields_ + field];
            const size_t set = game_.layout().index(node, field);
            for (size_t a = 0; a < numAbstractedActions; ++a) {
                const double below = reach * current_[set][a];
                ownReach_[(n * numAbstractedActions + a) * fields_ + field] = below;
                state_.sets[set].strategy[a] += weight * below;
            }
        }
    }
}

void EquilibriumTrainer::update(size_t seat) {
    const auto t = static_cast<double>(state_.iteration);
    const bool floored =
        config_.algorithm == Algorithm::cfrPlus || config_.algorithm == Algorithm::predictive;
    double keepPositive = 1.0;
    double keepNegative = 1.0;
    if (config_.algorithm == Algorithm::linear) {
        keepPositive = keepNegative = t / (t + 1.0);
    } else if (config_.algorithm == Algorithm::discounted) {
        // HoldemTrainer takes the root of the cube instead, which rounds differently. Both stay as
        // they are: strategies, checkpoints and the signature hang on these bits.
        const double power = t * std::sqrt(t);
        keepPositive = power / (power + 1.0);
        keepNegative = 0.5;
    }
    for (const size_t n : nodesOf_[seat]) {
        const CompiledTree::Node& node = game_.tree().nodes()[n];
        for (size_t field = 0; field < fields_; ++field) {
            const size_t set = game_.layout().index(node, field);
            TrainerNumbers& numbers = state_.sets[set];
            for (size_t a = 0; a < numAbstractedActions; ++a) {
                double gained = 0.0;
                for (const auto& batch : gained_)
                    gained += batch[set][a];
                double regret = numbers.regret[a] + gained;
                if (floored)
                    regret = std::max(regret, 0.0);
                numbers.regret[a] = regret * (regret > 0.0 ? keepPositive : keepNegative);
                numbers.prediction[a] = gained;
            }
        }
        chooseStrategy(n);
    }
}

void EquilibriumTrainer::chooseStrategy(size_t n) {
    const CompiledTree::Node& node = game_.tree().nodes()[n];
    const bool predictive = config_.algorithm == Algorithm::predictive;
    for (size_t field = 0; field < fields_; ++field) {
        const size_t set = game_.layout().index(node, field);
        const TrainerNumbers& numbers = state_.sets[set];
        double legal[numAbstractedActions];
        size_t count = 0;
        for (size_t a = 0; a < numAbstractedActions; ++a)
            if (node.child[a] != CompiledTree::noChild)
                legal[count++] = numbers.regret[a] + (predictive ? numbers.prediction[a] : 0.0);
        matchRegrets(legal, count, legal);
        for (size_t a = numAbstractedActions; a-- > 0;)
            current_[set][a] = node.child[a] != CompiledTree::noChild ? legal[--count] : 0.0;
    }
}

Profile EquilibriumTrainer::average() const {
    Profile profile = uniformProfile(game_);
    for (size_t set = 0; set < profile.size(); ++set) {
        const double* const sums = state_.sets[set].strategy;
        double total = 0.0;
        for (size_t a = 0; a < numAbstractedActions; ++a)
            total += sums[a];
        if (total > 0.0)
            for (size_t a = 0; a < numAbstractedActions; ++a)
                profile[set][a] = sums[a] / total;
    }
    return profile;
}

void EquilibriumTrainer::restore(const TrainerState& state) {
    assert(state.sets.size() == state_.sets.size());
    state_ = state;
    for (size_t n = 0; n < game_.tree().nodes().size(); ++n)
        chooseStrategy(n);
}

} // namespace tamarin
