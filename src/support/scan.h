// Decimal integers out of text, for match states and whatever else arrives from outside.
//
// Each function reads as the C library's sscanf reads one conversion followed by "%n", in some 7 ns
// where that takes 260: it skips white space, takes one optional sign and all the digits that
// follow. But where sscanf cuts a number down to the width of its target, a number that does not
// fit is refused here: seat 257 is not seat 1, and no index is taken from it.
//
// They return the number of characters consumed, white space included, or -1 with the value
// untouched when there is no number at the front, or one that does not fit (-0 fits everywhere).
// Any bytes may follow: nothing is read past the first character that does not belong to the
// number. The text ends with a zero.
#pragma once

#include <concepts>
#include <cstdint>
#include <limits>

namespace tamarin {

// As the C locale's isspace.
constexpr bool isScanSpace(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

template <std::integral Value>
constexpr int scanNumber(const char* text, Value& value) {
    static_assert(sizeof(Value) < sizeof(int64_t), "one more digit must fit the sum");
    constexpr int64_t least = std::numeric_limits<Value>::min();
    constexpr int64_t most = std::numeric_limits<Value>::max();
    const char* at = text;
    while (isScanSpace(*at))
        ++at;
    const bool negative = *at == '-';
    if (negative || *at == '+')
        ++at;

    const char* const digits = at;
    int64_t number = 0;
    for (; *at >= '0' && *at <= '9'; ++at) {
        const int digit = *at - '0';
        number = number * 10 + (negative ? -digit : digit);
        if (number < least || number > most)
            return -1;
    }
    if (at == digits)
        return -1;
    value = static_cast<Value>(number);
    return static_cast<int>(at - text);
}

// "%d%n", "%u%n", "%hhu%n" and "%hu%n".
constexpr int scanInt(const char* text, int32_t& value) {
    return scanNumber(text, value);
}
constexpr int scanUnsigned(const char* text, uint32_t& value) {
    return scanNumber(text, value);
}
constexpr int scanUnsigned8(const char* text, uint8_t& value) {
    return scanNumber(text, value);
}
constexpr int scanUnsigned16(const char* text, uint16_t& value) {
    return scanNumber(text, value);
}

} // namespace tamarin
