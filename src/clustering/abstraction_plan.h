// What making a card abstraction takes, before anything is done.
#pragma once

#include "clustering/make_abstraction.h"

#include <cstdint>
#include <string>
#include <vector>

namespace tamarin {

struct AbstractionPlan {
    enum class State { missing, begun, whole, different };
    struct File {
        std::string path;
        uint64_t bytes;
    };
    State state = State::missing; // different: there or begun, but refused, see problem
    std::string problem;
    std::vector<File> files; // those to be made: not the finished rounds of one that is begun
    uint64_t disk = 0;       // of those
    uint64_t memory = 0;
    double seconds = 0; // roughly, on two cores
};

AbstractionPlan planAbstraction(const MakeOptions& options);

} // namespace tamarin
