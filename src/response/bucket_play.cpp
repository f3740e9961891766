#include "response/bucket_play.h"

#include "abstraction/quantise.h"
#include "tree/regret_matching.h"

#include <array>

namespace tamarin {

size_t BucketPlay::numClasses(int, int) const {
    return holdemBuckets;
}

uint16_t BucketPlay::classOf(int seat, int round, std::span<const uint8_t> cards) const {
    return buckets_.bucket(2, round, seat, cards.data());
}

// As CFRNode::getAverageStrategy: uniform where nothing was gathered.
ActionShares BucketPlay::shares(int32_t number, size_t handClass) const {
    const auto& node = sets_.tree().nodes()[static_cast<size_t>(number)];
    const SetNumbers& numbers = sets_.numbers()[sets_.layout().index(node, handClass)];
    std::array<double, numAbstractedActions> gathered{};
    std::array<double, numAbstractedActions> matched{};
    size_t count = 0;
    for (size_t a = 0; a < gathered.size(); ++a)
        if (node.child[a] != CompiledTree::noChild)
            gathered[count++] = numbers.strategy[a];
    matchRegrets(gathered.data(), count, matched.data());
    ActionShares shares{};
    count = 0;
    for (size_t a = 0; a < shares.size(); ++a)
        if (node.child[a] != CompiledTree::noChild)
            shares[a] = matched[count++];
    return shares;
}

} // namespace tamarin
