#include "blueprint/blueprint_play.h"

#include <array>
#include <cassert>
#include <utility>

namespace tamarin {

Result<BlueprintPlay> BlueprintPlay::open(const std::string& path, const std::string& directory,
                                          const Game& game, const CompiledTree& tree) {
    auto file = BlueprintFile::open(path, game, tree);
    if (!file)
        return Error{file.error()};
    auto abstraction = CardAbstraction::open(directory, file->origin().abstraction);
    if (!abstraction)
        return Error{path + " needs its card abstraction: " + abstraction.error()};
    if (Status same = file->madeOver(abstraction->description()); !same)
        return Error{same.error()};
    return BlueprintPlay(std::move(*file), std::move(*abstraction));
}

// The numbering of round_indexers.h, by indexers that can be moved.
BlueprintPlay::BlueprintPlay(BlueprintFile file, CardAbstraction abstraction)
    : file_(std::move(file)), abstraction_(std::move(abstraction)) {
    for (const int cards : roundBoardCards) {
        const std::array<uint8_t, 2> groups{2, static_cast<uint8_t>(cards)};
        auto made = HandIndexer::make(std::span(groups).first(cards == 0 ? 1 : 2));
        assert(made);
        indexers_.push_back(std::move(*made));
    }
}

size_t BlueprintPlay::numClasses(int, int round) const {
    return file_.origin().buckets[static_cast<size_t>(round)];
}

uint16_t BlueprintPlay::classOf(int, int round, std::span<const uint8_t> cards) const {
    assert(cards.size() == 2 + static_cast<size_t>(roundBoardCards[static_cast<size_t>(round)]));
    const HandIndexer& indexer = indexers_[static_cast<size_t>(round)];
    return abstraction_.bucket(
        round, static_cast<size_t>(indexer.index(indexer.rounds() - 1, cards.data())));
}

ActionShares BlueprintPlay::shares(int32_t node, size_t handClass) const {
    return file_.shares(node, handClass);
}

} // namespace tamarin
