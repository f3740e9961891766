#include "blueprint/blueprint_file.h"

#include "blueprint/short_game.h"
#include "clustering/fake_abstraction.h"
#include "support/temp_directory.h"
#include "support/word_checksum.h"

#include <cstring>
#include <fstream>

#include <gtest/gtest.h>

namespace tamarin {
namespace {

// Two rounds; numbers of buckets that make more than two MiB.
const std::string rules = test::shortGame(4, 5, "3 4", "10 20", "0 3");
const std::vector<uint32_t> counts{169, 16'000};

struct Written {
    Written() : small(rules, counts) {
        SplitMix random(4);
        for (FloatRow& row : small.sets.allSums())
            for (size_t lane = 0; lane < lanesInBlock; ++lane)
                row.lanes[lane] = static_cast<float>(random.below(1000));
        origin = {hashOfGame(*small.game), "169-16000", 77, counts, 5, 1234};
        path = directory.file("blueprint");
        const Status written = writeBlueprint(path, small.sets, origin);
        EXPECT_TRUE(written.ok());
        bytes = test::contentsOf(path);
    }
    Result<BlueprintFile> open() const {
        return BlueprintFile::open(path, *small.game, small.tree);
    }
    // What is said of the file with other bytes.
    std::string errorWith(const std::string& contents) const {
        std::ofstream(path, std::ios::binary) << contents;
        const auto file = open();
        if (file)
            return "";
        EXPECT_TRUE(file.error().starts_with(path + ": ")) << file.error();
        return file.error().substr(std::min(file.error().size(), path.size() + 2));
    }

    test::TempDirectory directory;
    test::ShortTraining small;
    BlueprintOrigin origin;
    std::string path;
    std::string bytes;
};

constexpr size_t headSize = 144;

TEST(BlueprintFile, HoldsTheAverageStrategy) {
    const Written written;
    const auto file = written.open();
    ASSERT_TRUE(file.ok()) << file.error();
    EXPECT_EQ(file->origin().abstraction, "169-16000");
    EXPECT_EQ(file->origin().abstractionHash, 77U);
    EXPECT_EQ(file->origin().buckets, counts);
    EXPECT_EQ(file->origin().seed, 5U);
    EXPECT_EQ(file->origin().steps, 1234U);
    EXPECT_EQ(file->origin().game, hashOfGame(*written.small.game));
    for (size_t n = 0; n < written.small.tree.nodes().size(); ++n)
        for (size_t bucket = 0; bucket < counts[written.small.tree.nodes()[n].round];
             bucket += 1 + n % 7) {
            const auto node = static_cast<int32_t>(n);
            const ActionShares wanted = written.small.sets.average(node, bucket);
            const ActionShares held = file->shares(node, bucket);
            double sum = 0;
            for (size_t a = 0; a < held.size(); ++a) {
                ASSERT_NEAR(held[a], wanted[a], 1.0 / 255);
                sum += held[a] * 255;
            }
            ASSERT_NEAR(sum, 255, 1e-9);
        }
}

TEST(BlueprintFile, TheHeadTellsTheGame) {
    const Written written;
    const auto game = gameOfBlueprint(written.path);
    ASSERT_TRUE(game.ok()) << game.error();
    EXPECT_EQ(*game, hashOfGame(*written.small.game));
    for (const std::string& other : {std::string(), std::string("tmrnblu"), "x" + written.bytes}) {
        std::ofstream(written.path, std::ios::binary) << other;
        EXPECT_EQ(gameOfBlueprint(written.path).error(), written.path + ": not a blueprint");
    }
    std::filesystem::remove(written.path);
    EXPECT_FALSE(gameOfBlueprint(written.path).ok());
}

TEST(BlueprintFile, SameNumbersGiveTheSameBytes) {
    const Written one;
    const Written other;
    EXPECT_EQ(one.bytes, other.bytes);
}

TEST(BlueprintFile, EveryFieldOfTheHeadIsGuarded) {
    const Written written;
    ASSERT_EQ(written.bytes.compare(0, 8, "tmrnblue"), 0);
    for (size_t at = 0; at < headSize; ++at) {
        std::string damaged = written.bytes;
        damaged[at] = static_cast<char>(damaged[at] ^ 0x10);
        const std::string error = written.errorWith(damaged);
        if (at < 8)
            EXPECT_EQ(error, "not a blueprint");
        else if (at < 12)
            EXPECT_NE(error.find("another version"), std::string::npos) << at << error;
        else if (at < 16)
            EXPECT_NE(error.find("byte order"), std::string::npos) << at << error;
        else
            EXPECT_TRUE(error.starts_with("damaged")) << at << error;
    }
    EXPECT_EQ(written.errorWith(written.bytes), "");
}

TEST(BlueprintFile, EveryBlockIsGuarded) {
    const Written written;
    uint64_t payload = 0;
    std::memcpy(&payload, written.bytes.data() + headSize - 8, sizeof payload);
    const size_t blocks = (payload + (1U << 20U) - 1) >> 20U;
    ASSERT_GT(blocks, 2U);
    const size_t start = headSize + (blocks + 1) * 8;
    ASSERT_EQ(start + payload, written.bytes.size());
    for (size_t block = 0; block < blocks; ++block) {
        for (const size_t place : {size_t{0}, size_t{1} << 19U, (size_t{1} << 20U) - 1}) {
            const size_t at = start + (block << 20U) + place;
            if (at >= written.bytes.size())
                continue;
            std::string damaged = written.bytes;
            damaged[at] = static_cast<char>(damaged[at] ^ 1);
            EXPECT_EQ(written.errorWith(damaged), "damaged, block " + std::to_string(block + 1) +
                                                      " of " + std::to_string(blocks) +
                                                      " does not fit its checksum");
        }
        std::string damaged = written.bytes;
        damaged[headSize + 8 * block] ^= 1; // its checksum
        EXPECT_EQ(written.errorWith(damaged), "damaged, its head does not fit its checksum");
    }
    std::string damaged = written.bytes;
    damaged.back() = static_cast<char>(damaged.back() ^ 1);
    EXPECT_TRUE(written.errorWith(damaged).starts_with("damaged, block"));
}

// A writer that errs: all checksums fit, and the parts of one bucket are not 255 together.
TEST(BlueprintFile, PartsAreCountedFromTheFirstNodeToTheLast) {
    const Written written;
    const size_t blocks = (written.bytes.size() - headSize) >> 20U;
    const auto errorWithPart = [&](size_t block, size_t from, size_t place) {
        std::string bytes = written.bytes;
        const size_t start = headSize + (blocks + 2) * 8;
        bytes[start + from + place] = static_cast<char>(bytes[start + from + place] + 1);
        const size_t begin = start + (block << 20U);
        const auto put = [&](size_t at, size_t first, size_t length) {
            WordChecksum checksum;
            checksum.add(std::as_bytes(std::span(bytes).subspan(first, length)));
            const uint64_t value = checksum.value();
            std::memcpy(bytes.data() + at, &value, sizeof value);
        };
        put(headSize + 8 * block, begin, std::min(bytes.size() - begin, size_t{1} << 20U));
        put(start - 8, 0, start - 8);
        return written.errorWith(bytes);
    };
    // Before the flop everybody may raise: three actions a bucket at the first node.
    for (const size_t bucket : {size_t{0}, size_t{168}}) {
        const std::string error = errorWithPart(0, 3 * bucket, 1);
        EXPECT_TRUE(error.starts_with("the probabilities of bucket " + std::to_string(bucket) +
                                      " at node 0 add up to "))
            << error;
    }
    const size_t last = written.bytes.size() - headSize - (blocks + 2) * 8 - 1;
    const std::string error = errorWithPart(blocks, last, 0);
    const std::string node = std::to_string(written.small.tree.nodes().size() - 1);
    EXPECT_TRUE(
        error.starts_with("the probabilities of bucket 15999 at node " + node + " add up to "))
        << error;
}

TEST(BlueprintFile, CutAndLengthenedFilesAreRefused) {
    const Written written;
    for (const size_t size : {size_t{0}, size_t{1}, size_t{7}})
        EXPECT_EQ(written.errorWith(written.bytes.substr(0, size)), "not a blueprint") << size;
    // Without room for the head and its checksum nothing more is looked at.
    for (const size_t size : {size_t{8}, size_t{100}, headSize - 1, headSize, headSize + 7})
        EXPECT_EQ(written.errorWith(written.bytes.substr(0, size)),
                  "cut short, it has " + std::to_string(size) + " bytes");
    for (const size_t size : {headSize + 8, headSize + 20, size_t{5000}, written.bytes.size() - 1})
        EXPECT_EQ(written.errorWith(written.bytes.substr(0, size)),
                  "damaged or cut short, it has " + std::to_string(size) + " bytes");
    EXPECT_TRUE(written.errorWith(written.bytes + "x").starts_with("damaged or cut short"));
    EXPECT_EQ(written.errorWith("GAMEDEF\nlimit\n"), "not a blueprint");
    std::filesystem::remove(written.path);
    EXPECT_FALSE(written.open().ok());
}

TEST(BlueprintFile, OtherGamesAreRefused) {
    const Written written;
    const test::ShortTraining other(test::shortGame(4, 5, "3 4", "10 30", "0 3"), {1, 1});
    const auto file = BlueprintFile::open(written.path, *other.game, other.tree);
    ASSERT_FALSE(file.ok());
    EXPECT_EQ(file.error(), written.path + ": made for another game than this one");
}

TEST(BlueprintFile, OtherBucketsAreRefused) {
    AbstractionDescription description;
    for (size_t round = 0; round < 4; ++round) {
        description.rounds[round].buckets = round < 2 ? counts[round] : 1;
        description.rounds[round].hands = 100 + round;
        description.rounds[round].checksum = 200 + round;
    }
    Written written;
    written.origin.abstractionHash = hashOfBuckets(description);
    ASSERT_TRUE(writeBlueprint(written.path, written.small.sets, written.origin).ok());
    const auto file = written.open();
    ASSERT_TRUE(file.ok());
    description.options.seed = 99; // how the buckets were found makes no difference
    for (size_t round = 0; round < 4; ++round) {
        AbstractionDescription other = description;
        ++other.rounds[round].checksum;
        EXPECT_NE(hashOfBuckets(other), hashOfBuckets(description));
        EXPECT_FALSE(file->madeOver(other).ok());
        other = description;
        ++other.rounds[round].buckets;
        EXPECT_NE(hashOfBuckets(other), hashOfBuckets(description));
    }
    EXPECT_EQ(hashOfBuckets(description), written.origin.abstractionHash);
}

TEST(BlueprintFile, LongNamesAreRefused) {
    Written written;
    written.origin.abstraction = std::string(64, 'x');
    EXPECT_FALSE(writeBlueprint(written.path, written.small.sets, written.origin).ok());
    written.origin.abstraction = std::string(63, 'x');
    ASSERT_TRUE(writeBlueprint(written.path, written.small.sets, written.origin).ok());
    EXPECT_EQ(written.open()->origin().abstraction, written.origin.abstraction);
}

TEST(BlueprintParts, LargestRemaindersHaveWhatIsLeft) {
    const auto parts = [](std::vector<double> shares) { return inParts(shares); };
    EXPECT_EQ(parts({1, 0, 0}), (std::vector<uint8_t>{255, 0, 0}));
    EXPECT_EQ(parts({0.5, 0.5}), (std::vector<uint8_t>{128, 127}));
    EXPECT_EQ(parts({1 / 3.0, 1 / 3.0, 1 / 3.0}), (std::vector<uint8_t>{85, 85, 85}));
    // 25.5, 76.5 and 153
    EXPECT_EQ(parts({0.1, 0.3, 0.6}), (std::vector<uint8_t>{26, 76, 153}));
    // 0.51, 127.245 and 127.245
    EXPECT_EQ(parts({0.002, 0.499, 0.499}), (std::vector<uint8_t>{1, 127, 127}));
}

} // namespace
} // namespace tamarin
