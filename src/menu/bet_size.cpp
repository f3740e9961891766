#include "menu/bet_size.h"

#include <algorithm>
#include <cassert>
#include <numeric>

namespace tamarin {

namespace {

// Digits up to a character that is none; empty when there are none or too many.
std::optional<uint32_t> takeNumber(std::string_view& text, size_t& digits) {
    uint32_t number = 0;
    digits = 0;
    while (digits < text.size() && text[digits] >= '0' && text[digits] <= '9') {
        if (digits == 5)
            return std::nullopt;
        number = number * 10 + static_cast<uint32_t>(text[digits++] - '0');
    }
    if (digits == 0)
        return std::nullopt;
    text.remove_prefix(digits);
    return number;
}

std::optional<BetSize> sizeOf(BetSize::Unit unit, uint64_t numerator, uint64_t denominator) {
    if (numerator == 0 || denominator == 0 || denominator > BetSize::mostParts ||
        numerator > BetSize::mostUnits * denominator)
        return std::nullopt;
    const uint64_t common = std::gcd(numerator, denominator);
    return BetSize{unit, static_cast<uint32_t>(numerator / common),
                   static_cast<uint32_t>(denominator / common)};
}

// What the round began with: the largest amount that any seat had put in.
int32_t levelOfRound(const Game& game, const State& state) {
    if (state.round == 0)
        return 0;
    int32_t level = bigBlind(game);
    for (int round = 0; round < state.round; ++round)
        for (int i = 0; i < state.numActions[round]; ++i)
            level = std::max(level, state.action[round][i].size);
    return level;
}

} // namespace

std::optional<BetSize> parseBetSize(std::string_view text) {
    if (text == "A")
        return BetSize{BetSize::Unit::allIn, 0, 1};
    if (text == "min")
        return BetSize{BetSize::Unit::least, 0, 1};
    BetSize::Unit unit = BetSize::Unit::pots;
    if (text.ends_with('b')) {
        unit = BetSize::Unit::blinds;
        text.remove_suffix(1);
    }
    size_t digits = 0;
    const auto whole = takeNumber(text, digits);
    if (!whole)
        return std::nullopt;
    if (text.empty())
        return sizeOf(unit, *whole, 1);
    const char separator = text.front();
    text.remove_prefix(1);
    const auto more = takeNumber(text, digits);
    if (!more || !text.empty())
        return std::nullopt;
    if (separator == '/')
        return sizeOf(unit, *whole, *more);
    if (separator != '.' || digits > 4)
        return std::nullopt;
    uint64_t parts = 1;
    for (size_t i = 0; i < digits; ++i)
        parts *= 10;
    return sizeOf(unit, *whole * parts + *more, parts);
}

std::string textOf(const BetSize& size) {
    if (size.unit == BetSize::Unit::allIn)
        return "A";
    if (size.unit == BetSize::Unit::least)
        return "min";
    std::string text = std::to_string(size.numerator);
    if (size.denominator != 1)
        text += '/' + std::to_string(size.denominator);
    return size.unit == BetSize::Unit::blinds ? text + 'b' : text;
}

int64_t potAfterCall(const Game& game, const State& state) {
    const int seat = currentPlayer(&game, &state);
    int64_t pot = 0;
    for (int p = 0; p < game.numPlayers; ++p)
        pot += p == seat ? std::min(state.maxSpent, game.stack[p]) : state.spent[p];
    return pot;
}

bool mayRaise(const Game& game, const State& state, int32_t& least, int32_t& most) {
    return state.numActions[state.round] + game.numPlayers <= MAX_NUM_ACTIONS &&
           raiseIsValid(&game, &state, &least, &most) != 0;
}

int64_t raiseOfSize(const BetSize& size, const Game& game, const State& state) {
    assert(game.bettingRule == noLimitRule);
    const int64_t twice = 2 * int64_t{size.denominator};
    switch (size.unit) {
    case BetSize::Unit::pots:
        return state.maxSpent +
               (2 * size.numerator * potAfterCall(game, state) + size.denominator) / twice;
    case BetSize::Unit::blinds: {
        const int64_t blind = std::max(bigBlind(game), 1);
        return levelOfRound(game, state) + (2 * size.numerator * blind + size.denominator) / twice;
    }
    case BetSize::Unit::least:
        return 0;
    case BetSize::Unit::allIn:
        break;
    }
    return game.stack[currentPlayer(&game, &state)];
}

std::optional<int32_t> legalRaise(int64_t total, const Game& game, const State& state) {
    int32_t least = 0;
    int32_t most = 0;
    if (!mayRaise(game, state, least, most))
        return std::nullopt;
    const int64_t raised = std::max<int64_t>(total, least);
    if (raised > int64_t{most} - std::max(bigBlind(game), 1))
        return most;
    return static_cast<int32_t>(raised);
}

} // namespace tamarin
