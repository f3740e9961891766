#include "holdem/steps.h"

namespace tamarin {

HoldemSteps::HoldemSteps(const CompiledTree& tree) {
    assert(tree.slots().size() <= 256);
    steps_.reserve(tree.nodes().size());
    for (const CompiledTree::Node& node : tree.nodes()) {
        Step step{};
        std::copy_n(node.child, numAbstractedActions, step.child);
        step.offset = node.offset;
        step.slot = static_cast<uint8_t>(node.slot);
        step.player = node.player;
        // A call is always valid, so that the valid actions are a run around it.
        step.first = node.child[actionFold] != CompiledTree::noChild ? actionFold : actionCall;
        step.last = node.child[actionRaise] != CompiledTree::noChild ? actionRaise : actionCall;
        steps_.push_back(step);
    }
}

void HoldemSteps::place(HoldemSets& sets, Payoffs& payoffs, const State& cards,
                        const DealBuckets& buckets, PlacedDeal& deal) {
    const std::vector<CompiledTree::Slot>& slots = sets.tree().slots();
    deal.slotNumbers.resize(slots.size());
    for (uint32_t i = 0; i < slots.size(); ++i) {
        const CompiledTree::Slot& slot = slots[i];
        const uint8_t bucket = buckets.of[slot.round][slot.acting][slot.player];
        deal.slotNumbers[i] = sets.numbers() + sets.layout().bucketStart(i, bucket);
    }
    deal.settled = payoffs.table(payoffs.outcomeOf(cards));
}

void HoldemSteps::replaceSeat(const HoldemSets& sets, HoldemSets& responder, int seat,
                              PlacedDeal& deal) {
    const std::vector<CompiledTree::Slot>& slots = sets.tree().slots();
    for (size_t i = 0; i < slots.size(); ++i)
        if (slots[i].player == seat)
            deal.slotNumbers[i] = responder.numbers() + (deal.slotNumbers[i] - sets.numbers());
    deal.responder = static_cast<size_t>(seat);
}

} // namespace tamarin
