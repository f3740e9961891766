#include "clustering/card_abstraction.h"

#include "clustering/fake_abstraction.h"
#include "support/temp_directory.h"

#include <algorithm>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

class CardAbstractions : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(writeFake(directory.path(), "fake").ok()); }

    std::string file(const std::string& name) const {
        return directory.file("lookup/fake/" + name);
    }
    Result<CardAbstraction>
    opened(CardAbstraction::Check check = CardAbstraction::Check::contents) const {
        return CardAbstraction::open(directory.path(), "fake", check, fakeHands);
    }
    std::string refusal(CardAbstraction::Check check = CardAbstraction::Check::contents) const {
        const auto result = opened(check);
        if (result)
            return "(opened)";
        EXPECT_EQ(result.error().find('\n'), std::string::npos);
        return result.error();
    }

    TempDirectory directory;
};

TEST_F(CardAbstractions, AreReadAsTheyWereWritten) {
    const auto read = opened();
    ASSERT_TRUE(read.ok()) << read.error();
    const auto buckets = fakeBuckets();
    for (int round = 0; round < holdemRounds; ++round) {
        const auto at = static_cast<size_t>(round);
        EXPECT_EQ(read->buckets(round), fakeCounts[at]);
        ASSERT_EQ(read->hands(round), fakeHands[at]);
        for (size_t hand = 0; hand < fakeHands[at]; ++hand)
            EXPECT_EQ(read->bucket(round, hand), buckets[at][hand]);
    }
    EXPECT_EQ(read->bucket(3, 7), 3); // (7 * 5 + 3) % 5
    AbstractionDescription written = fakeDescription();
    for (size_t round = 0; round < fakeHands.size(); ++round) {
        written.rounds[round].hands = fakeHands[round];
        written.rounds[round].checksum = bucketChecksum(buckets[round]);
    }
    EXPECT_EQ(read->description(), written);
    EXPECT_EQ(directory.names(), std::set<std::string>{"lookup"});
}

TEST_F(CardAbstractions, AMissingOneIsRefused) {
    const auto none = CardAbstraction::open(directory.path(), "none");
    ASSERT_FALSE(none.ok());
    EXPECT_NE(none.error().find("lookup/none/abstraction"), std::string::npos) << none.error();
    std::filesystem::remove(file("turn"));
    EXPECT_NE(refusal().find("lookup/fake/turn"), std::string::npos) << refusal();
}

TEST_F(CardAbstractions, ANameThatLeavesTheFolderIsRefused) {
    for (const char* name : {"", "../fake", "a/b", ".hidden"})
        EXPECT_FALSE(CardAbstraction::open(directory.path(), name).ok()) << name;
}

TEST_F(CardAbstractions, OtherNumbersOfHandsAreRefused) {
    const auto whole = CardAbstraction::open(directory.path(), "fake");
    ASSERT_FALSE(whole.ok());
    EXPECT_NE(whole.error().find("has 40 hands on the flop, not 1286792"), std::string::npos)
        << whole.error();
}

TEST_F(CardAbstractions, AFileOfTheWrongSizeIsRefused) {
    putContents(file("river"), contentsOf(file("river")) + "xx");
    EXPECT_NE(refusal(CardAbstraction::Check::sizes).find("river has 122 bytes, not 120"),
              std::string::npos)
        << refusal();
}

TEST_F(CardAbstractions, AChangedBucketIsSeenWhereContentsAreChecked) {
    std::string bytes = contentsOf(file("flop"));
    bytes[10] = static_cast<char>((bytes[10] + 1) % 3); // still a bucket of the flop
    putContents(file("flop"), bytes);
    EXPECT_EQ(refusal(CardAbstraction::Check::sizes), "(opened)");
    EXPECT_NE(refusal().find("flop: damaged, or of another abstraction"), std::string::npos)
        << refusal();
    bytes[10] = 3;
    putContents(file("flop"), bytes);
    EXPECT_NE(refusal().find("flop: damaged, hand 5 has bucket 3 of 3"), std::string::npos)
        << refusal();
}

TEST_F(CardAbstractions, TwoRoundsExchangedAreRefused) {
    ASSERT_TRUE(writeFake(directory.path(), "other").ok());
    std::filesystem::copy_file(file("preflop"), directory.file("lookup/other/preflop"),
                               std::filesystem::copy_options::overwrite_existing);
    EXPECT_TRUE(CardAbstraction::open(directory.path(), "other", CardAbstraction::Check::contents,
                                      fakeHands)
                    .ok());
    std::vector<uint16_t> reversed = fakeBuckets()[0];
    std::reverse(reversed.begin(), reversed.end());
    putContents(file("preflop"), {reinterpret_cast<const char*>(reversed.data()), 2 * 169});
    EXPECT_NE(refusal().find("preflop: damaged, or of another"), std::string::npos) << refusal();
}

} // namespace
} // namespace tamarin::test
