#include "sampling/menu_play.h"

#include <cassert>
#include <span>

namespace tamarin {

MenuPlay::MenuPlay(const Game& game, const MenuBlueprint& blueprint, const SeatBuckets& buckets)
    : game_(game), blueprint_(blueprint), buckets_(buckets), follower_(game, blueprint.tree()) {}

void MenuPlay::begin(uint64_t seed) {
    random_ = SplitMix(mixBits(seed + splitMixStep));
    follower_.begin();
}

void MenuPlay::see(const State& state, const Action& action) {
    follower_.follow(state, action, unitInterval(random_()));
}

Action MenuPlay::act(const State& state) {
    const auto node = follower_.node(state);
    if (!node)
        return follower_.takeWithoutNode(state);
    return follower_.take(state, drawEdge(*node, bucketOf(state)));
}

void MenuPlay::repeat(const State& state, const Action& action) {
    const auto node = follower_.node(state);
    if (!node && action.type == actionCall) {
        follower_.takeWithoutNode(state);
        return;
    }
    if (node) {
        const size_t edge = drawEdge(*node, bucketOf(state));
        const Action drawn = follower_.actionOf(state, edge);
        if (drawn.type == action.type && drawn.size == action.size) {
            follower_.take(state, edge);
            return;
        }
    }
    see(state, action);
}

// Of the seat to act.
uint16_t MenuPlay::bucketOf(const State& state) const {
    const uint8_t seat = currentPlayer(&game_, &state);
    return buckets_.bucket(state.round, std::span(state.holeCards[seat], game_.numHoleCards),
                           std::span(state.boardCards, sumBoardCards(&game_, state.round)));
}

size_t MenuPlay::drawEdge(int32_t node, size_t bucket) {
    auto left = static_cast<int>(random_.below(255));
    const auto parts = blueprint_.parts(node, bucket);
    for (size_t edge = 0; edge < parts.size(); ++edge) {
        left -= parts[edge];
        if (left < 0)
            return edge;
    }
    assert(false); // the parts add up to 255
    return 0;
}

} // namespace tamarin
