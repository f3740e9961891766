#include "eval/hand_range.h"

#include <gtest/gtest.h>

namespace tamarin::test {

namespace {

size_t handsIn(const std::string& text) {
    const auto range = parseHandRange(text);
    EXPECT_TRUE(range.ok()) << range.error();
    return range ? range->hands.size() : 0;
}

void expectSame(const std::string& a, const std::string& b) {
    const auto first = parseHandRange(a);
    const auto second = parseHandRange(b);
    ASSERT_TRUE(first.ok()) << first.error();
    ASSERT_TRUE(second.ok()) << second.error();
    EXPECT_EQ(first->hands, second->hands) << a << " and " << b;
}

std::string refusal(const std::string& text) {
    const auto range = parseHandRange(text);
    return range ? "was read" : range.error();
}

} // namespace

TEST(HandRange, CountsHands) {
    EXPECT_EQ(handsIn("AsKd"), 1U);
    EXPECT_EQ(handsIn("AKs"), 4U);
    EXPECT_EQ(handsIn("AKo"), 12U);
    EXPECT_EQ(handsIn("AK"), 16U);
    EXPECT_EQ(handsIn("TT"), 6U);
    EXPECT_EQ(handsIn("TT+"), 30U);
    EXPECT_EQ(handsIn("22+"), 78U);
    EXPECT_EQ(handsIn("A2+"), 192U);
    EXPECT_EQ(handsIn("ATs+"), 16U);
    EXPECT_EQ(handsIn("A5s-A2s"), 16U);
    EXPECT_EQ(handsIn("random"), 1326U);
    EXPECT_EQ(handsIn("any"), 1326U);
    EXPECT_EQ(handsIn("AKs, AsKs, TT"), 10U);
}

TEST(HandRange, SpellingsOfTheSame) {
    expectSame("AKs", "KAS");
    expectSame("asKD", "KdAs");
    expectSame("77-TT", "TT-77");
    expectSame("77-TT", "77,88,99,TT");
    expectSame("A5s-A2s", "A2s,A3s,A4s,A5s");
    expectSame("A5o-A2o", "A2o-A5o");
    expectSame("QTs+", "QTs,QJs");
    expectSame("AKs+", "AKs");
    expectSame("87s-54s", "54s,65s,76s,87s");
    expectSame("AQ", "AQs,AQo");
    expectSame(" AA , KK ", "KK,AA");
    expectSame("KQs", "KcQc,KdQd,KhQh,KsQs");
}

TEST(HandRange, SaysWhatIsWrong) {
    EXPECT_NE(refusal("AXs").find("\"X\" is no rank"), std::string::npos) << refusal("AXs");
    EXPECT_NE(refusal("TT,AsAs").find("the same card twice"), std::string::npos);
    EXPECT_NE(refusal("TTs").find("neither suited"), std::string::npos);
    EXPECT_NE(refusal("A").find("too early"), std::string::npos);
    EXPECT_NE(refusal("AsKdQh").find("a hand is two cards"), std::string::npos);
    EXPECT_NE(refusal("As").find("a hand is two cards"), std::string::npos);
    EXPECT_NE(refusal("AK!").find("\"!\""), std::string::npos);
    EXPECT_NE(refusal("AK++").find("not expected"), std::string::npos);
    EXPECT_NE(refusal("A5s-K2s").find("alike"), std::string::npos);
    EXPECT_NE(refusal("A5s-A2o").find("alike"), std::string::npos);
    EXPECT_NE(refusal("TT-A2s").find("alike"), std::string::npos);
    EXPECT_NE(refusal("AA-AK").find("alike"), std::string::npos);
    EXPECT_NE(refusal("AKs-").find("too early"), std::string::npos);
    EXPECT_NE(refusal("A5s-A2s-").find("more after"), std::string::npos);
    EXPECT_NE(refusal("").find("nothing stands"), std::string::npos);
    EXPECT_NE(refusal("AA,,KK").find("nothing stands"), std::string::npos);
    EXPECT_NE(refusal("AA,").find("nothing stands"), std::string::npos);
}

// Any bytes give a value or an error, and a value has hands of two cards.
TEST(HandRange, ReadsAnyBytes) {
    const std::string letters("AKT2scdho+-, x\0\xff", 17);
    uint32_t draw = 1;
    for (int i = 0; i < 200000; ++i) {
        std::string text;
        draw = draw * 1664525 + 1013904223;
        for (uint32_t n = (draw >> 16) % 8; n > 0; --n) {
            draw = draw * 1664525 + 1013904223;
            text += letters[(draw >> 16) % letters.size()];
        }
        const auto range = parseHandRange(text);
        if (!range)
            continue;
        ASSERT_FALSE(range->hands.empty()) << text;
        for (const CardSet hand : range->hands)
            ASSERT_EQ(__builtin_popcountll(hand), 2) << text;
    }
}

TEST(ParseCards, ReadsCardsInOrder) {
    const auto cards = parseCards("Qs8h 3d,2C");
    ASSERT_TRUE(cards.ok());
    EXPECT_EQ(*cards, (std::vector<uint8_t>{43, 26, 5, 0}));
    EXPECT_TRUE(parseCards("")->empty());
    EXPECT_EQ(printCardSet(cardSetOf(*cards)), "Qs8h3d2c");
}

TEST(ParseCards, SaysWhatIsWrong) {
    EXPECT_NE(parseCards("Qs8").error().find("\"8\""), std::string::npos);
    EXPECT_NE(parseCards("Qs1h").error().find("\"1h\""), std::string::npos);
    EXPECT_NE(parseCards("QsQs").error().find("twice"), std::string::npos);
}

} // namespace tamarin::test
