#include "web/client_message.h"

#include <gtest/gtest.h>

namespace tamarin::test {

namespace {

using Kind = ClientMessage::Kind;

std::string errorOf(const std::string& text) {
    const auto read = readClientMessage(text);
    return read ? "" : read.error();
}

} // namespace

TEST(ClientMessage, ReadsEachKind) {
    const auto sit = readClientMessage(
        R"({"type":"sit","game":"kuhn.limit.3p.game","opponents":["player","rule"]})");
    ASSERT_TRUE(sit.ok());
    EXPECT_EQ(sit->kind, Kind::sit);
    EXPECT_EQ(sit->game, "kuhn.limit.3p.game");
    EXPECT_EQ(sit->opponents, (std::vector<std::string>{"player", "rule"}));
    const auto back = readClientMessage(R"({"type":"back","table":3})");
    ASSERT_TRUE(back.ok());
    EXPECT_EQ(back->kind, Kind::back);
    EXPECT_EQ(back->table, 3U);
    const auto next = readClientMessage(R"( {"hand" : 4294967295, "type" : "next"} )");
    ASSERT_TRUE(next.ok());
    EXPECT_EQ(next->kind, Kind::next);
    EXPECT_EQ(next->hand, UINT32_MAX);
    const auto leave = readClientMessage(R"({"type":"leave","more":[1,2]})");
    ASSERT_TRUE(leave.ok());
    EXPECT_EQ(leave->kind, Kind::leave);
}

TEST(ClientMessage, ReadsActions) {
    const auto raise =
        readClientMessage(R"({"type":"act","hand":12,"actions":3,"action":"r","size":300})");
    ASSERT_TRUE(raise.ok());
    EXPECT_EQ(raise->kind, Kind::act);
    EXPECT_EQ(raise->hand, 12U);
    EXPECT_EQ(raise->actions, 3U);
    EXPECT_EQ(raise->action.type, actionRaise);
    EXPECT_EQ(raise->action.size, 300);
    const auto fold = readClientMessage(R"({"type":"act","hand":0,"actions":0,"action":"f"})");
    ASSERT_TRUE(fold.ok());
    EXPECT_EQ(fold->action.type, actionFold);
    EXPECT_EQ(fold->action.size, 0);
    EXPECT_EQ(readClientMessage(R"({"type":"act","hand":0,"actions":0,"action":"c"})")->action.type,
              actionCall);
}

TEST(ClientMessage, RefusesEverythingElse) {
    for (const char* text : {"", "null", "[]", "3", "\"sit\"", "{", "{}", R"({"type":7})",
                             R"({"type":"stand"})", "\xff\xfe", "{\"type\":\"\xff\"}"})
        EXPECT_NE(errorOf(text), "") << text;
    for (const char* action : {"", "x", "F", "rr", "r300"})
        EXPECT_EQ(errorOf(std::string(R"({"type":"act","hand":0,"actions":0,"action":")") + action +
                          "\"}"),
                  "an action is f, c or r");
    for (const char* hand : {"-1", "1.5", "4294967296", "\"1\"", "null", "1e3", "[1]"})
        EXPECT_EQ(errorOf(std::string(R"({"type":"next","hand":)") + hand + "}"),
                  "\"next\" needs a hand")
            << hand;
    for (const char* size : {"-1", "2147483648", "1.5", "\"9\"", "null"})
        EXPECT_EQ(
            errorOf(std::string(R"({"type":"act","hand":0,"actions":0,"action":"r","size":)") +
                    size + "}"),
            "a size is a whole number of chips, and belongs to a raise");
    EXPECT_EQ(errorOf(R"({"type":"act","hand":0,"actions":0,"action":"c","size":3})"),
              "a size is a whole number of chips, and belongs to a raise");
    EXPECT_EQ(errorOf(R"({"type":"sit","game":"a","opponents":[1]})"), "an opponent is a name");
    EXPECT_EQ(errorOf(R"({"type":"sit","game":"a"})"), "\"sit\" needs a game and its opponents");
    EXPECT_EQ(errorOf(R"({"type":"sit","game":"a","opponents":[0,0,0,0,0,0,0,0,0,0]})"),
              "\"sit\" needs a game and its opponents");
}

TEST(ClientMessage, RefusesWhatIsLongOrDeep) {
    const std::string name(201, 'a');
    EXPECT_NE(errorOf(R"({"type":"sit","game":")" + name + R"(","opponents":[]})"), "");
    EXPECT_EQ(errorOf(std::string(longestMessage + 1, ' ')), "the message is too long");
    EXPECT_EQ(errorOf(std::string(2000, '[')), "the message is no JSON object");
    EXPECT_EQ(
        errorOf(R"({"type":"leave","x":)" + std::string(40, '[') + std::string(40, ']') + "}"),
        "the message is no JSON object");
}

} // namespace tamarin::test
