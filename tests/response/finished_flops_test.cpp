#include "response/finished_flops.h"

#include "response/measured.h"
#include "support/file.h"
#include "support/temp_directory.h"
#include "support/word_checksum.h"

namespace tamarin::test {
namespace {

const std::string pairedDeck = shortGame(4, 3, "3 2", "10 10", "0 3");
const std::string fourRounds = shortGame(4, 3, "1 1 1 1", "10 10 20 20", "0 3 1 1");

FlopValues someValues(const Measured& measured) {
    FlopValues values;
    const size_t size = measured.rounds->entries().size() * measured.deck.numHandClasses();
    double next = 0.125;
    for (auto* of : {&values.best, &values.value})
        for (auto& seat : *of)
            for (size_t i = 0; i < size; ++i)
                seat.push_back(next *= -1.0625);
    for (auto& seat : values.later)
        for (int round = 2; round <= measured.rounds->last(); ++round) {
            seat.emplace_back();
            for (size_t i = 0; i < size; ++i)
                seat.back().push_back(next += 0.375);
        }
    return values;
}

TEST(FinishedFlops, GivesBackWhatWasWritten) {
    const TempDirectory directory;
    const Measured measured(pairedDeck);
    const FinishedFlops finished(directory.path() + "/a/b.flops", measured.whole());
    const auto flops = measured.deck.extend(measured.deck.empty(), 3);
    EXPECT_EQ(nameOfFlop(flops[0]), "QcQdQh");
    auto read = finished.read(flops[0]);
    ASSERT_TRUE(read.ok());
    EXPECT_FALSE(read->has_value());
    const FlopValues values = someValues(measured);
    ASSERT_TRUE(finished.write(flops[0], values).ok());
    read = finished.read(flops[0]);
    ASSERT_TRUE(read.ok());
    ASSERT_TRUE(read->has_value());
    EXPECT_EQ((*read)->best, values.best);
    EXPECT_EQ((*read)->value, values.value);
    EXPECT_FALSE(finished.read(flops[1])->has_value());
    EXPECT_TRUE(readWholeFile(directory.path() + "/a/b.flops/QcQdQh").ok());
}

TEST(FinishedFlops, GivesBackTheLaterRoundsToo) {
    const TempDirectory directory;
    const Measured measured(fourRounds);
    const FinishedFlops finished(directory.path(), measured.whole());
    const auto flops = measured.deck.extend(measured.deck.empty(), 3);
    const FlopValues values = someValues(measured);
    ASSERT_TRUE(finished.write(flops[4], values).ok());
    const auto read = finished.read(flops[4]);
    ASSERT_TRUE(read.ok());
    ASSERT_TRUE(read->has_value());
    EXPECT_EQ((*read)->best, values.best);
    EXPECT_EQ((*read)->value, values.value);
    EXPECT_EQ((*read)->later, values.later);
    EXPECT_EQ(values.later[1].size(), 2U);
}

// A flop took minutes: what it was worth in all is not thrown away for what was not asked then.
TEST(FinishedFlops, ReadsTheFirstVersionWithoutLaterRounds) {
    const TempDirectory directory;
    const Measured measured(fourRounds);
    const FinishedFlops finished(directory.path(), measured.whole());
    const auto flops = measured.deck.extend(measured.deck.empty(), 3);
    const FlopValues values = someValues(measured);
    ASSERT_TRUE(finished.write(flops[4], values).ok());
    const std::string path = directory.path() + "/" + nameOfFlop(flops[4]);
    std::string bytes = readWholeFile(path)->substr(0, 32 + 4 * 8 * values.best[0].size());
    ASSERT_EQ(bytes[8], 2);
    bytes[8] = 1;
    WordChecksum checksum;
    checksum.add(std::as_bytes(std::span(bytes.data(), bytes.size())));
    const uint64_t sum = checksum.value();
    bytes.append(reinterpret_cast<const char*>(&sum), sizeof sum);
    ASSERT_TRUE(writeWholeFile(path, bytes).ok());
    const auto read = finished.read(flops[4]);
    ASSERT_TRUE(read.ok());
    ASSERT_TRUE(read->has_value());
    EXPECT_EQ((*read)->best, values.best);
    EXPECT_EQ((*read)->value, values.value);
    EXPECT_TRUE((*read)->later[0].empty());
    EXPECT_TRUE((*read)->later[1].empty());
}

TEST(FinishedFlops, TakesADamagedOneForNone) {
    const TempDirectory directory;
    const Measured measured(pairedDeck);
    const FinishedFlops finished(directory.path(), measured.whole());
    const auto flops = measured.deck.extend(measured.deck.empty(), 3);
    ASSERT_TRUE(finished.write(flops[2], someValues(measured)).ok());
    const std::string path = directory.path() + "/" + nameOfFlop(flops[2]);
    const std::string good = *readWholeFile(path);
    const auto isThere = [&](const std::string& bytes) {
        EXPECT_TRUE(writeWholeFile(path, bytes).ok());
        const auto read = finished.read(flops[2]);
        EXPECT_TRUE(read.ok());
        return read->has_value();
    };
    EXPECT_TRUE(isThere(good));
    EXPECT_FALSE(isThere(good.substr(0, good.size() - 1)));
    EXPECT_FALSE(isThere(good + '\0'));
    EXPECT_FALSE(isThere(""));
    for (size_t at = 0; at < good.size(); at += 97) {
        std::string changed = good;
        changed[at] = static_cast<char>(changed[at] ^ 4);
        EXPECT_FALSE(isThere(changed)) << at;
    }
}

TEST(FinishedFlops, RefusesThoseOfAnotherStrategy) {
    const TempDirectory directory;
    const Measured measured(pairedDeck, 3);
    const auto flops = measured.deck.extend(measured.deck.empty(), 3);
    ASSERT_TRUE(FinishedFlops(directory.path(), measured.whole())
                    .write(flops[2], someValues(measured))
                    .ok());
    const Measured other(pairedDeck, 4);
    const auto refused = FinishedFlops(directory.path(), other.whole()).read(flops[2]);
    ASSERT_FALSE(refused.ok());
    EXPECT_EQ(refused.error(),
              directory.path() + " holds flops of another strategy, or of other tables: delete it, "
                                 "or name another folder with --finished");
}

TEST(FinishedFlops, FingerprintsTellGamesAndStrategiesApart) {
    const Measured one(pairedDeck, 3);
    EXPECT_EQ(fingerprintOf(one.whole()), fingerprintOf(Measured(pairedDeck, 3).whole()));
    EXPECT_NE(fingerprintOf(one.whole()), fingerprintOf(Measured(pairedDeck, 4).whole()));
    EXPECT_NE(fingerprintOf(one.whole()),
              fingerprintOf(Measured(shortGame(4, 3, "3 2", "10 20", "0 3"), 3).whole()));
    Measured simple(pairedDeck);
    simple.play(SimplePlay::call);
    const uint64_t call = fingerprintOf(simple.whole());
    simple.play(SimplePlay::raise);
    EXPECT_NE(fingerprintOf(simple.whole()), call);
}

} // namespace
} // namespace tamarin::test
