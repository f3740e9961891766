// A hold'em player's strategy and hands that need neither training nor tables: a solver that knows
// the first round alone, and hands that are what a function says. For fuzzing, too: no GoogleTest.
#pragma once

#include "driver/holdem_hands.h"
#include "solver/cfr.h"
#include "strategy/strategy_record.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <sys/mman.h>
#include <unistd.h>
#include <utility>

namespace tamarin::test {

// A tree whose nodes go with it; those of a solver that plays deliberately stay.
class PassingTree : public CFR {
public:
    using CFR::CFR;
    ~PassingTree() override {
        for (int map = 0; map < game->numPlayers * game->numRounds; ++map)
            for (const auto& [key, node] : nodeMaps[map])
                delete node;
    }
};

// The bytes of a strategy file for the game with the information sets of its first round and of no
// other. choose gives the action that a set always plays, 0 fold, 1 call, 2 raise; -1 for each as
// often as the others.
inline std::string
firstRoundStrategy(const Game& game,
                   const std::function<int(const std::string& key)>& choose = nullptr) {
    Game first = game;
    first.numRounds = 1;
    PassingTree tree(&first);
    tree.useCardAbstraction = true;
    tree.useHoldemTables = true;
    for (uint64_t bucket = 0; bucket < 10; ++bucket) {
        for (auto& ofActing : tree.holdemBucket[0])
            std::fill(std::begin(ofActing), std::end(ofActing), bucket);
        State root{};
        initState(&first, 0, &root);
        tree.createAbstractedGameTree(&root);
    }
    std::string bytes;
    const auto put = [&](const auto& value) {
        bytes.append(reinterpret_cast<const char*>(&value), sizeof value);
    };
    for (int seat = 0; seat < game.numPlayers; ++seat) {
        put(static_cast<StrategyCount>(tree.nodeMap(seat, 0).size()));
        for (const auto& [key, node] : tree.nodeMap(seat, 0)) {
            StrategyRecord record{};
            std::copy(key.begin(), key.end(), record.key);
            std::copy_n(node->regretSum, numAbstractedActions, record.regretSum);
            std::copy_n(node->strategySum, numAbstractedActions, record.strategySum);
            if (const int action = choose ? choose(key) : -1; action >= 0)
                record.strategySum[action] = 1;
            put(record);
        }
        for (int round = 1; round < game.numRounds; ++round)
            put(StrategyCount{0});
    }
    return bytes;
}

// A solver that holds these bytes; the game must outlive it. Null when it does not take them.
inline std::unique_ptr<CFR> solverOf(Game& game, const std::string& bytes) {
    const int fd = memfd_create("strategy", MFD_CLOEXEC);
    const bool written =
        write(fd, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size());
    auto solver = std::make_unique<CFR>(&game);
    const bool loaded = written && solver->load("/proc/self/fd/" + std::to_string(fd));
    close(fd);
    return loaded ? std::move(solver) : nullptr;
}

// Hands as functions say; they may write down what they are asked.
class FunctionHands : public HoldemHands {
public:
    std::function<uint8_t(int players, int round, int seat, const uint8_t* cards)> bucketOf;
    std::function<double(int players, int round, const uint8_t* cards)> equityOf;

    uint8_t bucket(int players, int round, int seat, const uint8_t* cards) const override {
        return bucketOf(players, round, seat, cards);
    }
    double equity(int players, int round, const uint8_t* cards) const override {
        return equityOf(players, round, cards);
    }
};

} // namespace tamarin::test
