// Information sets kept elsewhere than in the solver's node maps, for trees that would not fit
// there (three-player limit hold'em has 97 million of them; as maps of strings they would take 20
// GB).
#pragma once

#include "strategy/cfr_node.h"

#include <cstddef>
#include <functional>
#include <string>

namespace tamarin {

class NodeStore {
public:
    // What forEach calls for every node; false stops the walk.
    using Visit = std::function<bool(const std::string& key, const CFRNode& node)>;

    virtual ~NodeStore() = default;

    // Nodes of map m (round + player * rounds).
    virtual size_t count(int m) const = 0;
    // Visits the nodes of map m in byte order of their keys; false when the visitor stopped.
    virtual bool forEach(int m, const Visit& visit) const = 0;
    // Copies the node under the key of map m to node; false when there is none.
    virtual bool find(int m, const std::string& key, CFRNode& node) const = 0;
};

} // namespace tamarin
