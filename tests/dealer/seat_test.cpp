#include "dealer/seat.h"

#include <gtest/gtest.h>

namespace tamarin::test {

TEST(ParseSeat, ReadsACommand) {
    const auto seat = parseSeat("me=player --fast a=b");
    ASSERT_TRUE(seat.ok());
    EXPECT_EQ(seat->name, "me");
    EXPECT_EQ(seat->kind, SeatKind::command);
    EXPECT_EQ(seat->command, "player --fast a=b");
}

TEST(ParseSeat, ReadsABot) {
    const auto seat = parseSeat("r.1-a_+=bot:random");
    ASSERT_TRUE(seat.ok());
    EXPECT_EQ(seat->name, "r.1-a_+");
    EXPECT_EQ(seat->kind, SeatKind::bot);
    EXPECT_EQ(seat->bot, "random");
}

TEST(ParseSeat, ReadsAListeningSeat) {
    const auto seat = parseSeat("far=listen:16177");
    ASSERT_TRUE(seat.ok());
    EXPECT_EQ(seat->kind, SeatKind::listen);
    EXPECT_EQ(seat->port, 16177);
    EXPECT_EQ(seat->address, "127.0.0.1"); // nobody from outside, unless asked for
    EXPECT_EQ(parseSeat("far=listen:0")->port, 0);
    EXPECT_EQ(parseSeat("far=listen:65535")->port, 65535);
}

TEST(ParseSeat, ReadsTheAddressToListenOn) {
    const auto seat = parseSeat("far=listen:192.168.1.7:16177");
    ASSERT_TRUE(seat.ok());
    EXPECT_EQ(seat->kind, SeatKind::listen);
    EXPECT_EQ(seat->address, "192.168.1.7");
    EXPECT_EQ(seat->port, 16177);
    EXPECT_EQ(parseSeat("far=listen:0.0.0.0:0")->address, "0.0.0.0");
    for (const char* text : {"far=listen::80", "far=listen:localhost:80", "far=listen:1.2.3:80",
                             "far=listen:1.2.3.4.5:80", "far=listen:[::1]:80",
                             "far=listen:256.0.0.1:80", "far=listen:*:80"})
        EXPECT_TRUE(parseSeat(text).error().ends_with(
            "': write listen:PORT or listen:ADDRESS:PORT with an IPv4 address, 0.0.0.0 for all"))
            << text;
}

TEST(ParseSeat, RefusesTheRestInOneLine) {
    for (const char* text :
         {"", "player", "=player", "me=", "me= \t", "a b=player", "a|b=player", "a:b=player",
          "a\nb=player", "far=listen:", "far=listen:x", "far=listen:65536", "far=listen:-1",
          "far=listen:0.0.0.0:", "far=listen:0.0.0.0", "far=listen:80 ", "far=listen:+80",
          "abcdefghijklmnopqrstuvwxyz0123456=player"}) {
        const auto seat = parseSeat(text);
        ASSERT_FALSE(seat.ok()) << text;
        EXPECT_TRUE(seat.error().starts_with("seat '")) << seat.error();
    }
}

} // namespace tamarin::test
