#include "training/small_game.h"

#include "support/progress.h"
#include "tree/card_rank_keys.h"
#include "tree/deck.h"

#include <algorithm>
#include <stdexcept>
#include <string>
#include <unordered_map>

namespace tamarin {

namespace {

using Ids = std::unordered_map<std::string, uint32_t>;

uint32_t idOf(Ids& ids, const std::string& key) {
    return ids.try_emplace(key, static_cast<uint32_t>(ids.size())).first->second;
}

void append(std::string& key, uint32_t value) {
    key.append(reinterpret_cast<const char*>(&value), sizeof value);
}

// What a seat knows in a round: its hole cards, then each round's board cards, every group sorted.
std::string viewOf(const Game& game, const State& state, int seat, int round) {
    std::string view(reinterpret_cast<const char*>(state.holeCards[seat]), game.numHoleCards);
    std::sort(view.begin(), view.end());
    for (int r = 0; r <= round; ++r) {
        const auto start = static_cast<std::ptrdiff_t>(view.size());
        view.append(reinterpret_cast<const char*>(state.boardCards) + bcStart(&game, r),
                    game.numBoardCards[r]);
        std::sort(view.begin() + start, view.end());
    }
    return view;
}

// Collects deals, merging those whose keys are equal.
class TableBuilder {
public:
    TableBuilder(DealTable& table, size_t seats, size_t views) : table_(table) {
        table.field.resize(seats);
        table.view.resize(views);
    }

    // Whether the deal with this key is new and has to be described.
    bool count(const std::string& key) {
        const auto [at, isNew] = ids_.try_emplace(key, static_cast<uint32_t>(ids_.size()));
        if (isNew)
            table_.weight.push_back(0.0);
        table_.weight[at->second] += 1.0;
        return isNew;
    }

    void finish() {
        table_.size = table_.weight.size();
        double total = 0.0;
        for (const double weight : table_.weight)
            total += weight;
        for (double& weight : table_.weight)
            weight /= total;
    }

private:
    DealTable& table_;
    Ids ids_;
};

} // namespace

SmallGame::SmallGame(const Game& game)
    : game_(game), compiled_(game_, maxNodes), layout_(cardRankLayout(compiled_.tree, game_)) {}

void SmallGame::dealAll() {
    const size_t seats = game_.numPlayers;
    const size_t rounds = game_.numRounds;
    TableBuilder full(deals_, seats, seats * rounds);
    TableBuilder keyed(keyDeals_, seats, 0);
    std::vector<Ids> viewIds(seats * rounds);
    std::vector<uint32_t> views(seats * rounds);
    State state{};
    for (DealWalk walk(game_); walk.next();) {
        placeCards(game_, walk.cards(), &state);
        const uint32_t outcome = compiled_.payoffs.outcomeOf(state);
        std::string key;
        append(key, outcome);
        for (size_t p = 0; p < seats; ++p)
            key += static_cast<char>(cardField(state.holeCards[p][0]));
        const auto describe = [&](DealTable& table) {
            table.outcome.push_back(outcome);
            for (size_t p = 0; p < seats; ++p)
                table.field[p].push_back(static_cast<uint32_t>(cardField(state.holeCards[p][0])));
        };
        if (keyed.count(key))
            describe(keyDeals_);
        for (size_t r = 0; r < rounds; ++r)
            for (size_t p = 0; p < seats; ++p) {
                uint32_t& view = views[r * seats + p];
                view = idOf(viewIds[r * seats + p],
                            viewOf(game_, state, static_cast<int>(p), static_cast<int>(r)));
                append(key, view);
            }
        if (full.count(key)) {
            describe(deals_);
            for (size_t i = 0; i < views.size(); ++i)
                deals_.view[i].push_back(views[i]);
        }
    }
    full.finish();
    keyed.finish();
    for (const Ids& ids : viewIds)
        deals_.numViews.push_back(static_cast<uint32_t>(ids.size()));
}

Result<std::unique_ptr<SmallGame>> SmallGame::make(const Game& game) {
    const uint64_t deals = countDeals(game);
    if (game.numSuits * game.numRanks == 52)
        return Error{"a 52-card game cannot be enumerated: " +
                     (deals == UINT64_MAX ? "more than " + describeCount(UINT64_MAX)
                                          : describeCount(deals)) +
                     " deals, and no card-rank keys for them"};
    if (deals > maxDeals)
        return Error{"the game has " + (deals == UINT64_MAX ? "more than " : std::string()) +
                     describeCount(deals) + " deals; at most " + describeCount(maxDeals) +
                     " can be enumerated"};
    std::unique_ptr<SmallGame> small;
    try {
        small.reset(new SmallGame(game));
    } catch (const std::length_error& tooLarge) {
        return Error{tooLarge.what()};
    }
    const uint64_t nodes = small->tree().nodes().size();
    if (nodes * deals > maxWork)
        return Error{"the game has " + describeCount(nodes) + " decision nodes and " +
                     describeCount(deals) + " deals: " + describeCount(nodes * deals) +
                     " visits a pass; at most " + describeCount(maxWork) + " are made"};
    small->dealAll();
    small->cost_.deals = deals;
    small->cost_.decisionNodes = nodes;
    small->cost_.informationSets = small->layout().numSets();
    small->cost_.bytes =
        small->deals_.size *
        (sizeof(double) + sizeof(uint32_t) * (1 + game.numPlayers + small->deals_.view.size()));
    return small;
}

} // namespace tamarin
