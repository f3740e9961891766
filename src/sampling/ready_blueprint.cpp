#include "sampling/ready_blueprint.h"

namespace tamarin {

Result<std::unique_ptr<ReadyBlueprint>>
ReadyBlueprint::open(const std::string& path, const std::string& directory, const Game& game) {
    auto blueprint = MenuBlueprint::open(path, game);
    if (!blueprint)
        return Error{blueprint.error()};
    auto abstraction = CardAbstraction::open(directory, blueprint->origin().training.abstraction);
    if (!abstraction)
        return Error{path + " needs its card abstraction: " + abstraction.error()};
    if (Status same = blueprint->madeOver(abstraction->description()); !same)
        return Error{same.error()};
    return std::unique_ptr<ReadyBlueprint>(
        new ReadyBlueprint(std::move(*blueprint), std::move(*abstraction)));
}

} // namespace tamarin
