// What all trainers of a small game have in common: they run, can be looked at, saved and resumed.
//
//   player  the player's own training, CFR::train: one random deal an iteration, regrets weighed
//           with the reach of the player who acted last. Does not approach an equilibrium
//   cfr, cfr+, lcfr, dcfr, pcfr+     counterfactual weights; see training/equilibrium.h
#pragma once

#include "solver/cfr.h"
#include "training/profile.h"
#include "training/small_game.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tamarin {

enum class Algorithm : uint8_t { player, cfr, cfrPlus, linear, discounted, predictive };

// "player", "cfr", "cfr+", "lcfr", "dcfr", "pcfr+".
const char* algorithmName(Algorithm algorithm);
std::optional<Algorithm> algorithmNamed(const std::string& name);

struct TrainerConfig {
    Algorithm algorithm = Algorithm::discounted;
    uint32_t sampledDeals = 0; // an iteration's deals, drawn at random; 0: all deals
    uint64_t seed = 1;         // of the sampling, and of the player's own training
    int threads = 1;           // 0: one a core; the numbers do not depend on it
};

// One information set's numbers, in a state that can be laid aside. 72 bytes.
struct TrainerNumbers {
    double regret[numAbstractedActions];     // NaN: an action that training leaves out
    double strategy[numAbstractedActions];   // sums
    double prediction[numAbstractedActions]; // pcfr+: the last regrets; else 0
};

// All that a run depends on, besides game and configuration.
struct TrainerState {
    uint64_t iteration = 0;
    uint64_t random = 0;              // the generator's
    std::vector<TrainerNumbers> sets; // by SmallGame::layout()'s index
};

class Trainer {
public:
    virtual ~Trainer() = default;

    // Iterations come in blocks, so that a run does not depend on how it was divided: run() rounds
    // up to whole ones.
    virtual uint64_t block() const { return 1; }
    virtual void run(uint64_t iterations) = 0;
    virtual uint64_t iteration() const = 0;

    // The average strategy; uniform where a set was never reached.
    virtual Profile average() const = 0;

    virtual TrainerState state() const = 0;
    // Goes on from a state of the same game and configuration.
    virtual void restore(const TrainerState& state) = 0;

    // Writes regrets and strategy sums into the nodes of a solver of the same game; its tree is
    // built anew with every legal action, and actions that training leaves out are taken from it.
    void store(CFR& solver) const;

protected:
    explicit Trainer(const SmallGame& game) : game_(game) {}
    const SmallGame& game_;
};

// The game must outlive the trainer. The player's own training draws from the process-wide engine,
// which it seeds.
std::unique_ptr<Trainer> makeTrainer(const SmallGame& game, const TrainerConfig& config);

} // namespace tamarin
