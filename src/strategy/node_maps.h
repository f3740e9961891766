// The nodes of a solver as objects, found by their keys.
#pragma once

#include "strategy/node_store.h"

#include <map>
#include <string>

namespace tamarin {

// The information sets of one player in one round, by key in byte order.
using NodeMap = std::map<std::string, CFRNode*>;

// Node maps looked at as a store. The array is not owned.
class NodeMaps : public NodeStore {
public:
    explicit NodeMaps(const NodeMap* maps) : maps_(maps) {}

    size_t count(int m) const override { return maps_[m].size(); }
    bool forEach(int m, const Visit& visit) const override {
        for (const auto& [key, node] : maps_[m])
            if (!visit(key, *node))
                return false;
        return true;
    }
    bool find(int m, const std::string& key, CFRNode& node) const override {
        const auto at = maps_[m].find(key);
        if (at == maps_[m].end())
            return false;
        node = *at->second;
        return true;
    }

private:
    const NodeMap* maps_;
};

} // namespace tamarin
