#include "local_response/local_play.h"

#include "eval/exact_equity.h"
#include "local_response/plain_local.h"
#include "local_response/simple_opponent.h"
#include "local_response/tree_opponent.h"
#include "response/plain_response.h"

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

// Eight cards, three rounds, of different bets.
const std::string eightCards = shortGame(2, 4, "2 2 2", "10 10 20", "0 1 1");

std::array<double, 2> localMean(const Measured& measured, BetMenu menu, int from = 0) {
    const TreeOpponent opponent(*measured.game, measured.tree, *measured.strategy);
    const BoardMargins margins(*measured.game, measured.deck);
    return meanOfAllDeals({*measured.game, measured.deck, opponent, margins, menu, from});
}

// No hand is dealt to the opponent here, and one in the plain form: on average that is the same.
TEST(LocalPlay, WinsOnAverageWhatItWinsFromDealtHands) {
    for (const uint64_t seed : {3U, 8U}) {
        const Measured measured(eightCards, seed);
        for (const BetMenu menu : {BetMenu::raise, BetMenu::foldCall}) {
            const auto mean = localMean(measured, menu);
            for (int seat = 0; seat < 2; ++seat)
                EXPECT_NEAR(mean[static_cast<size_t>(seat)],
                            PlainLocal(measured, seat, menu == BetMenu::raise).mean(), 1e-9)
                    << seat;
        }
    }
}

TEST(LocalPlay, BeginsInTheRoundThatItIsTold) {
    const Measured measured(eightCards);
    double before = localMean(measured, BetMenu::raise, 0)[0];
    for (int from = 1; from < 3; ++from) {
        const auto mean = localMean(measured, BetMenu::raise, from);
        EXPECT_NEAR(mean[0], PlainLocal(measured, 0, true, from).mean(), 1e-9);
        EXPECT_NEAR(mean[1], PlainLocal(measured, 1, true, from).mean(), 1e-9);
        EXPECT_GT(std::abs(mean[0] - before), 0.01);
        before = mean[0];
    }
}

// Several cards in a step, and a flop of a game that ends there.
TEST(LocalPlay, TakesStepsOfSeveralCards) {
    const Measured measured(shortGame(2, 4, "2 1", "10 20", "0 2"), 5);
    const auto mean = localMean(measured, BetMenu::raise);
    EXPECT_NEAR(mean[0], PlainLocal(measured, 0, true).mean(), 1e-9);
    EXPECT_NEAR(mean[1], PlainLocal(measured, 1, true).mean(), 1e-9);
    EXPECT_GT(std::abs(mean[0] - mean[1]), 0.1);
}

TEST(LocalPlay, NeverWinsMoreThanABestResponse) {
    for (uint64_t seed = 1; seed <= 4; ++seed) {
        const Measured measured(eightCards, seed);
        const auto most = localMean(measured, BetMenu::raise);
        const auto least = localMean(measured, BetMenu::foldCall);
        for (size_t seat = 0; seat < 2; ++seat) {
            const double best = PlainResponse(measured, static_cast<int>(seat), true).mean();
            EXPECT_LT(most[seat], best + 1e-9);
            EXPECT_LT(least[seat], best + 1e-9);
            EXPECT_GT(best - most[seat], 1e-3); // it looks one action ahead, and loses by it
            EXPECT_GT(most[seat] - least[seat], 1e-3);
        }
    }
}

// Who always folds loses the small blind in one seat; in the other the big one to the first raise.
TEST(LocalPlay, FindsTheBestResponseToAlwaysFolding) {
    Measured measured(eightCards);
    measured.play(SimplePlay::fold);
    const auto mean = localMean(measured, BetMenu::raise);
    EXPECT_NEAR(mean[0], 5, 1e-12);
    EXPECT_NEAR(mean[1], 10, 1e-12);
    for (int seat = 0; seat < 2; ++seat)
        EXPECT_NEAR(mean[static_cast<size_t>(seat)], PlainResponse(measured, seat, true).mean(),
                    1e-9);
}

TEST(LocalPlay, WinsFromSimplePlayWhatThePlainFormWins) {
    Measured measured(eightCards);
    for (const SimplePlay simple : {SimplePlay::call, SimplePlay::raise, SimplePlay::uniform}) {
        measured.play(simple);
        const SimpleOpponent opponent(*measured.game, simple);
        const BoardMargins margins(*measured.game, measured.deck);
        const auto mean =
            meanOfAllDeals({*measured.game, measured.deck, opponent, margins, BetMenu::raise, 0});
        for (int seat = 0; seat < 2; ++seat)
            EXPECT_NEAR(mean[static_cast<size_t>(seat)], PlainLocal(measured, seat, true).mean(),
                        1e-9);
    }
}

// The numbers that the plain form was compared with above: they change with what is measured alone.
TEST(LocalPlay, WinsTheseNumbers) {
    const auto mean = localMean(Measured(eightCards), BetMenu::raise);
    EXPECT_NEAR(mean[0], 14.037933543795173, 1e-9);
    EXPECT_NEAR(mean[1], 23.005090966081895, 1e-9);
}

// Two players with 100 chips each, sixteen cards and two rounds.
const std::string noLimit = "GAMEDEF\nnolimit\nnumPlayers = 2\nnumRounds = 2\nstack = 100 100\n"
                            "blind = 10 5\nfirstPlayer = 2 1\nnumSuits = 4\nnumRanks = 4\n"
                            "numHoleCards = 2\nnumBoardCards = 0 1\nEND GAMEDEF\n";

struct NoLimit {
    GamePtr game = parseGame(noLimit);
    PublicDeck deck{*game};
    BoardMargins margins{*game, deck};

    std::array<double, 2> mean(const Opponent& opponent, BetMenu menu) const {
        return meanOfAllDeals({*game, deck, opponent, margins, menu, 0});
    }
    // What hole cards win of the pot against all hands, on each board of which these are cards.
    double share(std::array<uint8_t, 2> hole, const Cards& board) const {
        double halves = 0;
        double count = 0;
        for (size_t o = 0; o < deck.holdings().size(); ++o) {
            const auto other = deck.cardsOf(o);
            const Cards known{hole[0], hole[1], other[0], other[1]};
            if (has(hole, other[0]) || has(hole, other[1]) || has(board, other[0]) ||
                has(board, other[1]))
                continue;
            eachBoard(*game, deck, known, [&](const Cards& full) {
                if (!std::equal(board.begin(), board.end(), full.begin()))
                    return;
                halves += 1 + showdown({hole[0], hole[1]}, {other[0], other[1]}, full);
                count += 1;
            });
        }
        return halves / (2 * count);
    }
};

// Against who always calls a hand that is ahead puts everything in at once, and any other waits for
// the card, unless it would have to pay more for it than it wins.
TEST(LocalPlay, BetsAllThatItHasAgainstWhoAlwaysCalls) {
    const NoLimit table;
    const SimpleOpponent opponent(*table.game, SimplePlay::call);
    std::array<double, 2> sum{};
    double boards = 0;
    for (size_t h = 0; h < table.deck.holdings().size(); ++h) {
        const auto hole = table.deck.cardsOf(h);
        const double first = 2 * table.share(hole, {}) - 1;
        eachBoard(*table.game, table.deck, {hole[0], hole[1]}, [&](const Cards& board) {
            const double then = 2 * table.share(hole, board) - 1;
            const double later = then > 1e-9 ? 100 * then : 10 * then;
            boards += 1;
            sum[0] += first > 1e-9 ? 100 * then : later;
            sum[1] += first > 1e-9 ? 100 * then : 10 * first < -5 ? -5 : later;
        });
    }
    for (const BetMenu menu : {BetMenu::pot, BetMenu::wide}) {
        const auto mean = table.mean(opponent, menu);
        EXPECT_NEAR(mean[0], sum[0] / boards, 1e-9);
        EXPECT_NEAR(mean[1], sum[1] / boards, 1e-9);
    }
    // Where nobody bets, the big blind has its fair share of the blinds.
    EXPECT_NEAR(table.mean(opponent, BetMenu::foldCall)[0], 0, 1e-9);
}

// Of a hundred chips against sixty, sixty are played for, whoever has which.
TEST(LocalPlay, PlaysForTheSmallerStack) {
    for (const bool first : {true, false}) {
        std::string text = noLimit;
        const std::string stacks = "100 100";
        text.replace(text.find(stacks), stacks.size(), first ? "60 100" : "100 60");
        const GamePtr game = parseGame(text);
        const PublicDeck deck(*game);
        const BoardMargins margins(*game, deck);
        const SimpleOpponent opponent(*game, SimplePlay::call);
        LocalPlay play({*game, deck, opponent, margins, BetMenu::pot, 1});
        const LocalDeal deal{{deck.cards()[14], deck.cards()[15]}, {deck.cards()[0]}};
        double ahead = 0;
        double hands = 0;
        const auto row = margins.of(deal.hole, {deal.board.data(), 1});
        for (size_t h = 0; h < row.size(); ++h) {
            const auto cards = deck.cardsOf(h);
            const Cards own(cards.begin(), cards.end());
            if (has(own, deal.hole[0]) || has(own, deal.hole[1]) || has(own, deal.board[0]))
                continue;
            ahead -= row[h];
            ++hands;
        }
        ASSERT_GT(ahead, 1);
        for (const double value : play.values(deal))
            EXPECT_NEAR(value, 60 * ahead / hands, 1e-9);
    }
}

// Aces are all in before the turn, and what they win is counted over all hands, turns and rivers.
TEST(LocalPlay, SettlesOverTheCardsThatDidNotCome) {
    const GamePtr game = loadGameFile("holdem.nolimit.2p.reverse_blinds.game");
    const PublicDeck deck(*game);
    const BoardMargins margins(*game, deck);
    const SimpleOpponent opponent(*game, SimplePlay::call);
    LocalPlay play({*game, deck, opponent, margins, BetMenu::pot, 1});
    const LocalDeal deal{{50, 51}, {0, 13, 22, 33, 48}};
    const auto values = play.values(deal);
    const double share = equityOf(exactEquity(deal.hole, {deal.board.data(), 3}, 1)).pot;
    EXPECT_GT(share, 0.6);
    EXPECT_NEAR(values[0], 20000 * (2 * share - 1), 1e-6);
    EXPECT_NEAR(values[1], 20000 * (2 * share - 1), 1e-6);
}

// A player that folds to a bet whatever is not worth its price: small bets find other hands than
// large ones.
TEST(LocalPlay, FindsMoreWithMoreBets) {
    const NoLimit table;
    const CompiledTree tree(*table.game);
    const SimpleStrategy strategy(tree, SimplePlay::call);
    const TreeOpponent opponent(*table.game, tree, strategy, [&](int, const uint8_t* cards) {
        return (cards[0] / 4 + cards[1] / 4 - 17) / 10.0; // of ranks 9 to 12
    });
    const auto few = table.mean(opponent, BetMenu::foldCall);
    const auto some = table.mean(opponent, BetMenu::pot);
    const auto many = table.mean(opponent, BetMenu::wide);
    for (size_t seat = 0; seat < 2; ++seat) {
        EXPECT_GT(some[seat], few[seat] + 1);
        EXPECT_GT(std::abs(many[seat] - some[seat]), 0.5);
    }
}

} // namespace
} // namespace tamarin::test
