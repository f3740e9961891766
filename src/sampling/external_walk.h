// One walk of external sampling (Lanctot, Waugh, Zinkevich and Bowling 2009).
//
// All cards are dealt before. One seat, the traverser, tries all that it may do; the others draw
// their actions by their current strategies. Of each action the traverser's regret grows by what it
// won more than the strategy did: the chance of coming here is in the drawing, so no reach is
// needed. Of the others' nodes that the walk comes to, the strategies are gathered, each as often
// as its seat goes there.
//
// A walk reads regrets and changes none: what it finds goes into a log. All walks of a batch see
// the same strategies, so they may run on any thread, and the logs are added afterwards.
//
// All is whole numbers. Values are in units, a power of two of them a chip; of a strategy's shares
// only the value of a node needs a division, which is rounded alike everywhere.
#pragma once

#include "sampling/menu_sets.h"
#include "sampling/sampled_deal.h"
#include "support/split_mix.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace tamarin {

// What a walk found, in as many parts as threads will add it up: the numbers of one set are always
// in the same part.
class WalkLog {
public:
    enum class Kind : uint8_t { regrets, sums };
    struct Entry {
        Kind kind;
        size_t count;
        uint64_t place; // of the first number
        const int32_t* numbers;
    };

    explicit WalkLog(size_t parts) : parts_(parts) {}
    void clear() {
        for (auto& part : parts_)
            part.clear();
    }

    // Room for the numbers of a set at a node: to be filled at once, all of them.
    int32_t* add(Kind kind, size_t node, uint64_t place, size_t count) {
        // Nodes that are near lie in the same lines of the cache.
        std::vector<int32_t>& part =
            parts_.size() == 1 ? parts_.front() : parts_[(node >> 6U) % parts_.size()];
        const size_t at = part.size();
        part.resize(at + 2 + count);
        part[at] = static_cast<int32_t>(static_cast<uint32_t>(place));
        part[at + 1] =
            static_cast<int32_t>(static_cast<uint32_t>(place >> 32U) << 8U |
                                 static_cast<uint32_t>(kind) << 7U | static_cast<uint32_t>(count));
        return part.data() + at + 2;
    }

    // visit(const Entry&) for each of a part, in the order of the walk.
    template <class Visit>
    void forEach(size_t part, const Visit& visit) const {
        const int32_t* at = parts_[part].data();
        const int32_t* const end = at + parts_[part].size();
        while (at < end) {
            const auto low = static_cast<uint32_t>(at[0]);
            const auto high = static_cast<uint32_t>(at[1]);
            const size_t count = high & 0x7fU;
            visit(Entry{static_cast<Kind>(high >> 7U & 1U), count,
                        uint64_t{high >> 8U} << 32U | low, at + 2});
            at += 2 + count;
        }
    }

private:
    std::vector<std::vector<int32_t>> parts_;
};

class ExternalWalk {
public:
    // A strategy that is gathered has so many parts.
    static constexpr int32_t wholeStrategy = 256;

    struct Pruning {
        bool on = false;   // leave out actions whose regret is below,
        int32_t below = 0; // but on the last round and where the hand ends
    };

    // Both must outlive the object. One thread at a time.
    explicit ExternalWalk(const MenuSets& sets);

    // payoffs: what each settlement of the tree is worth to the traverser, in units. Returns what
    // the traverser's strategy won.
    int32_t run(const SampledDeal& deal, size_t traverser, const int32_t* payoffs, uint64_t random,
                Pruning pruning, WalkLog& log);

private:
    int32_t visit(int32_t child);
    int32_t explore(const MenuTree::Node& node, size_t number);
    int32_t sample(const MenuTree::Node& node, size_t number);
    bool isPruned(const MenuTree::Node& node, size_t edge, int32_t regret) const;
    void fetchBelow(const MenuTree::Node& node) const;
    const int32_t* regretsOf(const MenuTree::Node& node) const {
        return sets_.regrets() + starts_[node.round][node.seat] + node.numbers;
    }

    const MenuSets& sets_;
    const MenuTree& tree_;
    int lastRound_;
    std::array<std::array<size_t, MAX_PLAYERS>, MAX_ROUNDS> starts_{}; // of the deal's buckets
    size_t traverser_ = 0;
    const int32_t* payoffs_ = nullptr;
    Pruning pruning_;
    SplitMix random_{0};
    WalkLog* log_ = nullptr;
};

} // namespace tamarin
