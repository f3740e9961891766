#include "web/web_table.h"

#include "dealer/hand_log.h"
#include "web/table_guest.h"
#include "web/table_talk.h"

namespace tamarin::test {

namespace {

class AtATable : public testing::Test {
protected:
    // Sits down, and waits until it is the person's turn.
    void sit(const std::string& game, const std::vector<std::string>& opponents) {
        auto opened = tables_.open(game, opponents);
        ASSERT_TRUE(opened.ok()) << opened.error();
        table_ = *opened;
        table_->watch([this] { bell_.ring(); });
        await();
    }
    Json news() const { return Json::parse(table_->snapshot()); }
    Json await() {
        EXPECT_TRUE(bell_.wait([&] { return waitsForPerson(news()); })) << table_->snapshot();
        return news();
    }
    // One answer, and on until the person is asked again.
    Json answer(Action action) {
        const Json asked = news();
        const uint32_t hand = asked["hand"]["hand"];
        const auto actions = static_cast<uint32_t>(asked["hand"]["actions"].size());
        const Status done = table_->act(hand, actions, action);
        EXPECT_TRUE(done.ok()) << done.error();
        return await();
    }
    Json dealOn() {
        const Json finished = news();
        EXPECT_EQ(finished["phase"], "between");
        const uint32_t hand = finished["hand"]["hand"];
        EXPECT_TRUE(table_->next(hand).ok());
        EXPECT_TRUE(bell_.wait([&] {
            const Json now = news();
            return now["phase"] == "over" ||
                   (now["hand"]["hand"] == hand + 1 && waitsForPerson(now));
        }));
        return news();
    }
    void finishHand() {
        for (Json now = await(); now["phase"] == "playing";)
            now = answer({actionCall, 0});
    }
    std::vector<LoggedHand> logged() const {
        std::vector<LoggedHand> hands;
        const auto game = openListedGame(table_->game(), scratch_.path());
        EXPECT_TRUE(readHandLog(game->rules.get(), table_->log(), [&](const LoggedHand& hand) {
                        hands.push_back(hand);
                    }).ok());
        return hands;
    }

    Scratch scratch_;
    NewsBell bell_;
    TableList tables_{scratch_.path(), builtPrograms()};
    std::shared_ptr<WebTable> table_;
};

double personsChips(const LoggedHand& hand) {
    for (size_t seat = 0; seat < hand.names.size(); ++seat)
        if (hand.names[seat] == personName)
            return hand.chips[seat];
    ADD_FAILURE() << "nobody of that name";
    return 0;
}

} // namespace

// The person's answers become the hands of an ordinary log, and what is told of the session is what
// the log says.
TEST_F(AtATable, PlaysHandsThatTheLogHas) {
    sit("kuhn.limit.3p.game", {"rule", "random"});
    constexpr int hands = 20;
    double chips = 0;
    for (int hand = 0; hand < hands; ++hand) {
        Json now = await();
        int turns = 0;
        while (now["phase"] == "playing") {
            const Json& options = now["hand"]["options"];
            const bool raise = !options["raise"].is_null() && (hand + turns) % 2 == 0;
            const bool fold = options["fold"] == true && hand % 5 == 4;
            now = answer({fold ? actionFold : raise ? actionRaise : actionCall, 0});
            ++turns;
        }
        ASSERT_EQ(now["phase"], "between");
        const Json result = now["hand"]["result"];
        ASSERT_EQ(result.size(), 3U);
        double sum = 0;
        for (const Json& won : result)
            sum += won.get<double>();
        EXPECT_EQ(sum, 0);
        chips += result[now["hand"]["you"].get<size_t>()].get<double>();
        EXPECT_EQ(now["session"]["chips"], chips);
        EXPECT_EQ(now["session"]["hands"], hand + 1);
        for (const Json& cards : now["hand"]["cards"])
            EXPECT_EQ(cards.size(), 1U) << "after a hand all cards";
        if (hand + 1 < hands)
            dealOn();
    }
    const std::vector<LoggedHand> log = logged();
    ASSERT_EQ(log.size(), static_cast<size_t>(hands));
    double ofLog = 0;
    for (const LoggedHand& hand : log)
        ofLog += personsChips(hand);
    EXPECT_EQ(ofLog, chips);
    // The seats move on by one every hand.
    EXPECT_EQ(log[0].names, (std::vector<std::string>{"you", "rule", "random"}));
    EXPECT_EQ(log[1].names, (std::vector<std::string>{"random", "you", "rule"}));
}

TEST_F(AtATable, TellsNoCardsOfOthersBeforeTheEnd) {
    sit("holdem.limit.2p.reverse_blinds.game", {"call"});
    for (Json now = await(); now["phase"] == "playing"; now = answer({actionCall, 0})) {
        const size_t you = now["hand"]["you"];
        EXPECT_EQ(now["hand"]["cards"][you].size(), 2U);
        EXPECT_EQ(now["hand"]["cards"][1 - you], Json());
        EXPECT_EQ(now["hand"]["made"][1 - you], Json());
        size_t board = 0;
        for (const Json& round : now["hand"]["board"])
            board += round.size();
        constexpr size_t dealt[] = {0, 3, 4, 5};
        EXPECT_EQ(board, dealt[now["hand"]["round"].get<size_t>()]);
    }
}

TEST_F(AtATable, TakesEachAnswerOnce) {
    sit("kuhn.limit.3p.game", {"call", "call"});
    const Json asked = news();
    const uint32_t hand = asked["hand"]["hand"];
    const auto actions = static_cast<uint32_t>(asked["hand"]["actions"].size());
    const std::string late = "it is not your turn in that state any more";
    EXPECT_EQ(table_->act(hand + 1, actions, {actionCall, 0}).error(), late);
    EXPECT_EQ(table_->act(hand, actions + 1, {actionCall, 0}).error(), late);
    EXPECT_EQ(table_->act(hand, actions, {actionFold, 0}).error(),
              "the rules do not allow that here");
    EXPECT_EQ(table_->act(hand, actions, {actionInvalid, 0}).error(),
              "the rules do not allow that here");
    EXPECT_EQ(table_->next(hand).error(), "that hand is not the one that waits");
    EXPECT_TRUE(table_->act(hand, actions, {actionRaise, 77}).ok()) << "limit: a size is no matter";
    EXPECT_EQ(table_->act(hand, actions, {actionRaise, 0}).error(), late);
    finishHand();
    EXPECT_EQ(table_->next(hand + 1).error(), "that hand is not the one that waits");
    const std::vector<LoggedHand> log = logged();
    ASSERT_EQ(log.size(), 1U);
    EXPECT_EQ(log[0].state.action[0][0].type, actionRaise);
}

TEST_F(AtATable, RaisesOfAnySizeThatTheRulesAllow) {
    sit("holdem.nolimit.2p.reverse_blinds.game", {"call"});
    const Json asked = news();
    const uint32_t hand = asked["hand"]["hand"];
    const auto actions = static_cast<uint32_t>(asked["hand"]["actions"].size());
    for (const int32_t size : {0, 199, 20001, INT32_MAX})
        EXPECT_EQ(table_->act(hand, actions, {actionRaise, size}).error(),
                  "a raise is to 200 up to 20000");
    ASSERT_TRUE(table_->act(hand, actions, {actionRaise, 1234}).ok());
    finishHand();
    EXPECT_EQ(logged().at(0).state.action[0][actions].size, 1234);
    EXPECT_EQ(logged().at(0).state.spent[0], 1234);
}

// All in before the flop: the whole board counts, and the hand ends at once.
TEST_F(AtATable, ShowsTheWholeBoardOfAnAllIn) {
    sit("holdem.nolimit.2p.reverse_blinds.game", {"call"});
    const Json now = answer({actionRaise, 20000});
    ASSERT_EQ(now["phase"], "between");
    EXPECT_EQ(now["hand"]["round"], 3);
    EXPECT_EQ(now["hand"]["board"][1].size(), 3U);
    EXPECT_EQ(now["hand"]["made"][0].size(), 4U);
}

TEST_F(AtATable, KeepsTheLogWhenItIsLeft) {
    sit("kuhn.limit.3p.game", {"call", "raise"});
    finishHand();
    table_->leave();
    EXPECT_TRUE(bell_.wait([&] { return table_->over(); }));
    EXPECT_EQ(news()["problem"], "");
    EXPECT_EQ(logged().size(), 1U);
}

TEST_F(AtATable, EndsWhenAnOpponentCannotStart) {
    TableList broken(scratch_.path(), {"/nowhere/tamarin", "/nowhere"});
    auto opened = broken.open("kuhn.limit.2p.game", {"rule"});
    ASSERT_TRUE(opened.ok());
    (*opened)->watch([this] { bell_.ring(); });
    ASSERT_TRUE(bell_.wait([&] { return (*opened)->over(); }));
    const std::string problem = Json::parse((*opened)->snapshot())["problem"];
    EXPECT_NE(problem.find("rule: could not start /nowhere/tamarin"), std::string::npos) << problem;
}

TEST_F(AtATable, RefusesWhatCannotBePlayed) {
    const auto refusal = [&](const std::string& game, const std::vector<std::string>& opponents) {
        const auto opened = tables_.open(game, opponents);
        return opened ? "opened" : opened.error();
    };
    EXPECT_EQ(refusal("../kuhn.limit.3p.game", {}), "there is no game of that name");
    EXPECT_EQ(refusal("kuhn.flop.2p.game", {"rule"}).substr(0, 19), "it cannot be dealt:");
    EXPECT_EQ(refusal("kuhn.limit.3p.game", {"rule"}), "the game has 2 seats beside yours");
    EXPECT_EQ(refusal("kuhn.limit.3p.game", {"rule", "nobody"}), "there is no such opponent");
    EXPECT_EQ(refusal("kuhn.limit.3p.game", {"rule", "player"}),
              "player cannot play: it has no strategy yet: tamarin prepare kuhn.limit.3p.game");
    EXPECT_FALSE(std::filesystem::exists(scratch_ / "logs"));
}

TEST_F(AtATable, HasRoomForSoManyTables) {
    std::vector<std::shared_ptr<WebTable>> open;
    for (size_t i = 0; i < TableList::mostTables; ++i) {
        auto opened = tables_.open("kuhn.limit.2p.game", {"call"});
        ASSERT_TRUE(opened.ok()) << opened.error();
        open.push_back(*opened);
    }
    EXPECT_FALSE(tables_.open("kuhn.limit.2p.game", {"call"}).ok());
    std::set<std::string> logs;
    for (const auto& table : open)
        logs.insert(table->log());
    EXPECT_EQ(logs.size(), TableList::mostTables);
    tables_.close(open[0]->id());
    EXPECT_EQ(tables_.find(open[0]->id()), nullptr);
    EXPECT_TRUE(tables_.open("kuhn.limit.2p.game", {"call"}).ok());
    EXPECT_EQ(Json::parse(tables_.summaries()).size(), TableList::mostTables);
}

// A page that goes and one that comes: the hand is where it was.
TEST_F(AtATable, ATalkTakesTheHandUpAgain) {
    NewsBell bell;
    Json before;
    {
        TableTalk talk(tables_, [&] { bell.ring(); });
        EXPECT_EQ(talk.news(), "");
        EXPECT_NE(talk.hear(R"({"type":"next","hand":0})").find("sit down first"),
                  std::string::npos);
        ASSERT_EQ(
            talk.hear(R"({"type":"sit","game":"kuhn.limit.3p.game","opponents":["call","call"]})"),
            "");
        ASSERT_TRUE(bell.wait([&] { return waitsForPerson(Json::parse(talk.news())); }));
        before = Json::parse(talk.news());
    }
    TableTalk talk(tables_, [&] { bell.ring(); });
    EXPECT_NE(talk.hear(R"({"type":"back","table":99})").find("no such table"), std::string::npos);
    EXPECT_EQ(talk.hear(R"({"type":"back","table":)" + before["table"].dump() + "}"), "");
    const Json after = Json::parse(talk.news());
    EXPECT_EQ(after["hand"], before["hand"]);
    EXPECT_EQ(talk.hear(R"({"type":"act","hand":0,"actions":)" +
                        std::to_string(after["hand"]["actions"].size()) + R"(,"action":"r"})"),
              "");
    EXPECT_TRUE(bell.wait([&] { return Json::parse(talk.news())["phase"] == "between"; }));
    EXPECT_NE(
        talk.hear(R"({"type":"act","hand":0,"actions":1,"action":"c"})").find("not your turn"),
        std::string::npos);
    EXPECT_EQ(talk.hear(R"({"type":"leave"})"), "");
    EXPECT_TRUE(bell.wait([&] { return Json::parse(talk.news())["phase"] == "over"; }));
    EXPECT_EQ(tables_.summaries(), "[]");
}

} // namespace tamarin::test
