#include "support/scan.h"

#include <cstdio>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

namespace tamarin::test {
namespace {

struct Outcome {
    int consumed = -1;
    uint64_t value = 0;
    bool operator==(const Outcome&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Outcome& outcome) {
    return out << outcome.consumed << " characters, value " << outcome.value;
}

// Once by the C library, wide, and refused where the target is narrower; once by us. The target
// holds a known pattern, which must stay when nothing is read.
template <class Value>
std::pair<Outcome, Outcome> both(int (*scan)(const char*, Value&), const std::string& text) {
    const auto pattern = static_cast<Value>(0xA5A5A5A5);
    Outcome theirs{-1, static_cast<uint64_t>(pattern)};
    long long wide = 0;
    int characters = -1;
    if (std::sscanf(text.c_str(), "%lld%n", &wide, &characters) == 1 && std::in_range<Value>(wide))
        theirs = {characters, static_cast<uint64_t>(static_cast<Value>(wide))};
    Value value = pattern;
    const int consumed = scan(text.c_str(), value);
    return {theirs, {consumed, static_cast<uint64_t>(value)}};
}

std::vector<std::pair<Outcome, Outcome>> allForms(const std::string& text) {
    return {both<int32_t>(scanInt, text), both<uint32_t>(scanUnsigned, text),
            both<uint8_t>(scanUnsigned8, text), both<uint16_t>(scanUnsigned16, text)};
}

void expectEqual(const std::string& text) {
    for (const auto& [theirs, ours] : allForms(text))
        EXPECT_EQ(theirs, ours) << '"' << text << '"';
}

TEST(Scan, AgreesWithSscanfAtTheEdges) {
    const std::vector<std::string> magnitudes{"0",
                                              "00",
                                              "007",
                                              "1",
                                              "5",
                                              "9",
                                              "10",
                                              "127",
                                              "128",
                                              "255",
                                              "256",
                                              "257",
                                              "258",
                                              "32767",
                                              "32768",
                                              "65535",
                                              "65536",
                                              "2147483646",
                                              "2147483647",
                                              "2147483648",
                                              "2147483649",
                                              "4294967294",
                                              "4294967295",
                                              "4294967296",
                                              "4294967297",
                                              "9223372036854775806",
                                              "9223372036854775807",
                                              "9223372036854775808",
                                              "9223372036854775809",
                                              "9999999999999999999",
                                              "18446744073709551609",
                                              "18446744073709551610",
                                              "18446744073709551614",
                                              "18446744073709551615",
                                              "18446744073709551616",
                                              "18446744073709551617",
                                              "18446744073709551620",
                                              "18446744073709551625",
                                              "99999999999999999999",
                                              "184467440737095516150",
                                              "1000000000000000000000000000000",
                                              std::string(400, '0') + "12",
                                              std::string(400, '9')};
    for (const std::string& magnitude : magnitudes)
        for (const char* sign : {"", "+", "-"})
            for (const char* before : {"", " ", "\t\n\v\f\r "})
                for (const char* after : {"", " ", ":", "x", "\r\n", ".5", "e3", "-1", "\xff"})
                    expectEqual(before + (sign + magnitude) + after);
}

TEST(Scan, AgreesWithSscanfWhereThereIsNoNumber) {
    for (const char* text : {"", " ", "+", "-", "+ 1", "- 1", "--1", "+-1", "x1", ":1", "=1", ".1",
                             "\xa0"
                             "1",
                             "\x85"
                             "1",
                             "\x01"
                             "1",
                             "\x1c"
                             "1",
                             "/", "0x10", "\n\n-"})
        expectEqual(text);
}

RC_GTEST_PROP(Scan, AgreesWithSscanfOnAnyText, ()) {
    const auto letters = rc::gen::elementOf(std::string("0123456789019+- \t\n:x\xff"));
    const auto text = *rc::gen::container<std::string>(letters);
    for (const auto& [theirs, ours] : allForms(text))
        RC_ASSERT(theirs == ours);
}

RC_GTEST_PROP(Scan, AgreesWithSscanfOnAnyNumber, (int64_t number, uint32_t factor)) {
    for (const std::string& text :
         {std::to_string(number), std::to_string(static_cast<uint64_t>(number)),
          std::to_string(number) + std::to_string(factor)})
        for (const auto& [theirs, ours] : allForms(text))
            RC_ASSERT(theirs == ours);
}

// One too many at each end, and the last that fits.
TEST(Scan, RefusesWhatDoesNotFit) {
    uint8_t seat = 77;
    EXPECT_EQ(scanUnsigned8("255:", seat), 3);
    EXPECT_EQ(seat, 255);
    for (const char* text : {"256", "257", "-1", "4294967297", "99999999999999999999999"})
        EXPECT_EQ(scanUnsigned8(text, seat), -1) << text;
    EXPECT_EQ(seat, 255);
    uint16_t port = 0;
    EXPECT_EQ(scanUnsigned16("65535abc", port), 5);
    EXPECT_EQ(scanUnsigned16("65536", port), -1);
    EXPECT_EQ(scanUnsigned16("70000", port), -1);
    uint32_t hand = 0;
    EXPECT_EQ(scanUnsigned("4294967295", hand), 10);
    EXPECT_EQ(scanUnsigned("4294967296", hand), -1);
    EXPECT_EQ(scanUnsigned("-0", hand), 2);
    EXPECT_EQ(scanUnsigned("18446744073709551616", hand), -1); // 2 to the 64th
    int32_t size = 0;
    EXPECT_EQ(scanInt("-2147483648", size), 11);
    EXPECT_EQ(scanInt("-2147483649", size), -1);
    EXPECT_EQ(scanInt("2147483647", size), 10);
    EXPECT_EQ(scanInt("2147483648", size), -1);
    EXPECT_EQ(size, 2147483647);
}

constexpr int constantSeven() {
    int32_t value = 0;
    return scanInt(" 7;", value) == 2 ? value : -1;
}
static_assert(constantSeven() == 7);

} // namespace
} // namespace tamarin::test
