#include "support/scan.h"

#include <cstdio>
#include <string>
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

// Each form once by the C library and once by us, from a target with a known pattern that must stay
// when nothing is read.
template <class Value>
std::pair<Outcome, Outcome> both(const char* format, int (*scan)(const char*, Value&),
                                 const std::string& text) {
    Value theirs = static_cast<Value>(0xA5A5A5A5);
    Value ours = theirs;
    int characters = -1;
    if (std::sscanf(text.c_str(), format, &theirs, &characters) != 1)
        characters = -1;
    const int consumed = scan(text.c_str(), ours);
    return {{characters, static_cast<uint64_t>(theirs)}, {consumed, static_cast<uint64_t>(ours)}};
}

std::vector<std::pair<Outcome, Outcome>> allForms(const std::string& text) {
    return {both<int32_t>("%d%n", scanInt, text), both<uint32_t>("%u%n", scanUnsigned, text),
            both<uint8_t>("%hhu%n", scanUnsigned8, text),
            both<uint16_t>("%hu%n", scanUnsigned16, text)};
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

constexpr int constantSeven() {
    int32_t value = 0;
    return scanInt(" 7;", value) == 2 ? value : -1;
}
static_assert(constantSeven() == 7);

} // namespace
} // namespace tamarin::test
