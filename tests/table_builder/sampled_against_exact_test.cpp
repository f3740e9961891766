// The sampled equities against the exact tables: within the sampling error, and without bias.
//
// A sample of n deals of a hand that wins with probability p has variance p (1 - p) / n. Over
// random hands the standardised errors z then have mean 0 and mean square 1, with spreads that are
// known, too: var z = 1 and var z^2 = 2 + (1 - 6 p (1 - p)) / (n p (1 - p)). Figures beyond five
// standard deviations fail. Hands that always or never win must be sampled exactly so.
#include "abstraction/round_indexers.h"
#include "abstraction/sparse_tables.h"
#include "eval/hand_table.h"
#include "eval/seven_card_table.h"
#include "eval/vey.h"
#include "support/file.h"
#include "support/rng.h"
#include "table_builder/table_builder.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <functional>
#include <memory>
#include <random>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

// With the exact tables and the seven-card table, made once.
class SampledAgainstExact : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        home() = std::filesystem::current_path();
        directory() = std::filesystem::temp_directory_path() /
                      ("tamarin_sampled_" + std::to_string(getpid()));
        std::filesystem::create_directories(directory());
        std::filesystem::current_path(directory());
        BuildOptions options;
        options.groups = {TableGroup::sevenCards, TableGroup::equities};
        const auto built = buildTables(options);
        ASSERT_TRUE(built.ok()) << built.error();
    }
    static void TearDownTestSuite() {
        std::filesystem::current_path(home());
        std::filesystem::remove_all(directory());
    }
    static std::filesystem::path& home() {
        static std::filesystem::path path;
        return path;
    }
    static std::filesystem::path& directory() {
        static std::filesystem::path path;
        return path;
    }

    // Samples random hands of every round against one and two opponents by
    // sample(round, cards, players), each of that many deals.
    static void
    compare(const char* family, int hands, int deals,
            const std::function<double(int round, uint8_t* cards, unsigned players)>& sample) {
        std::mt19937_64 random(1);
        for (int round = 0; round < holdemRounds; ++round)
            for (int players = 2; players <= 3; ++players) {
                const size_t size = roundSizes[static_cast<size_t>(round)];
                const auto exact =
                    MappedFile::open(equityPath(players, round), size * sizeof(double));
                ASSERT_TRUE(exact.ok()) << exact.error();
                const RoundIndexer indexer(round);
                double sumError = 0;
                double sumVariance = 0;
                double sumSquares = 0;
                double sumSpread = 0;
                double worst = 0;
                int certain = 0;
                for (int i = 0; i < hands; ++i) {
                    const size_t index = random() % size;
                    uint8_t cards[7];
                    ASSERT_TRUE(hand_unindex(indexer.get(), lastIndexRound(round), index, cards));
                    const double p = exact->as<double>()[index];
                    const double got = sample(round, cards, static_cast<unsigned>(players));
                    if (p == 0 || p == 1) {
                        EXPECT_EQ(got, p) << equityPath(players, round) << " hand " << index;
                        ++certain;
                        continue;
                    }
                    const double variance = p * (1 - p) / deals;
                    const double square = (got - p) * (got - p) / variance;
                    sumError += got - p;
                    sumVariance += variance;
                    sumSquares += square;
                    sumSpread += 2 + (1 - 6 * p * (1 - p)) / (deals * p * (1 - p));
                    if (p * (1 - p) * deals > 10)
                        worst = std::max(worst, std::sqrt(square));
                }
                const double n = hands - certain;
                const double bias = sumError / n;
                const double biasError = std::sqrt(sumVariance) / n;
                const double meanSquare = sumSquares / n;
                const double meanSquareError = std::sqrt(sumSpread) / n;
                std::printf("%s %-8s %d opponents: %5.0f hands, mean error %+.2e (its standard "
                            "error %.1e), mean squared error %.3f of the expected (+- %.3f), "
                            "worst %.1f standard deviations\n",
                            family, roundNames[static_cast<size_t>(round)], players - 1, n, bias,
                            biasError, meanSquare, meanSquareError, worst);
                EXPECT_LT(std::abs(bias), 5 * biasError);
                EXPECT_LT(std::abs(meanSquare - 1), 5 * meanSquareError);
                EXPECT_LT(worst, 6);
            }
    }
};

TEST_F(SampledAgainstExact, TheFamilyOfTheTables) {
    const auto table = SevenCardTable::open();
    ASSERT_TRUE(table.ok()) << table.error();
    int* const entries = const_cast<int*>(table->data());
    global_urng().seed(1);
    compare("tables", 10'000, 1000, [&](int round, uint8_t* cards, unsigned players) {
        using Evaluate = double (*)(unsigned char*, unsigned int, int*);
        constexpr std::array<Evaluate, 4> evaluators{evaluateHand2, evaluateHand5, evaluateHand6,
                                                     evaluateHand7};
        return evaluators[static_cast<size_t>(round)](cards, players, entries);
    });
}

// Ten times the deals of the other, so a tenth of the hands for the same work.
TEST_F(SampledAgainstExact, TheFamilyOfTheOlderModule) {
    ::testing::internal::CaptureStderr(); // its five tables that nobody reads are not there
    loadLookupTables();
    ::testing::internal::GetCapturedStderr();
    const auto generator = std::make_unique<rng_state_t>();
    init_genrand(generator.get(), 1);
    setVEYRNG(generator.get());
    compare("vey", 1000, 10'000, [&](int round, uint8_t* cards, unsigned players) {
        using Evaluate = double (*)(unsigned char*, unsigned int);
        constexpr std::array<Evaluate, 4> evaluators{evaluateHand2, evaluateHand5, evaluateHand6,
                                                     evaluateHand7};
        return evaluators[static_cast<size_t>(round)](cards, players);
    });
    freeLookupTables();
    setVEYRNG(nullptr);
}

} // namespace
} // namespace tamarin::test
