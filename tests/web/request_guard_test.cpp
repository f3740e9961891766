#include "web/request_guard.h"

#include <set>

#include <gtest/gtest.h>

namespace tamarin::test {

namespace {

constexpr uint16_t guardPort = 8471;
constexpr const char* guardToken = "0123456789abcdef0123456789abcdef";

RequestFacts question(const std::string& target) {
    RequestFacts facts;
    facts.method = "GET";
    facts.target = target;
    facts.hosts = {"127.0.0.1:8471"};
    facts.token = guardToken;
    return facts;
}

RequestFacts socketRequest() {
    RequestFacts facts = question("/table");
    facts.origins = {"http://127.0.0.1:8471"};
    facts.socket = true;
    return facts;
}

int judged(const RequestFacts& facts) {
    return RequestGuard(guardPort, guardToken).judge(facts);
}

} // namespace

TEST(RequestGuard, LetsOurOwnPageIn) {
    EXPECT_EQ(judged(question("/api/games")), 200);
    EXPECT_EQ(judged(socketRequest()), 200);
    RequestFacts byName = socketRequest();
    byName.hosts = {"localhost:8471"};
    byName.origins = {"http://localhost:8471"};
    EXPECT_EQ(judged(byName), 200);
    // The page itself holds nothing, and the browser asks for it before it knows a token.
    RequestFacts page = question("/page.js");
    page.token.clear();
    EXPECT_EQ(judged(page), 200);
}

TEST(RequestGuard, RefusesForgedHosts) {
    for (const char* host : {"evil.example", "evil.example:8471", "127.0.0.1", "127.0.0.1:8472",
                             "127.0.0.1:84711", "127.0.0.1:8471.evil.example", "LOCALHOST:8471",
                             "localhost", "[::1]:8471", "", " 127.0.0.1:8471", "127.1:8471"}) {
        RequestFacts facts = question("/");
        facts.hosts = {host};
        EXPECT_EQ(judged(facts), 403) << host;
    }
    RequestFacts none = question("/");
    none.hosts.clear();
    EXPECT_EQ(judged(none), 403);
    RequestFacts twice = question("/");
    twice.hosts.push_back(twice.hosts[0]);
    EXPECT_EQ(judged(twice), 403);
}

TEST(RequestGuard, RefusesForgedOrigins) {
    for (const char* origin :
         {"http://evil.example", "null", "https://127.0.0.1:8471", "http://127.0.0.1:8471/",
          "http://localhost:8471", "http://127.0.0.1:8471.evil.example", ""}) {
        RequestFacts facts = socketRequest();
        facts.origins = {origin};
        EXPECT_EQ(judged(facts), 403) << origin;
        facts = question("/api/games");
        facts.origins = {origin};
        EXPECT_EQ(judged(facts), 403) << origin;
    }
    // A browser always says where a socket comes from.
    RequestFacts silent = socketRequest();
    silent.origins.clear();
    EXPECT_EQ(judged(silent), 403);
    RequestFacts twice = socketRequest();
    twice.origins.push_back(twice.origins[0]);
    EXPECT_EQ(judged(twice), 403);
}

TEST(RequestGuard, RefusesForgedTokens) {
    const std::string right = guardToken;
    for (const std::string& said :
         {std::string(), right.substr(1), right + "0", "f" + right.substr(1),
          right.substr(0, 31) + "e", std::string("0"), right + std::string(1, '\0')}) {
        RequestFacts facts = question("/api/games");
        facts.token = said;
        EXPECT_EQ(judged(facts), 403) << said;
        facts = socketRequest();
        facts.token = said;
        EXPECT_EQ(judged(facts), 403) << said;
    }
}

TEST(RequestGuard, TakesNothingButShortQuestions) {
    RequestFacts facts = question("/");
    facts.method = "POST";
    EXPECT_EQ(judged(facts), 405);
    facts.method = "get";
    EXPECT_EQ(judged(facts), 405);
    facts = question("/");
    facts.hasBody = true;
    EXPECT_EQ(judged(facts), 413);
    facts = question("/" + std::string(RequestGuard::longestTarget, 'a'));
    EXPECT_EQ(judged(facts), 414);
    // Strangers are not told what would be wrong with it.
    facts.hosts = {"evil.example"};
    facts.method = "POST";
    EXPECT_EQ(judged(facts), 403);
}

TEST(RequestGuard, LeavesTheDefaultPortOut) {
    RequestFacts facts = question("/");
    facts.hosts = {"127.0.0.1"};
    EXPECT_EQ(RequestGuard(80, guardToken).judge(facts), 200);
    EXPECT_EQ(judged(facts), 403);
}

TEST(MakeToken, IsLongAndNewEachTime) {
    std::set<std::string> tokens;
    for (int i = 0; i < 100; ++i) {
        const auto made = makeToken();
        ASSERT_TRUE(made.ok());
        EXPECT_EQ(made->size(), 32U);
        EXPECT_EQ(made->find_first_not_of("0123456789abcdef"), std::string::npos);
        tokens.insert(*made);
    }
    EXPECT_EQ(tokens.size(), 100U);
}

TEST(AnswerHeaders, KeepOtherSitesOut) {
    std::set<std::string> said;
    for (const auto& [name, value] : answerHeaders)
        said.insert(std::string(name) + ": " + value);
    EXPECT_TRUE(
        said.contains("Content-Security-Policy: default-src 'self'; frame-ancestors 'none'"));
    EXPECT_TRUE(said.contains("X-Content-Type-Options: nosniff"));
    EXPECT_TRUE(said.contains("Cross-Origin-Resource-Policy: same-origin"));
    EXPECT_TRUE(said.contains("Referrer-Policy: no-referrer"));
}

} // namespace tamarin::test
