#include "analysis/match_analysis.h"

#include <algorithm>
#include <cstring>

namespace tamarin {

namespace {

constexpr size_t mostStandings = 512;

struct PartName {
    size_t order;
    std::string name;
};

// Turns to act begin with this seat in the last round.
size_t turnOf(const Game& game, size_t seat) {
    const size_t first = game.firstPlayer[game.numRounds - 1];
    return (seat + game.numPlayers - first) % game.numPlayers;
}

PartName positionOf(const Game& game, size_t seat) {
    const size_t turn = turnOf(game, seat);
    if (turn == 0)
        return {turn, "first to act in the last round"};
    if (turn + 1u == game.numPlayers)
        return {turn, "last to act in the last round"};
    return {turn, "between them"};
}

PartName firstActionOf(const State& state, size_t seat) {
    int32_t raises = 0;
    for (int i = 0; i < state.numActions[0]; ++i) {
        const ActionType type = state.action[0][i].type;
        if (state.actingPlayer[0][i] == seat) {
            if (type == actionFold)
                return {0, "folded"};
            if (type == actionCall)
                return {1, "called or checked"};
            return raises == 0 ? PartName{2, "raised"} : PartName{3, "raised again"};
        }
        raises += type == actionRaise ? 1 : 0;
    }
    return {4, "did not act"};
}

PartName roundOf(const Game& game, const State& state) {
    const size_t round = state.round;
    const bool showdown = numFolded(&game, &state) + 1 < game.numPlayers;
    if (showdown)
        return {MAX_ROUNDS, "showdown"};
    static constexpr const char* names[] = {"pre-flop", "flop", "turn", "river"};
    if (game.numRounds == 4)
        return {round, names[round]};
    return {round, "round " + std::to_string(round + 1)};
}

PartName kindOf(const Game& game, const uint8_t* hole) {
    const std::string name = startingHandName(game, hole);
    if (name.size() == 1)
        return {0, "one card"};
    if (name.size() == 2)
        return {0, "pairs"};
    return name.back() == 's' ? PartName{1, "suited"} : PartName{2, "offsuit"};
}

void keep(HandCut& cut, const PartName& part, double won) {
    HandCut::Part& kept = cut.parts[part.order];
    kept.name = part.name;
    kept.won.add(won);
}

// From the highest ranks down, as the grid has them.
size_t orderOf(const uint8_t* hole, size_t cards) {
    const auto high = std::max(hole[0], hole[cards - 1]) / MAX_SUITS;
    const auto low = std::min(hole[0], hole[cards - 1]) / MAX_SUITS;
    const bool suited = cards == 2 && hole[0] % MAX_SUITS == hole[1] % MAX_SUITS;
    const int row = suited ? high : low;
    const int column = suited ? low : high;
    return static_cast<size_t>((MAX_RANKS - 1 - row) * MAX_RANKS + MAX_RANKS - 1 - column);
}

void addTo(ResultFigures& figures, double plain, const FreedHand& freed, double sign) {
    figures.plain.add(plain);
    if (freed.luckFree)
        figures.luckFree.add(sign * *freed.luckFree);
    if (freed.expected)
        figures.expected.add(sign * *freed.expected);
}

} // namespace

std::string startingHandName(const Game& game, const uint8_t* hole) {
    const auto rank = [](uint8_t card) { return rankChars[card / MAX_SUITS]; };
    if (game.numHoleCards == 1)
        return {rank(hole[0])};
    if (game.numHoleCards != 2)
        return {};
    const auto [low, high] = std::minmax({hole[0], hole[1]});
    std::string name{rank(high), rank(low)};
    if (name[0] != name[1])
        name += low % MAX_SUITS == high % MAX_SUITS ? 's' : 'o';
    return name;
}

size_t MatchAnalysis::numberOf(const std::string& name) const {
    const auto found = std::ranges::find(players_, name, &Player::name);
    return static_cast<size_t>(found - players_.begin());
}

Status MatchAnalysis::seat(const LoggedHand& hand) {
    if (players_.empty())
        for (const std::string& name : hand.names) {
            players_.push_back({name, 0, {}, {}, {}, {}});
            for (const char* cut : {"seat", "position", "first action", "reached", "cards", "hand"})
                players_.back().cuts.push_back({cut, {}});
        }
    seats_.clear();
    for (const std::string& name : hand.names) {
        const size_t player = numberOf(name);
        if (player == players_.size())
            return Error{"'" + name + "' did not sit in the hands before"};
        if (std::ranges::find(seats_, player) != seats_.end())
            return Error{"'" + name + "' sits twice"};
        seats_.push_back(player);
    }
    return {};
}

Status MatchAnalysis::add(const LoggedHand& hand, const FreedHand& freed) {
    if (Status seated = seat(hand); !seated)
        return seated;
    for (size_t s = 0; s < seats_.size(); ++s) {
        Player& player = players_[seats_[s]];
        const double sign = s == 0 ? 1 : -1; // what is freed of luck is a game for two
        player.chips += hand.chips[s];
        addTo(player.perHand, hand.chips[s], freed, sign);
        player.pending[0] += hand.chips[s];
        player.pending[1] += sign * freed.luckFree.value_or(0);
        player.pending[2] += sign * freed.expected.value_or(0);
        keepCuts(hand, s, player);
    }
    keepBlock(hand);
    ++hands_;
    if (hands_ % game_.numPlayers == 0)
        for (Player& player : players_) {
            const double size = game_.numPlayers;
            FreedHand mean;
            if (freed.luckFree)
                mean.luckFree = player.pending[1] / size;
            if (freed.expected)
                mean.expected = player.pending[2] / size;
            addTo(player.perBlock, player.pending[0] / size, mean, 1);
            player.pending = {};
        }
    keepStanding();
    return {};
}

// Whether the hand belongs to the block under way: the same cards in every seat, and the players
// moved on by one.
void MatchAnalysis::keepBlock(const LoggedHand& hand) {
    const size_t place = hands_ % game_.numPlayers;
    if (place == 0) {
        first_ = hand;
        return;
    }
    for (size_t seat = 0; seat < game_.numPlayers; ++seat) {
        duplicate_ = duplicate_ &&
                     std::memcmp(hand.state.holeCards[seat], first_.state.holeCards[seat],
                                 game_.numHoleCards) == 0 &&
                     hand.names[(seat + place) % game_.numPlayers] == first_.names[seat];
    }
}

void MatchAnalysis::keepCuts(const LoggedHand& hand, size_t seat, Player& player) const {
    const double won = hand.chips[seat];
    const uint8_t* const hole = hand.state.holeCards[seat];
    keep(player.cuts[0], {seat, "seat " + std::to_string(seat)}, won);
    keep(player.cuts[1], positionOf(game_, seat), won);
    keep(player.cuts[2], firstActionOf(hand.state, seat), won);
    keep(player.cuts[3], roundOf(game_, hand.state), won);
    if (const std::string name = startingHandName(game_, hole); !name.empty()) {
        keep(player.cuts[4], kindOf(game_, hole), won);
        keep(player.cuts[5], {orderOf(hole, game_.numHoleCards), name}, won);
    }
}

// Every so many hands; when there are too many standings, every other one is dropped.
void MatchAnalysis::keepStanding() {
    if (hands_ % standingEvery_ != 0 || hands_ < 2 * size_t{game_.numPlayers})
        return;
    Standing now{hands_, {}, {}};
    for (const Player& player : players_) {
        const ResultFigures& kept = figures(player);
        now.plain.push_back(interval95(kept.plain));
        if (kept.luckFree.count() > 0)
            now.luckFree.push_back(interval95(kept.luckFree));
    }
    standings_.push_back(std::move(now));
    if (standings_.size() < mostStandings)
        return;
    standingEvery_ *= 2;
    std::erase_if(standings_,
                  [&](const Standing& standing) { return standing.hands % standingEvery_ != 0; });
}

} // namespace tamarin
