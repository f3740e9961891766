#include "web/hand_view.h"

#include "eval/hand_value.h"

#include <algorithm>
#include <array>
#include <vector>

namespace tamarin {

namespace {

using Json = nlohmann::ordered_json;

constexpr std::array<const char*, MAX_RANKS> rankNames = {"two",   "three", "four", "five", "six",
                                                          "seven", "eight", "nine", "ten",  "jack",
                                                          "queen", "king",  "ace"};

std::string rankName(uint8_t card, bool capital) {
    std::string name = rankNames[static_cast<size_t>(card / MAX_SUITS)];
    if (capital)
        name[0] = static_cast<char>(name[0] - 'a' + 'A');
    return name;
}

std::string plural(uint8_t card) {
    const std::string name = rankName(card, false);
    return name == "six" ? "sixes" : name + "s";
}

std::string cardText(uint8_t card) {
    char text[3];
    return printCard(card, sizeof text, text) == 2 ? std::string(text, 2) : "??";
}

Json cardList(std::span<const uint8_t> cards) {
    Json list = Json::array();
    for (const uint8_t card : cards)
        list.push_back(cardText(card));
    return list;
}

// Up to four cards: of these no straights or flushes count. start: two hole cards and nothing else.
std::string nameOfFew(std::span<const uint8_t> cards, bool start) {
    std::vector<uint8_t> sorted(cards.begin(), cards.end());
    std::ranges::sort(sorted, std::greater<>());
    for (size_t i = 0; i + 1 < sorted.size(); ++i) {
        if (sorted[i] / MAX_SUITS != sorted[i + 1] / MAX_SUITS)
            continue;
        const bool three =
            i + 2 < sorted.size() && sorted[i] / MAX_SUITS == sorted[i + 2] / MAX_SUITS;
        return (three ? "Three " : "Pair of ") + plural(sorted[i]);
    }
    if (!start)
        return rankName(sorted[0], true) + (sorted.size() == 1 ? "" : " high");
    const bool suited = sorted[0] % MAX_SUITS == sorted[1] % MAX_SUITS;
    return rankName(sorted[0], true) + "-" + rankName(sorted[1], false) +
           (suited ? " suited" : " offsuit");
}

// A hand played again from its blinds, to see what every action put in.
Json actionList(const Game& game, const State& state) {
    State replayed{};
    initState(&game, state.handId, &replayed);
    Json list = Json::array();
    for (int round = 0; round <= state.round; ++round)
        for (int i = 0; i < state.numActions[round]; ++i) {
            const Action action = state.action[round][i];
            const uint8_t seat = state.actingPlayer[round][i];
            doAction(&game, &action, &replayed);
            list.push_back({{"seat", seat},
                            {"round", round},
                            {"type", std::string(1, actionChars[action.type])},
                            {"to", replayed.spent[seat]}});
        }
    return list;
}

Json optionsOf(const Game& game, const State& state, uint8_t seat) {
    Action fold{actionFold, 0};
    Json options = {{"owed", std::min(state.maxSpent, game.stack[seat]) - state.spent[seat]},
                    {"fold", isValidAction(&game, &state, 0, &fold) != 0},
                    {"raise", nullptr}};
    int32_t least = 0;
    int32_t most = 0;
    if (!raiseIsValid(&game, &state, &least, &most))
        return options;
    if (game.bettingRule == limitRule) {
        State raised = state;
        const Action raise{actionRaise, 0};
        doAction(&game, &raise, &raised);
        least = most = raised.spent[seat];
    }
    options["raise"] = {{"min", least}, {"max", most}};
    return options;
}

bool cardsShown(const Game& game, const State& state, const HandView& view, uint8_t seat) {
    if (view.you == seat || (view.allCards && state.finished))
        return true;
    return state.finished && !state.playerFolded[seat] &&
           numFolded(&game, &state) + 1 < game.numPlayers;
}

// What the seat's cards make in each round reached.
Json madeByRound(const Game& game, const State& state, uint8_t seat) {
    Json list = Json::array();
    std::vector<uint8_t> cards(state.holeCards[seat], state.holeCards[seat] + game.numHoleCards);
    for (int round = 0; round <= state.round; ++round) {
        cards.insert(cards.end(), state.boardCards + bcStart(&game, round),
                     state.boardCards + sumBoardCards(&game, round));
        list.push_back(nameOfHand(game, cards));
    }
    return list;
}

Json bySeat(const Game& game, const auto& value) {
    Json list = Json::array();
    for (uint8_t seat = 0; seat < game.numPlayers; ++seat)
        list.push_back(value(seat));
    return list;
}

} // namespace

std::string wireText(const Json& value) {
    return value.dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::string nameOfHand(const Game& game, std::span<const uint8_t> cards) {
    constexpr size_t fewest = 5;
    constexpr size_t most = 7;
    if (cards.empty() || cards.size() > most)
        return "";
    if (cards.size() < fewest)
        return nameOfFew(cards, cards.size() == 2 && game.numHoleCards == 2);
    CardSet set = 0;
    for (const uint8_t card : cards)
        set |= cardBit(card);
    return describeHand(set);
}

uint32_t actionsIn(const State& state) {
    uint32_t count = 0;
    for (int round = 0; round <= state.round; ++round)
        count += state.numActions[round];
    return count;
}

Json handAsJson(const Game& game, const State& state, const HandView& view) {
    Json board = Json::array();
    for (int round = 0; round <= state.round; ++round)
        board.push_back(cardList({state.boardCards + bcStart(&game, round),
                                  state.boardCards + sumBoardCards(&game, round)}));
    Json start = bySeat(game, [&](uint8_t seat) { return game.blind[seat]; });
    const bool acting = !state.finished;
    const uint8_t toAct = acting ? currentPlayer(&game, &state) : uint8_t{0};
    Json hand = {{"hand", state.handId}, {"names", view.names}};
    hand["you"] = view.you ? Json(*view.you) : Json();
    hand["blinds"] = std::move(start);
    hand["stacks"] = bySeat(game, [&](uint8_t seat) {
        return game.stack[seat] == unboundedStack ? Json() : Json(game.stack[seat]);
    });
    hand["actions"] = actionList(game, state);
    hand["round"] = state.round;
    hand["board"] = std::move(board);
    hand["cards"] = bySeat(game, [&](uint8_t seat) {
        return cardsShown(game, state, view, seat)
                   ? cardList({state.holeCards[seat], game.numHoleCards})
                   : Json();
    });
    hand["made"] = bySeat(game, [&](uint8_t seat) {
        return cardsShown(game, state, view, seat) ? madeByRound(game, state, seat) : Json();
    });
    hand["toAct"] = acting ? Json(toAct) : Json();
    hand["options"] = acting && view.you == toAct ? optionsOf(game, state, toAct) : Json();
    hand["result"] = acting ? Json() : bySeat(game, [&](uint8_t seat) {
        return valueOfState(&game, &state, seat) + 0.0;
    });
    return hand;
}

} // namespace tamarin
