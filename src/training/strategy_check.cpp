#include "training/strategy_check.h"

#include "strategy/strategy_record.h"
#include "tree/card_rank_keys.h"

#include <cmath>
#include <cstring>
#include <map>

namespace tamarin {

namespace {

// What the file must hold, section by section: each key with its decision node.
std::vector<std::map<std::string, const CompiledTree::Node*>> expectedKeys(const SmallGame& game) {
    const Game& rules = game.game();
    std::vector<std::map<std::string, const CompiledTree::Node*>> sections(
        size_t{rules.numPlayers} * rules.numRounds);
    const auto& nodes = game.tree().nodes();
    for (size_t n = 0; n < nodes.size(); ++n)
        for (uint32_t field = 0; field < game.layout().numBuckets(nodes[n].slot); ++field)
            sections[nodes[n].round + size_t{nodes[n].player} * rules.numRounds].emplace(
                cardRankKey(game.tree(), static_cast<int32_t>(n), static_cast<int>(field)),
                &nodes[n]);
    return sections;
}

// What is wrong with a record, or nothing.
std::string faultOf(const StrategyRecord& record, const std::string& key,
                    const CompiledTree::Node& node) {
    const std::string bytes(record.key, sizeof record.key);
    if (bytes.substr(0, key.size()) != key ||
        bytes.find_first_not_of('\0', key.size()) != std::string::npos)
        return "the key should be " + key;
    for (size_t a = 0; a < numAbstractedActions; ++a) {
        double regret = 0.0;
        double strategy = 0.0;
        std::memcpy(&regret, &record.regretSum[a], sizeof regret);
        std::memcpy(&strategy, &record.strategySum[a], sizeof strategy);
        const char* const action = abstractedActionNames[a];
        if (!std::isnan(regret) && node.child[a] == CompiledTree::noChild)
            return key + " allows " + action + ", which the rules do not";
        if (std::isinf(regret) || !std::isfinite(strategy) || strategy < 0.0)
            return key + " has a damaged sum for " + action;
    }
    return {};
}

} // namespace

Status checkStrategyFile(const SmallGame& game, const std::string& path, FileSystem& files) {
    const Result<MappedFile> file = MappedFile::open(path, MappedFile::anySize, files);
    if (!file)
        return Error{file.error()};
    const std::span<const std::byte> bytes = file->bytes();
    const auto sections = expectedKeys(game);
    size_t expected = 0;
    for (const auto& section : sections)
        expected += sizeof(StrategyCount) + section.size() * sizeof(StrategyRecord);
    if (bytes.size() != expected)
        return Error{path + " has " + std::to_string(bytes.size()) + " bytes, not " +
                     std::to_string(expected) + ": it is damaged or another game's"};
    size_t at = 0;
    const auto fault = [&](const std::string& what) {
        return Error{path + ", byte " + std::to_string(at) + ": " + what +
                     "; it is damaged or another game's"};
    };
    for (size_t m = 0; m < sections.size(); ++m) {
        StrategyCount count = 0;
        std::memcpy(&count, bytes.data() + at, sizeof count);
        if (count != sections[m].size())
            return fault("section " + std::to_string(m) + " counts " + std::to_string(count) +
                         " information sets, not " + std::to_string(sections[m].size()));
        at += sizeof count;
        for (const auto& [key, node] : sections[m]) {
            StrategyRecord record;
            std::memcpy(&record, bytes.data() + at, sizeof record);
            if (const std::string what = faultOf(record, key, *node); !what.empty())
                return fault(what);
            at += sizeof record;
        }
    }
    return {};
}

} // namespace tamarin
