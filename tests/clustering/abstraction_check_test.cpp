// What checkAbstraction refuses; make_abstraction_test.cpp has what it finds good.
#include "clustering/abstraction_check.h"

#include "clustering/hand_features.h"
#include "clustering/sparse_abstraction.h"

namespace tamarin::test {
namespace {

class AbstractionCheckTest : public PlayingDirectory {
protected:
    void SetUp() override {
        PlayingDirectory::SetUp();
        writeSparseAbstraction("x");
        description = *readDescription(path);
        description.startingHandClusters.assign(roundSizes[0], 7);
        for (size_t round = 0; round < holdemRounds; ++round)
            fillCentres(round, round == 3 ? strengthWidth : histogramWidth);
    }
    // Rows of one number, which rises from row to row.
    void fillCentres(size_t round, size_t width) {
        RoundDescription& own = description.rounds[round];
        own.centres.resize(own.buckets * width);
        for (size_t i = 0; i < own.centres.size(); ++i)
            own.centres[i] = static_cast<uint8_t>(i / width + round);
    }
    std::string refusal() const {
        EXPECT_TRUE(writeDescription(path, description).ok());
        AbstractionCheck check;
        check.name = "x";
        check.stop = [] { return true; }; // the descriptions are looked at before any work
        const auto checked = checkAbstraction(check);
        return checked ? "(good)" : checked.error();
    }
    void swapFirstCentres(size_t round, size_t width) {
        auto& centres = description.rounds[round].centres;
        std::swap_ranges(centres.begin(), centres.begin() + static_cast<ptrdiff_t>(width),
                         centres.begin() + static_cast<ptrdiff_t>(width));
    }

    const std::string path = "lookup/x/abstraction";
    AbstractionDescription description;
};

TEST_F(AbstractionCheckTest, CentresOutOfOrder) {
    EXPECT_EQ(refusal(), "stopped");
    for (size_t round = 0; round < holdemRounds; ++round) {
        const size_t width = round == 3 ? strengthWidth : histogramWidth;
        swapFirstCentres(round, width);
        EXPECT_EQ(refusal(), std::string("lookup/x: its centres are out of order on the ") +
                                 roundNames[round]);
        swapFirstCentres(round, width);
    }
    EXPECT_EQ(refusal(), "stopped");
}

TEST_F(AbstractionCheckTest, NoCentres) {
    description.rounds[2].centres.clear();
    EXPECT_EQ(refusal(), "lookup/x: has no centres for the turn");
}

TEST_F(AbstractionCheckTest, LimitsThatFall) {
    description.options.method = AbstractionMethod::percentile;
    for (size_t round = 0; round < holdemRounds; ++round)
        fillCentres(round, sizeof(uint64_t));
    EXPECT_EQ(refusal(), "stopped");
    swapFirstCentres(1, sizeof(uint64_t));
    EXPECT_EQ(refusal(), "lookup/x: its centres are out of order on the flop");
}

TEST_F(AbstractionCheckTest, ClustersThatAreNone) {
    const std::string wanted = "lookup/x: its clusters of starting hands are none";
    description.startingHandClusters[100] = 8;
    EXPECT_EQ(refusal(), wanted);
    description.options.clusters = 9;
    EXPECT_EQ(refusal(), wanted);
    description.options.clusters = 8;
    description.startingHandClusters.clear();
    EXPECT_EQ(refusal(), wanted);
}

} // namespace
} // namespace tamarin::test
