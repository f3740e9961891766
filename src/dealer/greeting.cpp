#include "dealer/greeting.h"

#include <algorithm>
#include <cstdio>

namespace tamarin {

namespace {

constexpr std::string_view versionLine = "VERSION:2.0.0";
constexpr std::string_view tokenWord = "#token ";

// Bytes from a stranger, fit for a terminal.
std::string printable(std::string_view text) {
    constexpr size_t longest = 80;
    std::string result;
    for (const char c : text.substr(0, longest)) {
        if (c >= ' ' && c <= '~') {
            result += c;
        } else {
            char escape[8];
            std::snprintf(escape, sizeof escape, "\\x%02X", static_cast<unsigned char>(c));
            result += escape;
        }
    }
    return text.size() > longest ? result + "..." : result;
}

} // namespace

bool isToken(std::string_view text) {
    constexpr size_t longest = 200;
    return !text.empty() && text.size() <= longest &&
           std::ranges::all_of(text, [](char c) { return c > ' ' && c <= '~'; });
}

bool sameToken(std::string_view expected, std::string_view said) {
    if (expected.empty())
        return said.empty();
    unsigned different = expected.size() == said.size() ? 0 : 1;
    for (size_t i = 0; i < said.size(); ++i)
        different |= static_cast<unsigned char>(said[i] ^ expected[i % expected.size()]);
    return different == 0;
}

Greeting::Outcome Greeting::hear(const std::string& line) {
    const bool saysToken = line.starts_with(tokenWord);
    if (!token_.empty()) {
        if (!saysToken)
            complaint_ = "gives no token";
        else if (!sameToken(token_, std::string_view(line).substr(tokenWord.size())))
            complaint_ = "gives a wrong token";
        token_.clear();
        return complaint_.empty() ? Outcome::unfinished : Outcome::refused;
    }
    if (line == versionLine)
        return Outcome::welcome;
    complaint_ = "says '" + (saysToken ? "#token ..." : printable(line)) + "' instead of ";
    complaint_ += versionLine;
    return Outcome::refused;
}

} // namespace tamarin
