// What a training run drives: something that iterates, of which it can be said how far it has come.
#pragma once

#include "training/best_response.h"

#include <cstdint>
#include <variant>

namespace tamarin {

// Positive regrets per iteration and information set, in chips: falls towards 0 in training.
struct AverageRegret {
    double chips;
};

// How good the training is: exactly where a game is small, else by what there is to see.
using TrainingMeasure = std::variant<ProfileValue, AverageRegret>;

class Trainer {
public:
    virtual ~Trainer() = default;

    // Iterations come in blocks, so that a run does not depend on how it was divided: run() rounds
    // up to whole ones.
    virtual uint64_t block() const { return 1; }
    virtual void run(uint64_t iterations) = 0;
    virtual uint64_t iteration() const = 0;
    virtual TrainingMeasure measure() const = 0;
};

} // namespace tamarin
