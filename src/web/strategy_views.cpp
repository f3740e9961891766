#include "web/strategy_views.h"

#include "directory/holdem_game.h"
#include "directory/strategies.h"
#include "report/strategy_page.h"
#include "solver/cfr.h"
#include "strategy/mapped_strategy.h"
#include "training/best_response.h"
#include "training/sequence_reach.h"
#include "web/hand_view.h"
#include "web/table_list.h"

#include <array>
#include <filesystem>
#include <sys/stat.h>
#include <vector>

namespace tamarin {

namespace {

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;

constexpr size_t buckets = 10;
constexpr int deckSize = MAX_RANKS * MAX_SUITS;

// What tells a file from the one that took its place.
struct FileIdentity {
    ino_t inode = 0;
    int64_t changed = 0;
    bool operator==(const FileIdentity&) const = default;
};

FileIdentity identityOf(const std::string& path) {
    struct stat status = {};
    if (::stat(path.c_str(), &status) != 0)
        return {};
    return {status.st_ino, int64_t{status.st_mtim.tv_sec} * 1'000'000'000 + status.st_mtim.tv_nsec};
}

std::string prepareFirst(const std::string& game) {
    return "there is no strategy yet: tamarin prepare " + game;
}

// What is missing for the whole tree of a small game; nothing is said of games that are none.
std::string missingOfTree(const GameFile& game, const std::string& directory) {
    const std::string strategies = strategyDirectory(directory, game.name);
    std::error_code error;
    for (size_t seat = 0; seat < game.rules->numPlayers; ++seat)
        if (!fs::exists(strategyPath(strategies, seat), error))
            return prepareFirst(game.name);
    return "";
}

Json roundedList(const std::vector<double>& values) {
    Json list = Json::array();
    for (const double value : values)
        list.push_back(value);
    return list;
}

Json setsOf(const NamedGame& game, const Profile& profile, const SequenceReach& reach, size_t n) {
    const CompiledTree::Node& node = game.small->tree().nodes()[n];
    Json sets = Json::array();
    for (uint32_t field = 0; field < reach.node[n].size(); ++field)
        sets.push_back({{"card", cardLabel(*game.rules, field)},
                        {"reach", reach.node[n][field]},
                        {"shares", profile[game.small->layout().index(node, field)]}});
    return sets;
}

Json treeOf(const NamedGame& game, const Profile& profile) {
    const SequenceReach reach = sequenceReaches(*game.small, profile);
    const auto& nodes = game.small->tree().nodes();
    Json list = Json::array();
    Json ends = Json::array();
    for (size_t n = 0; n < nodes.size(); ++n) {
        Json next = Json::array();
        for (size_t a = 0; a < numAbstractedActions; ++a) {
            const int32_t child = nodes[n].child[a];
            if (child == CompiledTree::noChild) {
                next.push_back(nullptr);
            } else if (child >= 0) {
                next.push_back(child);
            } else {
                const size_t edge = n * numAbstractedActions + a;
                next.push_back(-1 - static_cast<int64_t>(ends.size()));
                ends.push_back(
                    {{"reach", reach.edge[edge]}, {"paid", roundedList(reach.paid[edge])}});
            }
        }
        list.push_back({{"seat", nodes[n].player},
                        {"round", nodes[n].round},
                        {"betting", game.small->tree().sequence(static_cast<int32_t>(n))},
                        {"reach", reach.ofNode(n)},
                        {"next", next},
                        {"sets", setsOf(game, profile, reach, n)}});
    }
    return {{"nodes", list}, {"ends", ends}};
}

// The state after a betting of letters and slashes, with the actions' sizes that training uses.
Result<State> stateAfter(const Game& game, const std::string& betting) {
    State state{};
    initState(&game, 0, &state);
    int round = 0;
    for (const char letter : betting) {
        if (letter == '/') {
            if (++round > state.round)
                return Error{"the betting has a round too many"};
            continue;
        }
        const auto* found = std::find(actionChars, actionChars + 3, letter);
        if (found == actionChars + 3 || letter == '\0' || state.finished || round != state.round)
            return Error{"the betting is none of this game's"};
        Action action{static_cast<ActionType>(found - actionChars), 0};
        int32_t least = 0;
        int32_t most = 0;
        if (action.type == actionRaise &&
            (game.bettingRule == noLimitRule || !raiseIsValid(&game, &state, &least, &most)))
            return Error{"the strategy has no raise there"};
        if (!isValidAction(&game, &state, 0, &action))
            return Error{"the rules do not allow that betting"};
        doAction(&game, &action, &state);
    }
    if (state.finished)
        return Error{"the hand is over after that betting"};
    return state;
}

Result<std::vector<uint8_t>> boardOf(const Game& game, const State& state,
                                     const std::string& text) {
    std::vector<uint8_t> board;
    for (size_t at = 0; at + 1 < text.size(); at += 2) {
        uint8_t card = 0;
        if (readCard(text.substr(at, 2).c_str(), &card) != 2 ||
            std::ranges::find(board, card) != board.end())
            return Error{"the board is written as in Ks7d2c, each card once"};
        board.push_back(card);
    }
    if (text.size() % 2 != 0 || board.size() != sumBoardCards(&game, state.round))
        return Error{"this round has " + std::to_string(sumBoardCards(&game, state.round)) +
                     " cards on the board"};
    return board;
}

} // namespace

struct StrategyViews::OpenGrid {
    HoldemGame game;
    HoldemTables tables;
    MappedStrategy strategy;
    FileIdentity identity;
};

namespace {

// Keys have the betting as the files do: letters alone, with no sign of the rounds.
std::string lettersOf(const std::string& betting) {
    std::string letters = betting;
    std::erase(letters, '/');
    return letters;
}

// The shares of fold, call and raise in each bucket.
Result<Json> sharesOf(const Game& game, const NodeStore& strategy, const State& state,
                      const std::string& betting, std::array<bool, numAbstractedActions>& valid) {
    const uint8_t seat = currentPlayer(&game, &state);
    Json shares = Json::array();
    for (size_t bucket = 0; bucket < buckets; ++bucket) {
        CFRNode node;
        const std::string key = std::to_string(seat) + ":" + std::to_string(state.round) + ":" +
                                std::to_string(bucket) + ":" + lettersOf(betting);
        if (!strategy.find(seat * game.numRounds + state.round, key, node))
            return Error{"the strategy does not hold this decision"};
        std::array<double, numAbstractedActions> average{};
        node.getAverageStrategy(average.data());
        for (size_t a = 0; a < numAbstractedActions; ++a) {
            valid[a] = node.isActionValid(static_cast<int>(a));
            if (!valid[a])
                average[a] = 0;
        }
        shares.push_back(average);
    }
    return shares;
}

// Of every holding, in the order of the larger and then the smaller card's number.
Json bucketsOf(const Game& game, const HoldemBuckets& source, const State& state,
               const std::vector<uint8_t>& board) {
    // As the player looks them up: alone against those who are all-in counts as two, and so does a
    // third seat that is one of two.
    const int acting = numActingPlayers(&game, &state) == 3 ? 3 : 2;
    const int seat = currentPlayer(&game, &state);
    Json list = Json::array();
    std::vector<uint8_t> cards(2 + board.size());
    std::ranges::copy(board, cards.begin() + 2);
    for (int high = 1; high < deckSize; ++high)
        for (int low = 0; low < high; ++low) {
            const bool dead = std::ranges::any_of(
                board, [&](uint8_t card) { return card == high || card == low; });
            cards[0] = static_cast<uint8_t>(high);
            cards[1] = static_cast<uint8_t>(low);
            list.push_back(dead ? -1
                                : source.bucket(acting, state.round,
                                                acting == 2 ? std::min(seat, 1) : seat,
                                                cards.data()));
        }
    return list;
}

} // namespace

StrategyViews::StrategyViews(std::string directory) : directory_(std::move(directory)) {}
StrategyViews::~StrategyViews() = default;

std::string StrategyViews::list() const {
    Json list = Json::array();
    for (const std::string& name : gameNames(directory_)) {
        const auto game = openGameFile(name, directory_);
        if (!game || !checkDealable(game->rules.get()))
            continue;
        if (isHoldem(*game->rules)) {
            const auto holdem = openHoldem(game->path, directory_);
            std::error_code error;
            const bool there =
                holdem && *holdem && fs::exists(holdemStrategyPath(directory_, **holdem), error);
            list.push_back(
                {{"game", name}, {"kind", "grid"}, {"missing", there ? "" : prepareFirst(name)}});
        } else if (game->rules->numRanks < MAX_RANKS) {
            list.push_back(
                {{"game", name}, {"kind", "tree"}, {"missing", missingOfTree(*game, directory_)}});
        }
    }
    return wireText(list);
}

Result<std::string> StrategyViews::tree(const std::string& name) const {
    const auto listed = openListedGame(name, directory_);
    if (!listed)
        return Error{listed.error()};
    if (isHoldem(*listed->rules))
        return Error{"the game is too large to be shown whole"};
    const auto game = openSmallGame(listed->path, directory_);
    if (!game)
        return Error{"the game is too large to be shown whole"};
    if (game->small->tree().nodes().size() > mostNodes)
        return Error{"the game is too large to be shown whole"};
    const auto profile = readStrategies(*game->small, strategyDirectory(directory_, game->name));
    if (!profile)
        return Error{missingOfTree(*game, directory_).empty() ? profile.error()
                                                              : prepareFirst(name)};
    const ProfileValue value = evaluateProfile(*game->small, *profile);
    Json answer = {{"game", name},
                   {"seats", game->rules->numPlayers},
                   {"value", roundedList(value.value)},
                   {"best", roundedList(value.best)},
                   {"nashConv", value.nashConv()}};
    answer.update(treeOf(*game, *profile));
    return wireText(answer);
}

// With the mutex held.
Result<std::shared_ptr<StrategyViews::OpenGrid>>
StrategyViews::openGrid(const std::string& name) const {
    auto listed = openListedGame(name, directory_);
    if (!listed)
        return Error{listed.error()};
    const auto game = openHoldem(listed->path, directory_);
    if (!game || !*game)
        return Error{"only hold'em has a grid"};
    const std::string path = holdemStrategyPath(directory_, **game);
    const FileIdentity identity = identityOf(path);
    if (identity == FileIdentity{})
        return Error{prepareFirst(name)};
    auto& kept = grids_[name];
    if (kept && kept->identity == identity)
        return kept;
    auto tables = HoldemTables::open(directory_, listed->rules->numPlayers);
    if (!tables)
        return Error{tables.error()};
    auto strategy = MappedStrategy::open(path, listed->rules->numPlayers * listed->rules->numRounds,
                                         MappedStrategy::Look::someKeys);
    if (!strategy)
        return Error{strategy.error()};
    kept = std::make_shared<OpenGrid>(OpenGrid{HoldemGame{std::move(*listed)}, std::move(*tables),
                                               std::move(*strategy), identity});
    return kept;
}

Result<std::string> StrategyViews::grid(const std::string& name, const std::string& betting,
                                        const std::string& boardText) const {
    const std::lock_guard lock(mutex_);
    const auto opened = openGrid(name);
    if (!opened)
        return Error{opened.error()};
    const Game& game = *(*opened)->game.rules;
    const auto state = stateAfter(game, betting);
    if (!state)
        return Error{state.error()};
    const auto board = boardOf(game, *state, boardText);
    if (!board)
        return Error{board.error()};
    std::array<bool, numAbstractedActions> valid{};
    const auto shares = sharesOf(game, (*opened)->strategy, *state, betting, valid);
    if (!shares)
        return Error{shares.error()};
    // What may follow: the round that begins then, or "end".
    Json next = Json::array();
    for (size_t a = 0; a < numAbstractedActions; ++a) {
        State after = *state;
        const Action action{static_cast<ActionType>(a), 0};
        if (valid[a])
            doAction(&game, &action, &after);
        next.push_back(!valid[a] ? Json() : after.finished ? Json("end") : Json(after.round));
    }
    const uint8_t seat = currentPlayer(&game, &*state);
    return wireText({{"game", name},
                     {"betting", betting},
                     {"seat", seat},
                     {"players", game.numPlayers},
                     {"round", state->round},
                     {"owes", state->maxSpent > state->spent[seat]},
                     {"next", next},
                     {"shares", *shares},
                     {"buckets", bucketsOf(game, (*opened)->tables.buckets(), *state, *board)}});
}

} // namespace tamarin
