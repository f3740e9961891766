// The mean of many numbers, and how surely it is known.
#pragma once

#include <cstdint>

namespace tamarin {

// Mean and variance of a stream of numbers in one pass (Welford 1962).
class RunningMoments {
public:
    void add(double value);
    uint64_t count() const { return count_; }
    double mean() const { return mean_; }
    // Unbiased; 0 below two numbers.
    double variance() const;

private:
    uint64_t count_ = 0;
    double mean_ = 0;
    double squares_ = 0; // summed squared distance from the mean
};

// mean +- halfWidth holds the true mean 95 times in 100.
struct Interval {
    double mean;
    double halfWidth; // infinite below two numbers
};

// The interval for the mean of independent numbers, by Student's distribution.
Interval interval95(const RunningMoments& moments);

// The point below which Student's distribution with that many degrees of freedom (at least 1) has
// 97.5 % of its mass. From four degrees on an expansion (Abramowitz and Stegun 26.7.5) that is
// within 0.005 of the true value, and closer the more there are.
double studentQuantile975(uint64_t degrees);

} // namespace tamarin
