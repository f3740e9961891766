#include "holdem/sets.h"

#include "strategy/soundness.h"

#include <cstring>
#include <limits>
#include <new>

namespace tamarin {

namespace {

SetLayout tenBucketLayout(const CompiledTree& tree) {
    return SetLayout(tree, std::vector<uint32_t>(tree.slots().size(), holdemBuckets));
}

SetNumbers* zeroedNumbers(size_t count) {
    void* memory = std::calloc(count, sizeof(SetNumbers));
    if (memory == nullptr)
        throw std::bad_alloc();
    return static_cast<SetNumbers*>(memory);
}

// Keys sort as their action letters do.
constexpr int actionsByLetter[numAbstractedActions] = {actionCall, actionFold, actionRaise};
static_assert(actionChars[actionCall] < actionChars[actionFold] &&
              actionChars[actionFold] < actionChars[actionRaise]);

} // namespace

HoldemSets::HoldemSets(const Game& game)
    : numRounds_(game.numRounds), tree_(game), layout_(tenBucketLayout(tree_)),
      numbers_(zeroedNumbers(layout_.numSets())),
      ordered_(size_t{game.numPlayers} * game.numRounds) {
    if (!tree_.nodes().empty())
        orderNodes(0);
}

// A sequence comes before those that it begins, so a walk that takes each node before what lies
// below it, and actions by letter, meets the sequences in byte order.
void HoldemSets::orderNodes(int32_t id) {
    const CompiledTree::Node& node = tree_.nodes()[static_cast<size_t>(id)];
    ordered_[mapOf(node)].push_back(id);
    for (const int a : actionsByLetter)
        if (node.child[a] >= 0)
            orderNodes(node.child[a]);
}

size_t HoldemSets::count(int m) const {
    return ordered_[static_cast<size_t>(m)].size() * holdemBuckets;
}

bool HoldemSets::forEach(int m, const Visit& visit) const {
    const int rounds = static_cast<int>(numRounds_);
    for (uint32_t bucket = 0; bucket < holdemBuckets; ++bucket) {
        const std::string start = std::to_string(m / rounds) + ":" + std::to_string(m % rounds) +
                                  ":" + std::to_string(bucket) + ":";
        for (const int32_t id : ordered_[static_cast<size_t>(m)])
            if (!visit(start + tree_.sequence(id), nodeAt({id, bucket})))
                return false;
    }
    return true;
}

CFRNode HoldemSets::nodeAt(Place place) const {
    const CompiledTree::Node& node = tree_.nodes()[static_cast<size_t>(place.node)];
    const SetNumbers& numbers = numbers_[layout_.index(node, place.bucket)];
    CFRNode result;
    for (int a = 0; a < numAbstractedActions; ++a) {
        const bool valid = node.child[a] != CompiledTree::noChild;
        result.regretSum[a] = valid ? numbers.regret[a] : std::numeric_limits<double>::quiet_NaN();
        result.strategySum[a] = numbers.strategy[a];
    }
    return result;
}

// Keys of this game have one digit each for player, round and bucket: "p:r:b:sequence".
bool HoldemSets::locate(int m, const std::string& key, Place& place) const {
    constexpr size_t sequenceAt = 6;
    if (key.size() < sequenceAt || key[1] != ':' || key[3] != ':' || key[5] != ':' ||
        key[4] < '0' || key[4] > '9' || tree_.nodes().empty())
        return false;
    const int player = key[0] - '0';
    const int round = key[2] - '0';
    int32_t id = 0;
    for (size_t i = sequenceAt; i < key.size(); ++i) {
        const char* letter = std::strchr(actionChars, key[i]);
        if (letter == nullptr || *letter == '\0')
            return false;
        id = tree_.nodes()[static_cast<size_t>(id)].child[letter - actionChars];
        if (id < 0)
            return false;
    }
    const CompiledTree::Node& node = tree_.nodes()[static_cast<size_t>(id)];
    if (node.player != player || node.round != round || mapOf(node) != static_cast<size_t>(m))
        return false;
    place = {id, static_cast<uint32_t>(key[4] - '0')};
    return true;
}

bool HoldemSets::find(int m, const std::string& key, CFRNode& node) const {
    Place place;
    if (!locate(m, key, place))
        return false;
    node = nodeAt(place);
    return true;
}

bool HoldemSets::set(int m, const std::string& key, const CFRNode& from) {
    Place place;
    if (!locate(m, key, place))
        return false;
    const CompiledTree::Node& node = tree_.nodes()[static_cast<size_t>(place.node)];
    if (!faultOf(from, legalActions(node), ValidActions::allLegal).empty())
        return false;
    SetNumbers& numbers = numbers_[layout_.index(node, place.bucket)];
    for (int a = 0; a < numAbstractedActions; ++a) {
        numbers.regret[a] = from.isActionValid(a) ? from.regretSum[a] : 0.0;
        numbers.strategy[a] = from.strategySum[a];
    }
    return true;
}

} // namespace tamarin
