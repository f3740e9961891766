#include "local_response/local_play.h"

#include <algorithm>
#include <cassert>

namespace tamarin {

namespace {

State after(const Game& game, const State& state, const Action& action) {
    State next = state;
    doAction(&game, &action, &next);
    return next;
}

} // namespace

std::array<double, 2> LocalPlay::values(const LocalDeal& deal) {
    begin(deal);
    const std::vector<double> reach(game_.deck.holdings().size(), 1.0);
    std::array<double, 2> values{};
    for (seat_ = 0; seat_ < 2; ++seat_) {
        State state{};
        initState(&game_.game, 0, &state);
        values[static_cast<size_t>(seat_)] = play(state, 0, reach);
    }
    return values;
}

void LocalPlay::begin(const LocalDeal& deal) {
    deal_ = deal;
    const PublicDeck& deck = game_.deck;
    for (int round = 0; round <= lastRound(); ++round) {
        CardSet out = cardBit(deal.hole[0]) | cardBit(deal.hole[1]);
        for (size_t i = 0; i < sumBoardCards(&game_.game, round); ++i)
            out |= cardBit(deal.board[i]);
        RoundView& view = rounds_[static_cast<size_t>(round)];
        view.holdings.clear();
        for (size_t h = 0; h < deck.holdings().size(); ++h) {
            const auto cards = deck.cardsOf(h);
            if (((cardBit(cards[0]) | cardBit(cards[1])) & out) == 0)
                view.holdings.push_back(static_cast<uint16_t>(h));
        }
        view.looked = {};
        view.margins.clear();
    }
}

const SeenHands& LocalPlay::seenIn(int round) {
    RoundView& view = rounds_[static_cast<size_t>(round)];
    const auto seat = static_cast<size_t>(opponent());
    if (!view.looked[seat]) {
        game_.opponent.look(game_.deck, opponent(), round,
                            {deal_.board.data(), sumBoardCards(&game_.game, round)}, view.holdings,
                            view.seen[seat]);
        view.looked[seat] = true;
    }
    return view.seen[seat];
}

const std::vector<double>& LocalPlay::marginsIn(int round) {
    RoundView& view = rounds_[static_cast<size_t>(round)];
    if (view.margins.empty())
        view.margins =
            game_.margins.of(deal_.hole, {deal_.board.data(), sumBoardCards(&game_.game, round)});
    return view.margins;
}

LocalPlay::Frame& LocalPlay::frame(size_t depth) {
    while (frames_.size() <= depth)
        frames_.emplace_back().reach.resize(game_.deck.holdings().size());
    return frames_[depth];
}

double LocalPlay::total(int round, const std::vector<double>& reach) const {
    double sum = 0;
    for (const uint16_t holding : rounds_[static_cast<size_t>(round)].holdings)
        sum += reach[holding];
    return sum;
}

double LocalPlay::contested(int32_t bet) const {
    return std::min({bet, game_.game.stack[0], game_.game.stack[1]});
}

double LocalPlay::play(const State& state, size_t depth, const std::vector<double>& reach) {
    if (currentPlayer(&game_.game, &state) != seat_)
        return face(state, depth, reach);
    return follow(state, choose(state, reach), depth, reach);
}

double LocalPlay::follow(const State& state, const Action& action, size_t depth,
                         const std::vector<double>& reach) {
    const State next = after(game_.game, state, action);
    if (next.finished)
        return settle(next, state.round, reach);
    // Of the hands that lead here each may have a card that has come since.
    return total(next.round, reach) > 0 ? play(next, depth, reach) : 0.0;
}

double LocalPlay::face(const State& state, size_t depth, const std::vector<double>& reach) {
    Frame& here = frame(depth);
    const auto& holdings = rounds_[state.round].holdings;
    game_.opponent.answer(state, holdings.size(), seenIn(state.round), here.answer);
    double value = 0;
    for (size_t k = 0; k < here.answer.actions.size(); ++k) {
        const std::vector<double>& shares = here.answer.shares[k];
        for (size_t i = 0; i < holdings.size(); ++i)
            here.reach[holdings[i]] = reach[holdings[i]] * shares[i];
        value += follow(state, here.answer.actions[k], depth + 1, here.reach);
    }
    return value;
}

// What has ended is settled by what lay on the board then, on average over the cards to come. Each
// hand of the opponent is as likely as another not to have one of these, so the mean is over the
// hands of that round.
double LocalPlay::settle(const State& state, int round, const std::vector<double>& reach) {
    const auto hands = static_cast<double>(rounds_[static_cast<size_t>(round)].holdings.size());
    if (state.playerFolded[seat_])
        return -state.spent[seat_] * total(round, reach) / hands;
    if (state.playerFolded[opponent()])
        return state.spent[opponent()] * total(round, reach) / hands;
    return contested(state.maxSpent) * ahead(round, reach) / hands;
}

// By how much the responder is ahead, in margins, summed over the opponent's hands.
double LocalPlay::ahead(int round, const std::vector<double>& reach) {
    const std::vector<double>& margins = marginsIn(round);
    double ahead = 0;
    for (const uint16_t holding : rounds_[static_cast<size_t>(round)].holdings)
        ahead -= reach[holding] * margins[holding];
    return ahead;
}

// Calls where nothing is better; of bets that promise the same, the smaller one. What is better by
// less than the sums' rounding promises the same.
Action LocalPlay::choose(const State& state, const std::vector<double>& reach) {
    Action best{actionCall, 0};
    if (state.round < game_.from)
        return best;
    const auto hands = static_cast<double>(rounds_[state.round].holdings.size());
    double most = worthOfCall(state, reach);
    const auto take = [&](const Action& action, double worth, int32_t stake) {
        constexpr double rounding = 1e-12;
        if (worth > most + rounding * contested(stake) * hands) {
            most = worth;
            best = action;
        }
    };
    if (state.spent[seat_] < std::min(state.maxSpent, game_.game.stack[seat_]))
        take({actionFold, 0}, -state.spent[seat_] * total(state.round, reach), state.maxSpent);
    for (const Action& bet : betsOf(game_.menu, game_.game, state)) {
        const State behind = after(game_.game, state, bet);
        take(bet, worthOfBet(behind, reach), behind.maxSpent);
    }
    return best;
}

double LocalPlay::worthOfCall(const State& state, const std::vector<double>& reach) {
    return contested(state.maxSpent) * ahead(state.round, reach);
}

// state: after the bet.
double LocalPlay::worthOfBet(const State& state, const std::vector<double>& reach) {
    assert(!state.finished && currentPlayer(&game_.game, &state) == opponent());
    const auto& holdings = rounds_[state.round].holdings;
    const std::vector<double>& margins = marginsIn(state.round);
    game_.opponent.answer(state, holdings.size(), seenIn(state.round), tried_);
    const auto fold = std::ranges::find(tried_.actions, actionFold, &Action::type);
    const double* const folds =
        fold == tried_.actions.end()
            ? nullptr
            : tried_.shares[static_cast<size_t>(fold - tried_.actions.begin())].data();
    double folded = 0;
    double won = 0;
    for (size_t i = 0; i < holdings.size(); ++i) {
        const double weight = reach[holdings[i]];
        const double away = folds ? weight * folds[i] : 0.0;
        folded += away;
        won -= (weight - away) * margins[holdings[i]];
    }
    return state.spent[opponent()] * folded + contested(state.maxSpent) * won;
}

} // namespace tamarin
