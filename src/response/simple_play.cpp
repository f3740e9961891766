#include "response/simple_play.h"

#include <cassert>

namespace tamarin {

std::optional<SimplePlay> simplePlayNamed(std::string_view name) {
    if (name == "uniform")
        return SimplePlay::uniform;
    if (name == "fold")
        return SimplePlay::fold;
    if (name == "call")
        return SimplePlay::call;
    if (name == "raise")
        return SimplePlay::raise;
    return std::nullopt;
}

ActionShares SimpleStrategy::shares(int32_t node, size_t) const {
    const auto& child = tree_.nodes()[static_cast<size_t>(node)].child;
    const auto allowed = [&](int action) { return child[action] != CompiledTree::noChild; };
    ActionShares shares{};
    if (play_ == SimplePlay::uniform) {
        int count = 0;
        for (int a = 0; a < static_cast<int>(numAbstractedActions); ++a)
            count += allowed(a) ? 1 : 0;
        for (int a = 0; a < static_cast<int>(numAbstractedActions); ++a)
            if (allowed(a))
                shares[static_cast<size_t>(a)] = 1.0 / count;
        return shares;
    }
    const int wanted = play_ == SimplePlay::fold    ? actionFold
                       : play_ == SimplePlay::raise ? actionRaise
                                                    : actionCall;
    const int taken = allowed(wanted) ? wanted : actionCall;
    assert(allowed(taken)); // whoever is to act may always call
    shares[static_cast<size_t>(taken)] = 1.0;
    return shares;
}

} // namespace tamarin
