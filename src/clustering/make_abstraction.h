// Makes a card abstraction, or goes on with one that was stopped.
//
// What is made has the same bytes with any number of threads, and whether it was made in one go or
// stopped and taken up again: by a signal, by kill -9, at any time.
#pragma once

#include "clustering/abstraction_description.h"
#include "support/result.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace tamarin {

struct MakeOptions {
    std::string directory = ".";
    std::string name; // empty: abstractionName()
    BucketCounts counts{};
    AbstractionOptions options; // by percentile, all but the method may be any that are in range
    bool force = false;         // makes anew what is there, or begun
    int threads = 0;            // 0: as many as there are cores
    double saveSeconds = 5; // at least so long between two saves of a fit; 0: after every iteration

    std::function<void(const std::string& step, uint64_t done, uint64_t total)> progress;
    std::function<void(const std::string& line)> log;
    std::function<bool()> stop; // asked often, on any thread

    std::string nameOrOwn() const {
        return name.empty() ? abstractionName(counts, options.method) : name;
    }
    // Hands that the turn or the river is fitted to.
    uint64_t sampleOf(size_t round) const;
};

struct MadeAbstraction {
    std::string folder;
    bool made = false; // false: it was there already
    AbstractionDescription description;
    struct Step {
        std::string name;
        double seconds = 0;
    };
    std::vector<Step> steps;
};

// An error "stopped" when options.stop said so; what is done is kept then. Refuses counts and
// options out of their ranges (abstraction_name.h, abstraction_description.h), an abstraction
// of that name that is there, or begun, with other options, and one that somebody else is making.
Result<MadeAbstraction> makeAbstraction(const MakeOptions& asked);

} // namespace tamarin
