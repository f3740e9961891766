#include "toolbox/numbers.h"

#include <charconv>
#include <optional>

#include <fmt/format.h>

namespace tamarin {

namespace {

// Never of "nan", which is in no range.
template <class Number>
std::optional<Number> readWithin(const std::string& text, Number least, Number most) {
    Number number{};
    const char* const end = text.data() + text.size();
    const auto [stopped, error] = std::from_chars(text.data(), end, number);
    const bool within = number >= least && number <= most;
    return error == std::errc{} && stopped == end && within ? std::optional(number) : std::nullopt;
}

} // namespace

CLI::Validator wholeNumber(uint64_t least, uint64_t most) {
    return CLI::Validator(
        [=](std::string& text) {
            const auto number = readWithin(text, least, most);
            if (!number)
                return fmt::format("'{}' is not a whole number from {} to {}", text, least, most);
            text = std::to_string(*number); // without the zeros before it, which mean octal
            return std::string();
        },
        "");
}

CLI::Validator decimalNumber(double least, double most) {
    return CLI::Validator(
        [=](std::string& text) {
            if (readWithin(text, least, most))
                return std::string();
            return fmt::format("'{}' is not a number from {:.12g} to {:.12g}", text, least, most);
        },
        "");
}

} // namespace tamarin
