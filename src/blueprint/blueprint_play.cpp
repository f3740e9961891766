#include "blueprint/blueprint_play.h"

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

size_t BlueprintPlay::numClasses(int, int round) const {
    return file_.origin().buckets[static_cast<size_t>(round)];
}

uint16_t BlueprintPlay::classOf(int, int round, std::span<const uint8_t> cards) const {
    return classes_.of(abstraction_, round, cards);
}

ActionShares BlueprintPlay::shares(int32_t node, size_t handClass) const {
    return file_.shares(node, handClass);
}

} // namespace tamarin
