// Decimal integers out of text, for the readers of game files and match states.
//
// Each function reads as the C library's sscanf reads one conversion followed by "%n", in some 7 ns
// where that takes 260: it skips white space, takes one optional sign and all the digits that
// follow, converts to 64 bits (signed or unsigned) with saturation, and then cuts the value down to
// the width of the target. So -5 read as unsigned is 2^32 - 5, 258 read as 8 bits is 2, and a
// number beyond 64 bits gives the low bits of the saturated value (-1 for a huge positive int).
//
// They return the number of characters consumed, white space included, or -1 with the value
// untouched when there is no number at the front. Any bytes may follow; nothing past the first
// character that does not belong to the number is looked at. The text ends with a zero.
#pragma once

#include <concepts>
#include <cstdint>
#include <type_traits>

namespace tamarin {

// As the C locale's isspace.
constexpr bool isScanSpace(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

template <std::integral Value>
constexpr int scanNumber(const char* text, Value& value) {
    const char* at = text;
    while (isScanSpace(*at))
        ++at;
    const bool negative = *at == '-';
    if (negative || *at == '+')
        ++at;

    constexpr uint64_t limit = UINT64_MAX;
    const char* const digits = at;
    uint64_t magnitude = 0;
    bool tooLarge = false;
    for (;; ++at) {
        const uint64_t digit = static_cast<uint64_t>(*at) - '0';
        if (digit > 9)
            break;
        if (magnitude >= limit / 10) [[unlikely]]
            tooLarge = tooLarge || magnitude > limit / 10 || digit > limit % 10;
        magnitude = magnitude * 10 + digit;
    }
    if (at == digits)
        return -1;

    if constexpr (std::is_signed_v<Value>) {
        const uint64_t bound = static_cast<uint64_t>(INT64_MAX) + (negative ? 1 : 0);
        if (tooLarge || magnitude > bound)
            magnitude = bound;
    } else if (tooLarge) {
        value = static_cast<Value>(limit); // whatever the sign
        return static_cast<int>(at - text);
    }
    value = static_cast<Value>(negative ? 0 - magnitude : magnitude);
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
