#include "web/queries.h"

#include "toolbox/tamarin_process.h"
#include "web/page_files.h"
#include "web/table_guest.h"

#include <fstream>

#include <nlohmann/json.hpp>

namespace tamarin::test {

namespace {

// A playing directory with a log and something beside it that is nobody's business.
class Questions : public testing::Test {
protected:
    Questions() {
        std::filesystem::create_directories(scratch_ / "logs");
        std::ofstream(scratch_ / "secret.log") << "# tamarin match kuhn.limit.3p.game seed 1\n";
        std::ofstream(scratch_ / "logs/notes.txt") << "notes";
        std::ofstream(scratch_ / "logs/other.log") << "something else\n";
        std::ofstream(scratch_ / "logs/one.log")
            << "# tamarin match kuhn.limit.3p.game seed 1 rotated\n"
               "STATE:0:rff:As|Qs|Js:2|-1|-1:you|rule|random\n"
               "STATE:1:rcf:Ks|As|Qs:-2|3|-1:random|you|rule\n"
               "STATE:2:ccc:Ks|Js|Qs:2|-1|-1:rule|random|you\n";
    }

    WebAnswer ask(const std::string& target) const { return queries_.answer(target); }
    Json told(const std::string& target) const {
        const WebAnswer answer = ask(target);
        EXPECT_EQ(answer.status, 200) << target << ": " << answer.body();
        EXPECT_STREQ(answer.type, "application/json");
        return Json::parse(answer.body());
    }
    std::string refused(const std::string& target) const {
        const WebAnswer answer = ask(target);
        EXPECT_NE(answer.status, 200) << target;
        return Json::parse(answer.body())["problem"];
    }

    Scratch scratch_;
    TableList tables_{scratch_.path(), builtPrograms()};
    Queries queries_{scratch_.path(), tables_};
};

} // namespace

TEST_F(Questions, ThePageIsThere) {
    const WebAnswer page = ask("/");
    EXPECT_EQ(page.status, 200);
    EXPECT_STREQ(page.type, "text/html; charset=utf-8");
    EXPECT_NE(page.body().find("<div id=\"page\">"), std::string_view::npos);
    // Nothing in it that the policy of its answer forbids.
    EXPECT_EQ(page.body().find("style="), std::string_view::npos);
    EXPECT_EQ(page.body().find("onclick"), std::string_view::npos);
    EXPECT_EQ(page.body().find("<script>"), std::string_view::npos);
    EXPECT_EQ(ask("/?anything=1").status, 200);
    ASSERT_EQ(pageFiles().size(), 4U);
    for (const PageFile& file : pageFiles()) {
        EXPECT_EQ(ask(file.path).body(), file.contents);
        EXPECT_GT(file.contents.size(), 100U) << file.path;
    }
    EXPECT_NE(ask("/page.css").body().find("prefers-color-scheme"), std::string_view::npos);
}

TEST_F(Questions, NothingElseIs) {
    for (const char* target : {"/index.html", "/page.js/", "//", "/../secret.log", "/logs/one.log",
                               "", "page.js", "/%2e%2e/secret.log", "/PAGE.JS"})
        EXPECT_EQ(refused(target), "there is nothing of that name") << target;
    EXPECT_EQ(refused("/api/nothing"), "there is no such question");
    EXPECT_EQ(refused("/api/"), "there is no such question");
    for (const char* target : {"/api/games?x", "/api/games?a=%4", "/api/games?a=%zz",
                               "/api/hand?log=one.log&log=one.log"})
        EXPECT_EQ(refused(target), "the question cannot be read") << target;
}

TEST_F(Questions, GamesAndWhoPlaysThem) {
    const Json answer = told("/api/games");
    std::map<std::string, Json> games;
    for (const Json& game : answer["games"])
        games[game["game"]] = game;
    ASSERT_TRUE(games.contains("holdem.nolimit.2p.reverse_blinds.game"));
    const Json& kuhn = games.at("kuhn.limit.3p.game");
    EXPECT_EQ(kuhn["seats"], 3);
    EXPECT_EQ(kuhn["limit"], true);
    EXPECT_EQ(kuhn["opponents"][0]["name"], "player");
    EXPECT_EQ(kuhn["opponents"][0]["missing"],
              "it has no strategy yet: tamarin prepare kuhn.limit.3p.game");
    EXPECT_EQ(kuhn["opponents"].size(), 5U);
    EXPECT_EQ(games.at("leduc.limit.2p.game")["opponents"][0]["missing"],
              "it does not play this game");
    EXPECT_EQ(games.at("holdem.nolimit.2p.reverse_blinds.game")["bigBlind"], 100);
    // With a board in the first round nobody could be dealt in.
    EXPECT_FALSE(games.contains("kuhn.flop.2p.game"));
    EXPECT_EQ(told("/api/tables"), Json::array());
}

TEST_F(Questions, LogsByTheirNamesAlone) {
    const Json logs = told("/api/logs");
    ASSERT_EQ(logs.size(), 1U);
    EXPECT_EQ(logs[0]["log"], "one.log");
    EXPECT_EQ(logs[0]["game"], "kuhn.limit.3p.game");
    for (const char* log : {"", "other.log", "notes.txt", "two.log", "..%2Fsecret.log", ".", "..",
                            "%2e%2e%2fsecret.log", "one.log%00", ".%2Fone.log"})
        EXPECT_EQ(refused(std::string("/api/hands?first=0&log=") + log),
                  "there is no match log of that name")
            << log;
}

TEST_F(Questions, HandsOfALog) {
    const Json list = told("/api/hands?log=one.log&first=1");
    EXPECT_EQ(list["total"], 3);
    ASSERT_EQ(list["hands"].size(), 2U);
    EXPECT_EQ(list["hands"][0]["number"], 1);
    EXPECT_EQ(list["hands"][0]["names"], Json::parse(R"(["random","you","rule"])"));
    EXPECT_EQ(list["hands"][0]["chips"], Json::parse("[-2.0,3.0,-1.0]"));
    EXPECT_EQ(list["hands"][0]["cards"], Json::parse(R"([["Ks"],["As"],["Qs"]])"));
    ASSERT_EQ(list["results"].size(), 3U);
    EXPECT_EQ(list["results"][0]["player"], "you");
    EXPECT_EQ(list["results"][0]["chips"], 4.0);
    // 2, 3 and -1: mean 4/3, deviation 2.0817, and the 97.5 % point of two degrees is 4.3027.
    EXPECT_NEAR(list["results"][0]["mean"].get<double>(), 4.0 / 3, 1e-12);
    EXPECT_NEAR(list["results"][0]["halfWidth"].get<double>(), 5.1711, 1e-3);
    EXPECT_EQ(list["results"][1]["chips"], 0.0);
    EXPECT_EQ(list["results"][2]["chips"], -4.0);
    EXPECT_EQ(refused("/api/hands?log=one.log"), "a hand has a number");
    EXPECT_EQ(refused("/api/hands?log=one.log&first=-1"), "a hand has a number");
    EXPECT_TRUE(told("/api/hands?log=one.log&first=99")["hands"].empty());
}

TEST_F(Questions, OneHandAndTheCurve) {
    const Json hand = told("/api/hand?log=one.log&number=1");
    EXPECT_EQ(hand["hand"]["you"], 1);
    EXPECT_EQ(hand["hand"]["actions"].size(), 3U);
    EXPECT_EQ(hand["hand"]["cards"][2], Json::parse(R"(["Qs"])"));
    EXPECT_EQ(refused("/api/hand?log=one.log&number=3"), "the log has no such hand");
    EXPECT_EQ(refused("/api/hand?log=one.log&number=x"), "a hand has a number");
    const Json curve = told("/api/curve?log=one.log");
    EXPECT_EQ(curve["player"], "you");
    EXPECT_EQ(curve["hands"], Json::parse("[1,2,3]"));
    EXPECT_EQ(curve["chips"], Json::parse("[2.0,5.0,4.0]"));
    EXPECT_EQ(curve["low"][0], Json()) << "of one hand nothing is known";
    EXPECT_NEAR(curve["high"][2].get<double>(), 4 + 3 * 5.1711, 1e-2);
    EXPECT_NEAR(curve["low"][2].get<double>(), 4 - 3 * 5.1711, 1e-2);
}

TEST_F(Questions, ADamagedLogIsSaidToBe) {
    std::ofstream(scratch_ / "logs/bad.log") << "# tamarin match kuhn.limit.3p.game seed 1\n"
                                                "STATE:0:rff:As|Qs|Js:3|-1|-1:you|rule|random\n";
    EXPECT_EQ(refused("/api/hands?log=bad.log&first=0"), "the log cannot be read to its end");
    EXPECT_EQ(refused("/api/hand?log=bad.log&number=0"), "the log cannot be read so far");
    std::ofstream(scratch_ / "logs/lost.log") << "# tamarin match ../../etc/passwd seed 1\n";
    EXPECT_EQ(refused("/api/hands?log=lost.log&first=0"),
              "the log's game: there is no game of that name");
}

TEST_F(Questions, StrategiesThatAreMissing) {
    const Json list = told("/api/strategies");
    std::map<std::string, Json> games;
    for (const Json& one : list)
        games[one["game"]] = one;
    EXPECT_EQ(games.at("kuhn.limit.3p.game")["kind"], "tree");
    EXPECT_EQ(games.at("holdem.limit.2p.reverse_blinds.game")["kind"], "grid");
    EXPECT_EQ(games.at("kuhn.limit.3p.game")["missing"],
              "there is no strategy yet: tamarin prepare kuhn.limit.3p.game");
    EXPECT_EQ(refused("/api/tree?game=kuhn.limit.3p.game"),
              "there is no strategy yet: tamarin prepare kuhn.limit.3p.game");
    EXPECT_EQ(refused("/api/tree?game=..%2Fkuhn.limit.3p.game"), "there is no game of that name");
    EXPECT_EQ(refused("/api/tree?game=holdem.limit.3p.game"),
              "the game is too large to be shown whole");
    EXPECT_EQ(refused("/api/grid?game=kuhn.limit.3p.game"), "only hold'em has a grid");
    EXPECT_EQ(refused("/api/grid?game=holdem.limit.3p.game"),
              "there is no strategy yet: tamarin prepare holdem.limit.3p.game");
}

TEST_F(Questions, TheTreeOfKuhnPoker) {
    ASSERT_EQ(runTamarin({"train", "kuhn.limit.2p.game", "--iterations", "2000", "--dir",
                          scratch_.path(), "--quiet"})
                  .status,
              0);
    const Json tree = told("/api/tree?game=kuhn.limit.2p.game");
    // Check or bet; after each check or bet again: four decisions, three cards each.
    ASSERT_EQ(tree["nodes"].size(), 4U);
    EXPECT_EQ(tree["ends"].size(), 5U);
    EXPECT_EQ(tree["nodes"][0]["betting"], "");
    EXPECT_EQ(tree["nodes"][0]["next"][0], Json()) << "nobody folds for nothing";
    EXPECT_NEAR(tree["value"][0].get<double>(), -1.0 / 18, 0.01); // Kuhn 1950
    EXPECT_NEAR(tree["value"][0].get<double>() + tree["value"][1].get<double>(), 0, 1e-12);
    for (const Json& node : tree["nodes"]) {
        ASSERT_EQ(node["sets"].size(), 3U);
        for (const Json& set : node["sets"]) {
            double sum = 0;
            for (const Json& share : set["shares"])
                sum += share.get<double>();
            EXPECT_NEAR(sum, 1, 1e-9);
        }
    }
}

TEST(QueryValues, AreDecoded) {
    const auto values = queryValues("a=1&b=x%20y%2f%3D&c=");
    ASSERT_TRUE(values.has_value());
    EXPECT_EQ(*values, (std::map<std::string, std::string>{{"a", "1"}, {"b", "x y/="}, {"c", ""}}));
    EXPECT_TRUE(queryValues("")->empty());
    for (const char* text : {"a", "a=%", "a=%1", "a=%g0", "&", "a=1&a=2", "=&="})
        EXPECT_FALSE(queryValues(text).has_value()) << text;
}

} // namespace tamarin::test
