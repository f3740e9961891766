#include "training/holdem_trainer.h"

#include "game/games.h"
#include "solver/hashed_buckets.h"
#include "support/rng.h"

#include <cstring>
#include <filesystem>
#include <map>
#include <string>
#include <unistd.h>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

GamePtr smallLimit(const char* definition, const char* raises) {
    std::string text = definition;
    text.replace(text.find("3 4 4 4"), 7, raises);
    return parseGame(text);
}

// The counterfactual rule once more, by plain recursion over states and text keys.
class PlainTrainer {
public:
    struct Node {
        double regret[3] = {};
        double strategy[3] = {};
    };
    explicit PlainTrainer(const Game& game) : game_(game) {}

    void deal(const State& cards, const DealBuckets& buckets, double weight, bool floor) {
        buckets_ = buckets;
        weight_ = weight;
        floor_ = floor;
        State state = cards;
        initState(&game_, 0, &state);
        double reach[MAX_PLAYERS];
        std::fill_n(reach, MAX_PLAYERS, 1.0);
        double util[MAX_PLAYERS];
        visit(state, "", reach, util);
    }
    std::map<std::string, Node> nodes;

private:
    void visit(const State& state, const std::string& sequence, const double* reach, double* util) {
        const int players = game_.numPlayers;
        if (state.finished) {
            for (int p = 0; p < players; ++p)
                util[p] = valueOfState(&game_, &state, static_cast<uint8_t>(p));
            return;
        }
        const int p = currentPlayer(&game_, &state);
        const int bucket = buckets_.of[state.round][numActingPlayers(&game_, &state)][p];
        Node& node = nodes[std::to_string(p) + ":" + std::to_string(state.round) + ":" +
                           std::to_string(bucket) + ":" + sequence];
        std::vector<int> valid;
        for (int a = 0; a < 3; ++a) {
            Action action{static_cast<ActionType>(a), 0};
            if (isValidAction(&game_, &state, 0, &action))
                valid.push_back(a);
        }
        double strategy[3];
        double total = 0.0;
        for (const int a : valid)
            total += std::max(node.regret[a], 0.0);
        double value[3];
        std::fill_n(util, players, 0.0);
        for (const int a : valid) {
            strategy[a] = total > 0.0 ? std::max(node.regret[a], 0.0) / total
                                      : 1.0 / static_cast<double>(valid.size());
            node.strategy[a] += weight_ * (strategy[a] * reach[p]);
        }
        for (const int a : valid) {
            State child = state;
            const Action action{static_cast<ActionType>(a), 0};
            doAction(&game_, &action, &child);
            double below[MAX_PLAYERS];
            std::copy_n(reach, MAX_PLAYERS, below);
            below[p] = strategy[a] * reach[p];
            double childUtil[MAX_PLAYERS];
            visit(child, sequence + actionChars[a], below, childUtil);
            value[a] = childUtil[p];
            for (int q = 0; q < players; ++q)
                util[q] += strategy[a] * childUtil[q];
        }
        double others = floor_ ? 1.0 : weight_;
        for (int q = 0; q < players; ++q)
            others *= q == p ? 1.0 : reach[q];
        for (const int a : valid) {
            node.regret[a] += others * (value[a] - util[p]);
            if (floor_)
                node.regret[a] = std::max(node.regret[a], 0.0);
        }
    }

    const Game& game_;
    DealBuckets buckets_{};
    double weight_ = 1.0;
    bool floor_ = false;
};

void expectPlainSums(const Game& game, Algorithm algorithm, uint64_t deals) {
    const HashedBuckets buckets;
    HoldemTrainer trainer(game, buckets, {algorithm, 5, 1000});
    trainer.run(deals);
    PlainTrainer plain(game);
    State state{};
    for (uint64_t t = 0; t < deals; ++t) {
        trainer.dealCards(t, &state);
        DealBuckets dealt;
        fillDealBuckets(game, state, buckets, dealt);
        const double weight = algorithm == Algorithm::cfr ? 1.0 : double(t + 1);
        plain.deal(state, dealt, weight, algorithm == Algorithm::cfrPlus);
    }
    size_t compared = 0;
    for (const auto& [key, node] : plain.nodes) {
        CFRNode found;
        const int m = (key[2] - '0') + (key[0] - '0') * game.numRounds;
        ASSERT_TRUE(trainer.sets().find(m, key, found)) << key;
        for (int a = 0; a < 3; ++a) {
            if (!found.isActionValid(a))
                continue;
            ASSERT_EQ(found.regretSum[a], node.regret[a]) << key << " " << a;
            ASSERT_EQ(found.strategySum[a], node.strategy[a]) << key << " " << a;
        }
        ++compared;
    }
    EXPECT_GT(compared, 100U);
}

TEST(HoldemTrainer, LeavesTheSumsOfThePlainRecursion) {
    const GamePtr two = smallLimit(twoPlayerLimit, "1 1 1 1");
    const GamePtr three = smallLimit(threePlayerLimit, "1 1 0 0");
    for (const Algorithm algorithm : {Algorithm::cfr, Algorithm::linear, Algorithm::cfrPlus}) {
        expectPlainSums(*two, algorithm, 200);
        expectPlainSums(*three, algorithm, 50);
    }
}

std::string bytesOf(const HoldemSets& sets) {
    return std::string(reinterpret_cast<const char*>(sets.numbers()),
                       sets.numSets() * sizeof(SetNumbers));
}

class HoldemCheckpoint : public testing::Test {
protected:
    void TearDown() override { std::filesystem::remove(path); }
    const std::string path = testing::TempDir() + "holdem.checkpoint." + std::to_string(getpid());
    const GamePtr game = smallLimit(twoPlayerLimit, "1 1 1 1");
    const HashedBuckets buckets;
};

TEST_F(HoldemCheckpoint, AResumedRunEndsAsOneThatWasNotStopped) {
    for (const Algorithm algorithm : {Algorithm::linear, Algorithm::discounted}) {
        const HoldemTrainerConfig config{algorithm, 9, 70};
        HoldemTrainer whole(*game, buckets, config);
        whole.run(300);
        HoldemTrainer first(*game, buckets, config);
        first.run(123);
        ASSERT_TRUE(first.writeCheckpoint(path).ok());
        HoldemTrainer second(*game, buckets, config);
        const Status read = second.readCheckpoint(path);
        ASSERT_TRUE(read.ok()) << read.error();
        EXPECT_EQ(second.iteration(), 123U);
        second.run(300 - 123);
        EXPECT_TRUE(bytesOf(second.sets()) == bytesOf(whole.sets()));
    }
}

TEST_F(HoldemCheckpoint, RefusesWhatItDidNotWrite) {
    HoldemTrainer trainer(*game, buckets, {Algorithm::linear, 9, 1000});
    trainer.run(5);
    ASSERT_TRUE(trainer.writeCheckpoint(path).ok());
    const auto refusal = [&](HoldemTrainer& reader) {
        const Status read = reader.readCheckpoint(path);
        return read.ok() ? std::string() : read.error();
    };
    HoldemTrainer otherSeed(*game, buckets, {Algorithm::linear, 10, 1000});
    EXPECT_NE(refusal(otherSeed).find("seed is 9 there and 10 here"), std::string::npos)
        << refusal(otherSeed);
    HoldemTrainer otherRule(*game, buckets, {Algorithm::cfrPlus, 9, 1000});
    EXPECT_NE(refusal(otherRule).find("algorithm is lcfr there and cfr+ here"), std::string::npos);
    const GamePtr three = smallLimit(threePlayerLimit, "1 0 0 0");
    HoldemTrainer otherGame(*three, buckets, {Algorithm::linear, 9, 1000});
    EXPECT_NE(refusal(otherGame).find("game.numPlayers is 2 there and 3 here"), std::string::npos);

    const auto size = std::filesystem::file_size(path);
    FILE* file = std::fopen(path.c_str(), "r+");
    std::fseek(file, static_cast<long>(size / 2), SEEK_SET);
    const int byte = std::fgetc(file);
    std::fseek(file, -1, SEEK_CUR);
    std::fputc(byte ^ 4, file);
    std::fclose(file);
    EXPECT_NE(refusal(trainer).find("damaged"), std::string::npos);
    for (const auto cut : {size - 1, size / 2, uintmax_t{20}, uintmax_t{9}, uintmax_t{0}}) {
        std::filesystem::resize_file(path, cut);
        EXPECT_NE(refusal(trainer), "") << cut;
    }
}

TEST(HoldemTrainer, DoesNotDependOnThreads) {
    const GamePtr two = smallLimit(twoPlayerLimit, "1 1 1 1");
    const GamePtr three = smallLimit(threePlayerLimit, "1 1 0 0");
    const HashedBuckets buckets;
    for (const Game* game : {two.get(), three.get()}) {
        for (const Algorithm algorithm :
             {Algorithm::player, Algorithm::cfrPlus, Algorithm::discounted}) {
            HoldemTrainer one(*game, buckets, {algorithm, 5, 64, 16, 1});
            HoldemTrainer many(*game, buckets, {algorithm, 5, 64, 16, 3});
            one.run(200);
            many.run(200);
            EXPECT_EQ(one.iteration(), 208U); // whole batches
            EXPECT_TRUE(bytesOf(one.sets()) == bytesOf(many.sets()));
        }
    }
}

// The cut leaves nothing out: the average strategy is worth the same in a batch as deal by deal.
TEST(HoldemBatch, FindsTheValuesOfSingleWalks) {
    const GamePtr game = smallLimit(twoPlayerLimit, "1 1 1 1");
    const HashedBuckets buckets;
    HoldemTrainer trainer(*game, buckets, {Algorithm::linear, 7, 1000});
    trainer.run(100);
    HoldemBatch batch(*game, trainer.sets());
    EXPECT_GT(batch.numTrunkNodes(), 1U);
    EXPECT_GT(batch.numSubtrees(), 10U);
    HoldemWalk walk(*game, trainer.sets());
    std::vector<BatchDeal> deals(20);
    for (size_t d = 0; d < deals.size(); ++d) {
        trainer.dealCards(1000 + d, &deals[d].cards);
        fillDealBuckets(*game, deals[d].cards, buckets, deals[d].buckets);
    }
    batch.iterate(HoldemRule::average, deals);
    for (const BatchDeal& deal : deals) {
        double util[MAX_PLAYERS];
        walk.iterate(HoldemRule::average, deal.cards, deal.buckets, util);
        EXPECT_EQ(deal.value[0], util[0]);
        EXPECT_EQ(deal.value[1], util[1]);
    }
}

// Within a batch the trunk plays as it did at the batch's start, while each subtree learns from
// deal to deal.
TEST(HoldemBatch, FreezesTheTrunkAlone) {
    const GamePtr game = smallLimit(twoPlayerLimit, "1 1 1 1");
    const HashedBuckets buckets;
    HoldemTrainer apart(*game, buckets, {Algorithm::cfr, 7, 1000, 1, 1});
    HoldemTrainer together(*game, buckets, {Algorithm::cfr, 7, 1000, 100, 1});
    apart.run(100);
    together.run(100);
    // Seat 1's first choice is in the trunk: uniform for all hundred deals.
    double sum = 0.0;
    bool learned = false;
    for (int bucket = 0; bucket < 10; ++bucket) {
        const std::string key = "1:0:" + std::to_string(bucket) + ":";
        CFRNode node;
        ASSERT_TRUE(together.sets().find(4, key, node));
        EXPECT_EQ(node.strategySum[actionCall], node.strategySum[actionRaise]);
        sum += node.strategySum[actionFold] + node.strategySum[actionCall] +
               node.strategySum[actionRaise];
        ASSERT_TRUE(apart.sets().find(4, key, node));
        learned = learned || node.strategySum[actionCall] != node.strategySum[actionRaise];
    }
    EXPECT_NEAR(sum, 100.0, 1e-9);
    EXPECT_TRUE(learned);
    // The river after nothing but checks is deep in a subtree.
    bool learnedBelow = false;
    for (int bucket = 0; bucket < 10; ++bucket) {
        CFRNode node;
        ASSERT_TRUE(together.sets().find(3, "0:3:" + std::to_string(bucket) + ":cccccc", node));
        learnedBelow =
            learnedBelow || node.strategySum[actionCall] != node.strategySum[actionRaise];
    }
    EXPECT_TRUE(learnedBelow);
}

} // namespace
} // namespace tamarin::test
