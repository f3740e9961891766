#include "dealer/reply.h"

namespace tamarin {

namespace {

// Where the action begins, behind a state that agrees with the one sent; nothing when it does not.
std::optional<size_t> actionStart(const Game* game, const MatchState* sent,
                                  std::string_view sentText, const std::string& line) {
    size_t consumed = sentText.size();
    if (!std::string_view{line}.starts_with(sentText)) {
        MatchState echoed{};
        const int length = readMatchState(line.c_str(), game, &echoed);
        if (length < 0 || !matchStatesEqual(game, sent, &echoed))
            return std::nullopt;
        consumed = static_cast<size_t>(length);
    }
    if (consumed >= line.size() || line[consumed] != ':')
        return std::nullopt;
    return consumed + 1;
}

} // namespace

const char* faultName(Fault fault) {
    switch (fault) {
    case Fault::late:
        return "late";
    case Fault::gone:
        return "gone";
    case Fault::nonsense:
        return "nonsense";
    case Fault::illegal:
        return "illegal";
    case Fault::wrongSize:
        return "wrong size";
    case Fault::unexpected:
        return "unexpected";
    }
    return "?";
}

Action substituteAction(const Game* game, const State* state) {
    Action fold{actionFold, 0};
    if (isValidAction(game, state, 0, &fold))
        return fold;
    return {actionCall, 0};
}

Verdict judgeReply(const Game* game, const MatchState* sent, std::string_view sentText,
                   const std::string& line) {
    const State* state = &sent->state;
    const auto refused = [&](Fault fault) { return Verdict{substituteAction(game, state), fault}; };

    const auto start = actionStart(game, sent, sentText, line);
    if (!start)
        return refused(Fault::nonsense);
    Action action{actionInvalid, 0};
    const int length = readAction(line.c_str() + *start, game, &action);
    if (length < 0 || action.type == actionInvalid ||
        *start + static_cast<size_t>(length) != line.size())
        return refused(Fault::nonsense);

    // The rules move a raise of a wrong size to the nearest legal one, and say so.
    const int32_t size = action.size;
    if (!isValidAction(game, state, 1, &action))
        return refused(Fault::illegal);
    if (action.type == actionRaise && game->bettingRule == limitRule &&
        game->stack[currentPlayer(game, state)] <= state->maxSpent)
        action.type = actionCall;
    if (action.size != size)
        return {action, Fault::wrongSize};
    return {action, std::nullopt};
}

} // namespace tamarin
