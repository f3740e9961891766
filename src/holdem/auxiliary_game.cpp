#include "holdem/auxiliary_game.h"

#include "strategy/packed_node.h"
#include "tree/deck.h"
#include "tree/regret_matching.h"

#include <algorithm>
#include <cassert>
#include <random>

namespace tamarin {

bool AuxiliaryGame::fits(const Game& game) {
    return game.numPlayers >= 2 && game.numPlayers <= maxPlayers && game.numRounds == 1 &&
           game.numSuits == MAX_SUITS && game.numRanks == MAX_RANKS && game.numHoleCards == 2 &&
           game.numBoardCards[0] <= 5;
}

AuxiliaryGame::AuxiliaryGame(const Game& game)
    : game_(game), tree_(game), payoffs_(game, tree_), stride_(payoffs_.stride()),
      numbers_(tree_.nodes().size() * numBuckets), actions_(numbers_.size()),
      nodes_(numbers_.size()), reach_(tree_.nodes().size() * numAbstractedActions),
      strategy_(reach_.size()), open_(reach_.size()), values_(tree_.nodes().size() * stride_) {
    assert(fits(game));
    visited_.reserve(tree_.nodes().size());
    findOutcomes();
}

void AuxiliaryGame::findOutcomes() {
    // A tie of all three is the rarest, about one deal in five hundred before the flop.
    constexpr int manyDeals = 200'000;
    const size_t wanted = numPlayers() == 2 ? 3 : 13;
    size_t found = 0;
    std::mt19937 random(1);
    std::vector<uint8_t> deck = solverDeck(game_);
    State state{};
    for (int deal = 0; deal < manyDeals && found < wanted; ++deal) {
        for (size_t i = 0; i < static_cast<size_t>(cardsNeeded(game_)); ++i)
            std::swap(deck[i], deck[i + random() % (deck.size() - i)]);
        placeCards(game_, deck.data(), &state);
        AuxiliaryGame::Ranks ranks = AuxiliaryGame::noRanks;
        for (size_t p = 0; p < numPlayers(); ++p) {
            CardSet cards = cardBit(state.holeCards[p][0]) | cardBit(state.holeCards[p][1]);
            for (int i = 0; i < game_.numBoardCards[0]; ++i)
                cards |= cardBit(state.boardCards[i]);
            ranks[p] = rankCardSet(cards);
        }
        const double*& settled = settled_[outcome(ranks)];
        if (settled == nullptr) {
            settled = payoffs_.table(payoffs_.outcomeOf(state));
            ++found;
        }
    }
    assert(found == wanted);
}

void AuxiliaryGame::start(const std::array<double, numBuckets>& winProb) {
    const size_t count = tree_.nodes().size();
    for (size_t bucket = 0; bucket < numBuckets; ++bucket)
        for (size_t n = 0; n < count; ++n) {
            const CompiledTree::Node& node = tree_.nodes()[n];
            SetActions actions;
            for (uint8_t a = 0; a < numAbstractedActions; ++a) {
                const bool hopeless = (a == actionFold && winProb[bucket] >= 0.95) ||
                                      (a == actionCall && winProb[bucket] <= 0.05 &&
                                       node.child[actionRaise] == CompiledTree::noChild);
                if (node.child[a] != CompiledTree::noChild && !hopeless)
                    actions.action[actions.count++] = a;
            }
            actions_[bucket * count + n] = actions;
        }
    std::fill(numbers_.begin(), numbers_.end(), SetNumbers{});
    std::fill(nodes_.begin(), nodes_.end(), nullptr);
}

bool AuxiliaryGame::read(const NodeMap* nodeMaps) {
    const size_t count = tree_.nodes().size();
    size_t taken = 0;
    for (size_t n = 0; n < count; ++n) {
        const CompiledTree::Node& node = tree_.nodes()[n];
        const std::string sequence = tree_.sequence(static_cast<int32_t>(n));
        for (size_t bucket = 0; bucket < numBuckets; ++bucket) {
            const NodeMap& map = nodeMaps[node.player];
            const auto found = map.find(std::to_string(node.player) +
                                        ":0:" + std::to_string(bucket) + ':' + sequence);
            if (found == map.end())
                return false;
            ++taken;
            const size_t set = bucket * count + n;
            const auto actions = packNode(*found->second, node, numbers_[set]);
            if (!actions)
                return false;
            actions_[set] = *actions;
            nodes_[set] = found->second;
        }
    }
    size_t there = 0;
    for (size_t p = 0; p < numPlayers(); ++p)
        there += nodeMaps[p].size();
    return there == taken;
}

void AuxiliaryGame::write() const {
    for (size_t set = 0; set < nodes_.size(); ++set) {
        assert(nodes_[set] != nullptr);
        unpackNode(actions_[set], numbers_[set], *nodes_[set]);
    }
}

void AuxiliaryGame::visit(const uint8_t* buckets, uint32_t outcome) {
    const double* const settled = settled_[outcome];
    const std::vector<CompiledTree::Node>& nodes = tree_.nodes();
    const auto reachAt = [&](int32_t edge) {
        return edge == CompiledTree::noEdge ? 1.0 : reach_[static_cast<size_t>(edge)];
    };

    // Down: regret matching, strategy sums, reaches.
    visited_.clear();
    for (size_t n = 0; n < nodes.size();) {
        const CompiledTree::Node& node = nodes[n];
        if (node.parentEdge != CompiledTree::noEdge &&
            !open_[static_cast<size_t>(node.parentEdge)]) {
            n = static_cast<size_t>(node.end);
            continue;
        }
        const size_t set = setOf(n, buckets);
        const SetActions& actions = actions_[set];
        SetNumbers& numbers = numbers_[set];
        double strategy[numAbstractedActions];
        matchRegrets(numbers.regret, actions.count, strategy);
        const double reach = reachAt(node.ownEdge);
        const size_t edges = n * numAbstractedActions;
        for (size_t a = 0; a < numAbstractedActions; ++a)
            open_[edges + a] = 0;
        for (uint8_t i = 0; i < actions.count; ++i) {
            const double below = strategy[i] * reach;
            numbers.strategy[i] += below;
            const size_t edge = edges + actions.action[i];
            strategy_[edge] = strategy[i];
            reach_[edge] = below;
            open_[edge] = 1;
        }
        visited_.push_back(static_cast<uint32_t>(n));
        ++n;
    }

    // Up: values and regrets.
    for (size_t v = visited_.size(); v-- > 0;) {
        const size_t n = visited_[v];
        const CompiledTree::Node& node = nodes[n];
        const size_t set = setOf(n, buckets);
        const SetActions& actions = actions_[set];
        double* const value = &values_[n * stride_];
        std::fill_n(value, stride_, 0.0);
        const double* below[numAbstractedActions];
        for (uint8_t i = 0; i < actions.count; ++i) {
            const uint8_t a = actions.action[i];
            below[i] = childValue(node.child[a], values_.data(), settled);
            const double strategy = strategy_[n * numAbstractedActions + a];
            for (size_t q = 0; q < stride_; ++q)
                value[q] += strategy * below[i][q];
        }
        const double weight = reachAt(node.parentEdge);
        for (uint8_t i = 0; i < actions.count; ++i)
            numbers_[set].regret[i] += weight * (below[i][node.player] - value[node.player]);
    }
}

AuxiliaryGame::Values::Values(const AuxiliaryGame& auxiliary)
    : auxiliary_(auxiliary), average_(auxiliary.numbers_.size()) {
    for (size_t set = 0; set < average_.size(); ++set)
        matchRegrets(auxiliary.numbers_[set].strategy, auxiliary.actions_[set].count,
                     average_[set].data());
    if (auxiliary.numPlayers() != 2)
        return;
    pairs_.resize(outcomes * numBuckets * numBuckets);
    for (uint32_t outcome = 0; outcome < outcomes; ++outcome) {
        if (auxiliary.settled_[outcome] == nullptr)
            continue;
        uint8_t buckets[2];
        for (buckets[0] = 0; buckets[0] < numBuckets; ++buckets[0])
            for (buckets[1] = 0; buckets[1] < numBuckets; ++buckets[1])
                of(buckets, outcome,
                   pairs_[(outcome * numBuckets + buckets[0]) * numBuckets + buckets[1]].data());
    }
}

std::vector<AuxiliaryGame::Values::Ending> AuxiliaryGame::Values::endings() const {
    assert(auxiliary_.numPlayers() == 2);
    const std::vector<CompiledTree::Node>& nodes = auxiliary_.tree_.nodes();
    constexpr std::array<Ranks, 3> orders{{{0, 1, -1}, {0, 0, -1}, {1, 0, -1}}}; // seat 0 worse, ..
    std::vector<Ending> endings;
    // By node, what both seats' buckets reach it with; depth-first order puts children behind their
    // parents.
    Ending start{};
    for (auto& ofSeat : start.reach)
        ofSeat.fill(1.0);
    std::vector<Ending> reached(nodes.size(), start);
    for (size_t n = 0; n < nodes.size(); ++n)
        for (uint8_t a = 0; a < numAbstractedActions; ++a) {
            const int32_t child = nodes[n].child[a];
            if (child == CompiledTree::noChild)
                continue;
            Ending below = reached[n];
            for (size_t bucket = 0; bucket < numBuckets; ++bucket) {
                const size_t set = bucket * nodes.size() + n;
                const SetActions& actions = auxiliary_.actions_[set];
                double share = 0;
                for (uint8_t i = 0; i < actions.count; ++i)
                    if (actions.action[i] == a)
                        share = average_[set][i];
                below.reach[nodes[n].player][bucket] *= share;
            }
            if (child >= 0) {
                reached[static_cast<size_t>(child)] = below;
                continue;
            }
            for (size_t order = 0; order < orders.size(); ++order) {
                const double* const settled = auxiliary_.settled_[outcome(orders[order])] +
                                              static_cast<size_t>(~child) * auxiliary_.stride_;
                below.payoff[0][order] = settled[0];
                below.payoff[1][orders.size() - 1 - order] = settled[1];
            }
            endings.push_back(below);
        }
    return endings;
}

void AuxiliaryGame::Values::of(const uint8_t* buckets, uint32_t outcome, double* seatValues) const {
    constexpr size_t mostNodes = 32; // three players have twelve
    const std::vector<CompiledTree::Node>& nodes = auxiliary_.tree_.nodes();
    const size_t stride = auxiliary_.stride_;
    const double* const settled = auxiliary_.settled_[outcome];
    std::array<double, mostNodes * 4> fewValues;
    std::vector<double> manyValues(nodes.size() > mostNodes ? nodes.size() * stride : 0);
    double* const values = manyValues.empty() ? fewValues.data() : manyValues.data();
    // Depth-first order puts children behind their parents.
    for (size_t n = nodes.size(); n-- > 0;) {
        const size_t set = auxiliary_.setOf(n, buckets);
        const SetActions& actions = auxiliary_.actions_[set];
        double* const value = values + n * stride;
        std::fill_n(value, stride, 0.0);
        for (uint8_t i = 0; i < actions.count; ++i) {
            const double* const below =
                auxiliary_.childValue(nodes[n].child[actions.action[i]], values, settled);
            for (size_t q = 0; q < stride; ++q)
                value[q] += below[q] * average_[set][i];
        }
    }
    std::copy_n(values, auxiliary_.numPlayers(), seatValues);
}

} // namespace tamarin
