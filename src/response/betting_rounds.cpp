#include "response/betting_rounds.h"

#include <algorithm>
#include <cassert>

namespace tamarin {

namespace {

using Node = CompiledTree::Node;

std::vector<int32_t> wholeBlocks(std::vector<int32_t> lanes) {
    lanes.resize((lanes.size() + lanesInBlock - 1) / lanesInBlock * lanesInBlock,
                 RoundBetting::emptyLane);
    return lanes;
}

bool allEmpty(const std::vector<int32_t>& lanes) {
    return std::ranges::all_of(lanes, [](int32_t node) { return node == RoundBetting::emptyLane; });
}

// Builds one round from its roots, one a lane. taken(node, action): whether the action is ever
// taken; what comes after it has no lanes otherwise.
template <class Taken>
class Builder {
public:
    Builder(const CompiledTree& tree, int round, const std::vector<int32_t>& roots,
            const Taken& taken)
        : tree_(tree), taken_(taken), round_(round) {
        betting_.blocks = roots.size() / lanesInBlock;
        add(roots);
    }

    RoundBetting take() { return std::move(betting_); }
    // The roots of the next round, one a lane.
    const std::vector<int32_t>& below() const { return below_; }

private:
    const Node& at(int32_t node) const { return tree_.nodes()[static_cast<size_t>(node)]; }

    // What an action leads to.
    struct Step {
        enum Kind : uint8_t { nowhere, node, fold, showdown, nextRound } kind = nowhere;
        uint8_t folded = 0;
        int32_t stake = 0;
        bool alike(const Step& other) const { return kind == other.kind && folded == other.folded; }
    };
    Step stepTo(int32_t child) const {
        if (child == CompiledTree::noChild)
            return {};
        if (child >= 0)
            return {at(child).round == round_ ? Step::node : Step::nextRound};
        const auto& settlement = tree_.settlements()[static_cast<size_t>(~child)];
        for (uint8_t seat = 0; seat < 2; ++seat)
            if (settlement.folded[seat] != 0)
                return {Step::fold, seat, settlement.spent[seat]};
        assert(settlement.spent[0] == settlement.spent[1]); // who stays in has paid the same
        return {Step::showdown, 0, settlement.spent[0]};
    }

    int16_t add(const std::vector<int32_t>& lanes) {
        const auto first = std::ranges::find_if(
            lanes, [](int32_t node) { return node != RoundBetting::emptyLane; });
        assert(first != lanes.end());
        const auto index = betting_.nodes.size();
        betting_.nodes.push_back({at(*first).player, {}});
        betting_.treeNodes.insert(betting_.treeNodes.end(), lanes.begin(), lanes.end());
        for (size_t a = 0; a < numAbstractedActions; ++a) {
            const int16_t child = follow(lanes, *first, a);
            betting_.nodes[index].child[a] = child;
        }
        return static_cast<int16_t>(index);
    }

    int16_t follow(const std::vector<int32_t>& lanes, int32_t model, size_t action) {
        const Step expected = stepTo(at(model).child[action]);
        std::vector<int32_t> children(lanes.size(), RoundBetting::emptyLane);
        std::vector<int32_t> stakes(lanes.size(), 0);
        bool nobody = true;
        for (size_t lane = 0; lane < lanes.size(); ++lane) {
            if (lanes[lane] == RoundBetting::emptyLane)
                continue;
            const Step step = stepTo(at(lanes[lane]).child[action]);
            // Raises are limited round by round and nobody is ever all-in.
            assert(step.alike(expected) && at(lanes[lane]).player == at(model).player);
            if (!taken_(lanes[lane], action))
                continue;
            children[lane] = at(lanes[lane]).child[action];
            stakes[lane] = step.stake;
            nobody = false;
        }
        if (nobody)
            return RoundBetting::noAction;
        switch (expected.kind) {
        case Step::nowhere:
            return RoundBetting::noAction;
        case Step::node:
            return add(children);
        case Step::fold:
            return end({RoundBetting::EndingKind::fold, expected.folded, 0}, stakes);
        case Step::showdown:
            return end({RoundBetting::EndingKind::showdown, 0, 0}, stakes);
        case Step::nextRound:
            break;
        }
        for (const int32_t child : children) {
            betting_.lanesBelow.push_back(child == RoundBetting::emptyLane
                                              ? RoundBetting::emptyLane
                                              : static_cast<int32_t>(below_.size()));
            if (child != RoundBetting::emptyLane)
                below_.push_back(child);
        }
        return end({RoundBetting::EndingKind::nextRound, 0, betting_.continuing++}, stakes);
    }

    int16_t end(RoundBetting::Ending ending, const std::vector<int32_t>& stakes) {
        betting_.endings.push_back(ending);
        betting_.stakes.insert(betting_.stakes.end(), stakes.begin(), stakes.end());
        return static_cast<int16_t>(~static_cast<int16_t>(betting_.endings.size() - 1));
    }

    const CompiledTree& tree_;
    const Taken& taken_;
    int round_;
    RoundBetting betting_;
    std::vector<int32_t> below_;
};

// Whether cards and rules are such as the walks count on.
Status checkRules(const Game& game) {
    if (game.numPlayers != 2 || game.numRounds < 2)
        return Error{"only games for two with two rounds or more can be measured so"};
    if (game.numHoleCards != 2)
        return Error{"only games with two hole cards can be measured so"};
    for (int round = 0; round < game.numRounds; ++round)
        if ((game.numBoardCards[round] != 0) != (round > 0))
            return Error{"only games with no board in the first round, and more of it in each that "
                         "follows, can be measured so"};
    if (game.bettingRule != limitRule) // its tree here has no sizes of bets
        return Error{"only limit games can be measured so"};
    if (game.stack[0] != unboundedStack || game.stack[1] != unboundedStack)
        return Error{"only games whose stacks never run out can be measured so"};
    return {};
}

} // namespace

Result<BettingRounds> BettingRounds::of(const Game& game, const CompiledTree& tree) {
    if (Status fits = checkRules(game); !fits)
        return Error{fits.error()};
    BettingRounds made;
    const auto& nodes = tree.nodes();
    for (size_t n = 0; n < nodes.size(); ++n) {
        if (nodes[n].round != 1)
            continue;
        const auto parent = static_cast<size_t>(nodes[n].parentEdge / numAbstractedActions);
        if (nodes[parent].round == 0)
            made.entries_.push_back(static_cast<int32_t>(n));
    }
    made.build(tree, game.numRounds - 1, made.entries_, [](int32_t, size_t) { return true; });
    return made;
}

size_t BettingRounds::numBlocks() const {
    size_t blocks = 0;
    for (const RoundBetting& round : rounds_)
        blocks += round.blocks;
    return blocks;
}

template <class Taken>
void BettingRounds::build(const CompiledTree& tree, int lastRound, std::vector<int32_t> lanes,
                          const Taken& taken) {
    for (int round = 1; round <= lastRound; ++round) {
        Builder<Taken> builder(tree, round, wholeBlocks(std::move(lanes)), taken);
        lanes = builder.below();
        rounds_.push_back(builder.take());
    }
}

BettingRounds BettingRounds::reachedBy(const CompiledTree& tree, const HandStrategy& strategy,
                                       int seat) const {
    const auto& nodes = tree.nodes();
    const auto taken = [&](int32_t node, size_t action) {
        const Node& at = nodes[static_cast<size_t>(node)];
        if (at.player != seat)
            return true;
        const size_t classes = strategy.numClasses(seat, at.round);
        for (size_t c = 0; c < classes; ++c)
            if (strategy.shares(node, c)[action] > 0)
                return true;
        return false;
    };
    const auto reached = [&](int32_t entry) {
        for (int32_t edge = nodes[static_cast<size_t>(entry)].parentEdge;
             edge != CompiledTree::noEdge;) {
            const int32_t node = edge / numAbstractedActions;
            if (!taken(node, static_cast<size_t>(edge % numAbstractedActions)))
                return false;
            edge = nodes[static_cast<size_t>(node)].parentEdge;
        }
        return true;
    };
    BettingRounds left;
    left.entries_ = entries_;
    std::vector<int32_t> lanes = entries_;
    for (int32_t& lane : lanes)
        if (!reached(lane))
            lane = RoundBetting::emptyLane;
    if (allEmpty(lanes))
        lanes.front() = entries_.front();
    left.build(tree, last(), lanes, taken);
    return left;
}

} // namespace tamarin
