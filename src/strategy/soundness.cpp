#include "strategy/soundness.h"

#include "strategy/strategy_record.h"
#include "tree/card_rank_keys.h"
#include "tree/deck.h"

#include <cmath>
#include <cstring>
#include <map>
#include <vector>

namespace tamarin {

namespace {

// The card-rank keys of a game, section by section, each with its decision node.
using Keys = std::map<std::string, const CompiledTree::Node*>;
std::vector<Keys> cardRankKeys(const Game& game, const CompiledTree& tree) {
    std::vector<Keys> sections(size_t{game.numPlayers} * game.numRounds);
    const auto& nodes = tree.nodes();
    for (size_t n = 0; n < nodes.size(); ++n)
        for (int field = 0; field < numCardFields(game); ++field)
            sections[nodes[n].round + size_t{nodes[n].player} * game.numRounds].emplace(
                cardRankKey(tree, static_cast<int32_t>(n), field), &nodes[n]);
    return sections;
}

// What is wrong with a record, or nothing.
std::string faultOfRecord(const StrategyRecord& record, const std::string& key,
                          const CompiledTree::Node& decision) {
    const std::string bytes(record.key, sizeof record.key);
    if (bytes.substr(0, key.size()) != key ||
        bytes.find_first_not_of('\0', key.size()) != std::string::npos)
        return "the key should be " + key;
    const std::string fault =
        faultOf(nodeOf(record), legalActions(decision), ValidActions::someLegal);
    return fault.empty() ? "" : key + " " + fault;
}

} // namespace

LegalActions legalActions(const CompiledTree::Node& decision) {
    LegalActions legal;
    for (size_t a = 0; a < legal.size(); ++a)
        legal[a] = decision.child[a] != CompiledTree::noChild;
    return legal;
}

std::string faultOf(const CFRNode& node, const LegalActions& legal, ValidActions expected) {
    for (size_t a = 0; a < legal.size(); ++a) {
        const bool valid = node.isActionValid(static_cast<int>(a));
        const std::string action = abstractedActionNames[a];
        if (valid && !legal[a])
            return "allows " + action + ", which the rules do not";
        if (!valid && legal[a] && expected == ValidActions::allLegal)
            return "lacks " + action;
        if (std::isinf(node.regretSum[a]) || !std::isfinite(node.strategySum[a]) ||
            node.strategySum[a] < 0.0)
            return "has a damaged sum for " + action;
    }
    return {};
}

bool holdsSmallGame(const NodeStore& nodes, const Game& game) {
    const CompiledTree tree(game);
    int m = 0;
    for (const Keys& keys : cardRankKeys(game, tree)) {
        for (const auto& [key, decision] : keys) {
            CFRNode node;
            if (!nodes.find(m, key, node) || node.getNumValidActions() == 0 ||
                !faultOf(node, legalActions(*decision), ValidActions::someLegal).empty())
                return false;
        }
        if (nodes.count(m++) != keys.size())
            return false;
    }
    return true;
}

Status checkStrategyFile(const Game& game, const CompiledTree& tree, const std::string& path,
                         FileSystem& files) {
    const Result<MappedFile> file = MappedFile::open(path, MappedFile::anySize, files);
    if (!file)
        return Error{file.error()};
    const std::span<const std::byte> bytes = file->bytes();
    const auto sections = cardRankKeys(game, tree);
    size_t expected = 0;
    for (const Keys& keys : sections)
        expected += sizeof(StrategyCount) + keys.size() * sizeof(StrategyRecord);
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
        for (const auto& [key, decision] : sections[m]) {
            StrategyRecord record;
            std::memcpy(&record, bytes.data() + at, sizeof record);
            if (const std::string what = faultOfRecord(record, key, *decision); !what.empty())
                return fault(what);
            at += sizeof record;
        }
    }
    return {};
}

} // namespace tamarin
