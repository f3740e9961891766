#include "response/bucket_play.h"

#include "abstraction/quantise.h"

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
    ActionShares shares{};
    double total = 0.0;
    double count = 0.0;
    for (size_t a = 0; a < shares.size(); ++a)
        if (node.child[a] != CompiledTree::noChild) {
            total += numbers.strategy[a];
            count += 1.0;
        }
    for (size_t a = 0; a < shares.size(); ++a)
        if (node.child[a] != CompiledTree::noChild)
            shares[a] = total > 0.0 ? numbers.strategy[a] / total : 1.0 / count;
    return shares;
}

} // namespace tamarin
