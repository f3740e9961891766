#include "clustering/checked_file.h"

#include "support/temp_directory.h"

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

constexpr CheckedKind kind{"tmrntest", 3, "a test's file"};

class CheckedFile : public ::testing::Test {
protected:
    std::string path() const { return directory.file("f"); }
    std::string refusal(const CheckedKind& wanted = kind) const {
        const auto read = readCheckedFile(path(), wanted);
        return read ? "(read)" : read.error();
    }
    TempDirectory directory;
};

TEST_F(CheckedFile, GivesItsNumbersBack) {
    Packer packer;
    packer(uint8_t{200});
    packer(std::vector<uint8_t>{1, 2, 3});
    packer(uint64_t{1} << 40U);
    ASSERT_TRUE(writeCheckedFile(path(), kind, packer.bytes()).ok());
    EXPECT_EQ(contentsOf(path()).size(), 24U + 1 + 8 + 3 + 8 + 8);
    const auto payload = readCheckedFile(path(), kind);
    ASSERT_TRUE(payload.ok()) << payload.error();
    Unpacker unpacker(*payload);
    uint8_t small = 0;
    std::vector<uint8_t> bytes;
    uint64_t large = 0;
    unpacker(small);
    unpacker(bytes);
    EXPECT_FALSE(unpacker.whole()); // something is left
    unpacker(large);
    EXPECT_TRUE(unpacker.whole());
    EXPECT_EQ(small, 200);
    EXPECT_EQ(bytes, (std::vector<uint8_t>{1, 2, 3}));
    EXPECT_EQ(large, uint64_t{1} << 40U);
    unpacker(small);
    EXPECT_EQ(small, 0);
    EXPECT_FALSE(unpacker.whole());
}

TEST_F(CheckedFile, AnArrayLongerThanItsFileIsNotRead) {
    Packer packer;
    packer(UINT64_MAX);
    Unpacker unpacker(packer.bytes());
    std::vector<uint8_t> bytes{1};
    unpacker(bytes);
    EXPECT_TRUE(bytes.empty());
    EXPECT_FALSE(unpacker.whole());
}

TEST_F(CheckedFile, EveryChangedByteAndEveryCutIsRefused) {
    ASSERT_TRUE(writeCheckedFile(path(), kind, "payload").ok());
    const std::string good = contentsOf(path());
    EXPECT_EQ(refusal(), "(read)");
    for (size_t i = 0; i < good.size(); ++i) {
        std::string bad = good;
        bad[i] = static_cast<char>(bad[i] ^ 1);
        putContents(path(), bad);
        EXPECT_NE(refusal(), "(read)") << i;
        putContents(path(), good.substr(0, i));
        EXPECT_NE(refusal(), "(read)") << i;
    }
}

TEST_F(CheckedFile, SaysWhatIsWrong) {
    ASSERT_TRUE(writeCheckedFile(path(), kind, "payload").ok());
    EXPECT_EQ(refusal({"tmrnothr", 3, "another file"}), path() + ": not another file");
    EXPECT_EQ(refusal({"tmrntest", 4, "a test's file"}),
              path() + ": made by another version of this program, format 3, not 4");
    putContents(path(), "tmrntest and");
    EXPECT_EQ(refusal(), path() + ": cut short, it has 12 bytes");
}

} // namespace
} // namespace tamarin::test
