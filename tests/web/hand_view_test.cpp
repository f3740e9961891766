#include "web/hand_view.h"

#include "game/games.h"
#include "web/table_guest.h"

#include <gtest/gtest.h>

namespace tamarin::test {

namespace {

MatchState stateOf(const Game& game, const std::string& text) {
    MatchState state{};
    EXPECT_GT(readMatchState(text.c_str(), &game, &state), 0) << text;
    return state;
}

Json viewOf(const Game& game, const std::string& text, bool allCards = false) {
    const MatchState state = stateOf(game, text);
    const std::vector<std::string> names = {"rule", "you", "call"};
    return handAsJson(game, state.state,
                      {std::span(names).first(game.numPlayers), state.viewingPlayer, allCards});
}

std::vector<uint8_t> cardsOf(const std::string& text) {
    std::vector<uint8_t> cards(text.size() / 2);
    int consumed = 0;
    EXPECT_EQ(readCards(text.c_str(), static_cast<int>(cards.size()), cards.data(), &consumed),
              static_cast<int>(cards.size()));
    return cards;
}

} // namespace

// One text against the whole, so that a page can rely on every name in it.
TEST(HandView, SaysAllOfAHandInPlay) {
    const GamePtr game = loadGameFile("holdem.nolimit.2p.reverse_blinds.game");
    EXPECT_EQ(
        wireText(viewOf(*game, "MATCHSTATE:1:7:r300c/cr900:|9hQd/8dAs8s")),
        R"({"hand":7,"names":["rule","you"],"you":1,"blinds":[100,50],"stacks":[20000,20000],)"
        R"("actions":[{"seat":1,"round":0,"type":"r","to":300},{"seat":0,"round":0,"type":"c",)"
        R"("to":300},{"seat":0,"round":1,"type":"c","to":300},{"seat":1,"round":1,"type":"r",)"
        R"("to":900}],"round":1,"board":[[],["8d","As","8s"]],"cards":[null,["9h","Qd"]],)"
        R"("made":[null,["Queen-nine offsuit","One pair, eights, kickers ace-queen-nine"]],)"
        R"("toAct":0,"options":null,"result":null})");
}

TEST(HandView, SaysWhatMayBeDone) {
    const GamePtr noLimit = loadGameFile("holdem.nolimit.2p.reverse_blinds.game");
    Json view = viewOf(*noLimit, "MATCHSTATE:0:7:r300c/cr900:9hQd|/8dAs8s");
    EXPECT_EQ(view["options"],
              Json::parse(R"({"owed":600,"fold":true,"raise":{"min":1500,"max":20000}})"));
    view = viewOf(*noLimit, "MATCHSTATE:0:7:r300c/:9hQd|/8dAs8s");
    EXPECT_EQ(view["options"],
              Json::parse(R"({"owed":0,"fold":false,"raise":{"min":400,"max":20000}})"));
    view = viewOf(*noLimit, "MATCHSTATE:0:7:r20000:9hQd|");
    EXPECT_EQ(view["options"], Json::parse(R"({"owed":19900,"fold":true,"raise":null})"));
    const GamePtr limit = loadGameFile("holdem.limit.3p.game");
    view = viewOf(*limit, "MATCHSTATE:2:7:ccc/cr:||9hQd/8dAs8s");
    EXPECT_EQ(view["options"],
              Json::parse(R"({"owed":10,"fold":true,"raise":{"min":30,"max":30}})"));
    const GamePtr kuhn = loadGameFile("kuhn.limit.3p.game");
    view = viewOf(*kuhn, "MATCHSTATE:1:7:cc:|Ks|");
    EXPECT_EQ(view["options"], Json()) << "another seat is to act";
    EXPECT_EQ(view["toAct"], 2);
}

// What a seat does not know it is not told, before the end and after it.
TEST(HandView, ShowsNoCardsThatAreHidden) {
    const GamePtr kuhn = loadGameFile("kuhn.limit.3p.game");
    const GamePtr limit = loadGameFile("holdem.limit.3p.game");
    State state{};
    rng_state_t random;
    init_genrand(&random, 11);
    initState(limit.get(), 4, &state);
    dealCards(limit.get(), &random, &state);
    const std::vector<std::string> names = {"a", "b", "c"};
    // Every card is in the state, and all but one's own stay there.
    Json view = handAsJson(*limit, state, {names, 1, true});
    EXPECT_EQ(view["cards"][0], Json());
    EXPECT_EQ(view["cards"][1].size(), 2U);
    EXPECT_EQ(view["cards"][2], Json());
    EXPECT_EQ(view["made"][0], Json());
    EXPECT_EQ(view["board"], Json::parse("[[]]"));
    view = handAsJson(*limit, state, {names, std::nullopt, false});
    for (size_t seat = 0; seat < 3; ++seat)
        EXPECT_EQ(view["cards"][seat], Json());
    // Everybody else has folded: the winner need not show.
    const Json won = viewOf(*kuhn, "MATCHSTATE:2:7:rff:||Ks");
    EXPECT_EQ(won["cards"], Json::parse(R"([null,null,["Ks"]])"));
    EXPECT_EQ(won["result"], Json::parse("[2.0,-1.0,-1.0]"));
    // At a showdown those who are in it.
    const Json shown = viewOf(*kuhn, "MATCHSTATE:2:7:rfc:As||Ks");
    EXPECT_EQ(shown["cards"], Json::parse(R"([["As"],null,["Ks"]])"));
    EXPECT_EQ(shown["made"], Json::parse(R"([["Ace"],null,["King"]])"));
    EXPECT_EQ(shown["result"], Json::parse("[3.0,-1.0,-2.0]"));
}

TEST(HandView, ShowsEverythingWhenAskedAtTheEnd) {
    const GamePtr kuhn = loadGameFile("kuhn.limit.3p.game");
    State state{};
    ASSERT_GT(readState("STATE:1:rcf:Ks|As|Qs", kuhn.get(), &state), 0);
    const std::vector<std::string> names = {"you", "player", "rule"};
    const Json view = handAsJson(*kuhn, state, {names, 0, true});
    EXPECT_EQ(view["cards"], Json::parse(R"([["Ks"],["As"],["Qs"]])"));
    EXPECT_EQ(view["result"], Json::parse("[-2.0,3.0,-1.0]"));
    EXPECT_EQ(view["actions"][1], Json::parse(R"({"seat":1,"round":0,"type":"c","to":2})"));
}

TEST(NameOfHand, SaysWhatAPersonWould) {
    const GamePtr holdem = loadGameFile("holdem.limit.2p.reverse_blinds.game");
    const GamePtr kuhn = loadGameFile("kuhn.limit.3p.game");
    const GamePtr leducGame = loadGameFile("leduc.limit.2p.game");
    EXPECT_EQ(nameOfHand(*holdem, cardsOf("AsKs")), "Ace-king suited");
    EXPECT_EQ(nameOfHand(*holdem, cardsOf("2dTc")), "Ten-two offsuit");
    EXPECT_EQ(nameOfHand(*holdem, cardsOf("6d6c")), "Pair of sixes");
    EXPECT_EQ(nameOfHand(*holdem, cardsOf("KhKdKc3s3c")), "Full house, kings over threes");
    EXPECT_EQ(nameOfHand(*kuhn, cardsOf("Js")), "Jack");
    EXPECT_EQ(nameOfHand(*leducGame, cardsOf("4c3d")), "Four high");
    EXPECT_EQ(nameOfHand(*leducGame, cardsOf("4c4d")), "Pair of fours");
    EXPECT_EQ(nameOfHand(*kuhn, {}), "");
}

TEST(WireText, KeepsOddBytesOut) {
    EXPECT_EQ(wireText({{"a", "\xff<\"\n"}}), "{\"a\":\"\xef\xbf\xbd<\\\"\\n\"}");
}

} // namespace tamarin::test
