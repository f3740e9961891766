// Options that take a number. What a person types must be a number in full, in decimal, and within
// its range; anything else is wrong usage: "--hands: '1e3' is not a whole number from 1 to
// 4294967295".
#pragma once

#include <cstdint>
#include <string>

#include <CLI/CLI.hpp>

namespace tamarin {

// For ->transform(). CLI11's own reading takes "-1" for 18446744073709551615, "010" for 8, "0x10",
// "nan" and whatever is too large.
CLI::Validator wholeNumber(uint64_t least, uint64_t most);
CLI::Validator decimalNumber(double least, double most);

// Counts of iterations, deals and hands: more than a century of any machine, and far from wrapping.
inline constexpr uint64_t largestCount = 1'000'000'000'000'000'000;
// A duration in seconds: thirty years, or a millisecond.
inline constexpr double leastSeconds = 0.001;
inline constexpr double mostSeconds = 1e9;

// value: of an integer type that holds the range, or an optional of one.
template <class Number>
CLI::Option* addWholeNumber(CLI::App& command, const std::string& name, Number& value,
                            uint64_t least, uint64_t most, const std::string& what) {
    return command.add_option(name, value, what)
        ->transform(wholeNumber(least, most))
        ->type_name("N");
}

// value: a double, or an optional of one.
template <class Seconds>
CLI::Option* addSeconds(CLI::App& command, const std::string& name, Seconds& value,
                        const std::string& what) {
    return command.add_option(name, value, what)
        ->transform(decimalNumber(leastSeconds, mostSeconds))
        ->type_name("SECONDS");
}

} // namespace tamarin
