// Writing without a solver; what a file holds and how it is read is in
// tests/solver/cfr_file_test.cpp.
#include "strategy/strategy_file.h"

#include "strategy/strategy_record.h"
#include "support/faulty_files.h"

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

// Sections of so many nodes, all alike, under keys of one length.
class AlikeNodes : public NodeStore {
public:
    AlikeNodes(std::vector<size_t> counts, size_t keyLength)
        : counts_(std::move(counts)), key_(keyLength, 'k') {}
    size_t count(int m) const override { return counts_[static_cast<size_t>(m)]; }
    bool forEach(int m, const Visit& visit) const override {
        const CFRNode node;
        for (size_t i = 0; i < count(m); ++i)
            if (!visit(key_, node))
                return false;
        return true;
    }
    bool find(int, const std::string&, CFRNode&) const override { return false; }

private:
    std::vector<size_t> counts_;
    std::string key_;
};

class WrittenStrategy : public ::testing::Test {
protected:
    TempDirectory scratch;
    const std::string path = scratch.file("strategy");
};

TEST_F(WrittenStrategy, KeysHaveAtMost59Bytes) {
    const Status tooLong = writeStrategyFile(path, 2, AlikeNodes({0, 1}, 60));
    ASSERT_FALSE(tooLong);
    EXPECT_EQ(tooLong.error(), path + ": the key " + std::string(60, 'k') + " is too long");
    EXPECT_TRUE(scratch.names().empty());
    ASSERT_TRUE(writeStrategyFile(path, 2, AlikeNodes({0, 1}, 59)));
    const std::string bytes = *readWholeFile(path);
    EXPECT_EQ(bytes.size(), 2 * sizeof(StrategyCount) + sizeof(StrategyRecord));
    EXPECT_EQ(bytes.substr(8, 60), std::string(59, 'k') + '\0');
}

// Over all sections together: a strategy of many small ones is asked of as often.
TEST_F(WrittenStrategy, TellsHowFarItIsEvery65536Nodes) {
    const auto toldOf = [&](std::vector<size_t> counts) {
        std::vector<uint64_t> told;
        const int sections = static_cast<int>(counts.size());
        EXPECT_TRUE(
            writeStrategyFile(path, sections, AlikeNodes(std::move(counts), 3), [&](uint64_t done) {
                told.push_back(done);
                return true;
            }));
        return told;
    };
    EXPECT_EQ(toldOf({70'000, 70'000}), (std::vector<uint64_t>{65'536, 131'072}));
    EXPECT_EQ(toldOf({0, 65'535}), (std::vector<uint64_t>{}));
}

TEST_F(WrittenStrategy, IsGivenUpWhenAsked) {
    const Status stopped = writeStrategyFile(path, 2, AlikeNodes({70'000, 70'000}, 3),
                                             [](uint64_t done) { return done < 100'000; });
    ASSERT_FALSE(stopped);
    EXPECT_EQ(stopped.error(), path + ": stopped");
    EXPECT_TRUE(scratch.names().empty());
}

TEST_F(WrittenStrategy, SaysThatTheDiskIsFullWhereverThatIsMet) {
    FaultyFiles files;
    files.failCall("write", ENOSPC);
    const Status full = writeStrategyFile(path, 1, AlikeNodes({70'000}, 3), {}, files);
    ASSERT_FALSE(full);
    EXPECT_EQ(full.error(),
              path + ": could not write: No space left on device: free some space and start again");
    EXPECT_EQ(files.count("write"), 1U) << "it goes on writing";
    EXPECT_TRUE(scratch.names().empty());
}

} // namespace
} // namespace tamarin::test
