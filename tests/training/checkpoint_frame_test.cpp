#include "training/checkpoint_frame.h"

#include "game/games.h"
#include "support/faulty_files.h"
#include "training/mended_checkpoint.h"

#include <vector>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

constexpr CheckpointKind kind{"tmrntest", 7, "a checkpoint of tests"};
const std::string config = "a = 1\n";

class CheckpointFrame : public testing::Test {
protected:
    Status write(const std::vector<uint64_t>& payload, const std::string& with = config,
                 FileSystem& files = systemFiles()) const {
        return writeCheckpointFile(path, kind, with, 9, {std::as_bytes(std::span(payload))}, files);
    }
    // What is wrong with the bytes, without the path.
    std::string complaint(const std::string& bytes) const {
        putContents(path, bytes);
        return complaint();
    }
    std::string complaint() const {
        const auto file = CheckpointFile::open(path, kind);
        if (!file)
            return file.error().substr(path.size() + 2);
        Status status = file->madeWith(config);
        if (status)
            status = read(*file, 2);
        return status ? "" : status.error().substr(path.size() + 2);
    }

    static Status read(const CheckpointFile& file, size_t words) {
        std::vector<uint64_t> numbers(words);
        return file.read({std::as_writable_bytes(std::span(numbers))});
    }

    const TempDirectory directory;
    const std::string path = directory.file("checkpoint");
};

// The bytes as another program reads them.
TEST_F(CheckpointFrame, HasItsLayout) {
    ASSERT_TRUE(write({5, 6}).ok());
    std::string bytes("tmrntest\7\0\0\0\4\3\2\1", 16);
    for (const char number :
         {'\x9', '\x6', '\x10'}) // iteration, length of the configuration, of the payload
        bytes += number + std::string(7, '\0');
    bytes += config + std::string("\x3d\x17\xe7\x0e\x35\x66\x28\x18", 8);
    for (const char number : {'\5', '\6'})
        bytes += number + std::string(7, '\0');
    bytes += std::string("\x07\x6e\x58\x3d\x1c\xe9\xe7\x2a", 8);
    EXPECT_EQ(*readWholeFile(path), bytes);
    EXPECT_EQ(mended(bytes), bytes);
}

TEST_F(CheckpointFrame, ComesBackWordForWord) {
    // The parts cut the pieces of 16 MiB in which it is written, and so do those it is read in.
    std::vector<uint64_t> numbers((size_t{5} << 20U) + 3);
    uint64_t next = 1;
    for (uint64_t& number : numbers)
        number = next *= 0x9E3779B97F4A7C15U;
    const auto all = std::as_bytes(std::span(numbers));
    ASSERT_TRUE(writeCheckpointFile(path, kind, config, 9, {all.first(8), all.subspan(8)}).ok());
    auto file = CheckpointFile::open(path, kind);
    ASSERT_TRUE(file.ok()) << file.error();
    EXPECT_EQ(file->iteration(), 9U);
    EXPECT_EQ(file->payloadSize(), all.size());
    EXPECT_TRUE(file->madeWith(config).ok());
    std::vector<uint64_t> found(numbers.size());
    const auto place = std::as_writable_bytes(std::span(found));
    ASSERT_TRUE(file->read({place.first(24), place.subspan(24)}).ok());
    EXPECT_TRUE(found == numbers);
    const std::vector<uint64_t> untouched(numbers.size(), 1);
    found = untouched;
    std::string bytes = *readWholeFile(path);
    EXPECT_TRUE(mended(bytes) == bytes);
    for (const size_t at : {size_t{54}, size_t{54} + (size_t{16} << 20U), bytes.size() - 9}) {
        bytes[at] = static_cast<char>(bytes[at] ^ 1);
        putContents(path, bytes);
        EXPECT_FALSE(CheckpointFile::open(path, kind)->read({place}).ok()) << at;
        EXPECT_TRUE(found == untouched);
        bytes[at] = static_cast<char>(bytes[at] ^ 1);
    }
}

TEST_F(CheckpointFrame, EveryDamagedBitAndEveryCutIsNoticed) {
    ASSERT_TRUE(write({5, 6}).ok());
    const std::string bytes = *readWholeFile(path);
    ASSERT_EQ(complaint(bytes), "");
    for (size_t bit = 0; bit < 8 * bytes.size(); ++bit) {
        std::string other = bytes;
        other[bit / 8] = static_cast<char>(other[bit / 8] ^ 1 << bit % 8);
        ASSERT_NE(complaint(other), "") << bit;
    }
    for (size_t length = 0; length < bytes.size(); ++length)
        ASSERT_NE(complaint(bytes.substr(0, length)), "") << length;
    EXPECT_NE(complaint(bytes + "x"), "");
}

TEST_F(CheckpointFrame, SaysWhatIsWrong) {
    ASSERT_TRUE(write({5, 6}).ok());
    const std::string bytes = *readWholeFile(path);
    const auto with = [&](size_t at, auto number) {
        std::string other = bytes;
        putNumber(other, at, number);
        return other;
    };
    EXPECT_EQ(complaint(""), "not a checkpoint of tests");
    EXPECT_EQ(complaint("tmrnckpt" + bytes.substr(8)), "not a checkpoint of tests");
    EXPECT_EQ(complaint(bytes.substr(0, 8)), "cut short, it has 8 bytes");
    EXPECT_EQ(complaint(bytes.substr(0, 55)), "cut short, it has 55 bytes");
    EXPECT_EQ(complaint(bytes.substr(0, 77)),
              "damaged or cut short, its fields do not fit its 77 bytes");
    EXPECT_EQ(complaint(with(8, 6U)), "made by an older version of this program, format 6");
    EXPECT_EQ(complaint(with(8, 6U).substr(0, 12)),
              "made by an older version of this program, format 6");
    EXPECT_EQ(complaint(with(8, 8U)), "made by a newer version of this program, format 8");
    const std::string theirs = "made on a machine of another byte order, or damaged";
    EXPECT_EQ(complaint(with(12, 0x04030201U)), theirs);
    EXPECT_EQ(complaint(with(8, uint64_t{0x0403020107000000U})), theirs);
    EXPECT_EQ(complaint(with(16, uint64_t{10})), "damaged, its head does not fit its checksum");
    EXPECT_EQ(complaint(with(40, 'b')), "damaged, its head does not fit its checksum");
    EXPECT_EQ(complaint(with(54, uint64_t{6})), "damaged, its checksum does not fit");
    ASSERT_TRUE(write({5}).ok());
    EXPECT_EQ(complaint(), "its numbers do not fit its 70 bytes");
}

TEST_F(CheckpointFrame, HostileLengthsAreRefusedWithoutTheMemory) {
    ASSERT_TRUE(write({5, 6}).ok());
    const std::string bytes = *readWholeFile(path);
    for (const size_t field : {checkpointConfigLengthAt, checkpointPayloadLengthAt})
        for (const uint64_t value :
             {uint64_t{0}, uint64_t{1}, uint64_t{7}, uint64_t{15}, uint64_t{1} << 31U,
              uint64_t{1} << 63U, UINT64_MAX - 15, UINT64_MAX}) {
            std::string other = bytes;
            putNumber(other, field, value);
            EXPECT_EQ(complaint(mended(other)),
                      "damaged or cut short, its fields do not fit its 78 bytes")
                << field << ' ' << value;
        }
    // Two that come to the right sum when they wrap.
    std::string other = bytes;
    putNumber(other, checkpointConfigLengthAt, UINT64_MAX - 15);
    putNumber(other, checkpointPayloadLengthAt, uint64_t{config.size() + 16 + 16});
    EXPECT_EQ(complaint(other), "damaged or cut short, its fields do not fit its 78 bytes");
}

TEST_F(CheckpointFrame, NamesTheFirstFieldThatDiffers) {
    const auto against = [&](const std::string& there, const std::string& here) {
        EXPECT_TRUE(write({5, 6}, there).ok());
        const Status same = CheckpointFile::open(path, kind)->madeWith(here);
        return same ? "" : same.error().substr(path.size() + 2);
    };
    const std::string other = "made with another configuration: ";
    EXPECT_EQ(against("a = 1\nb = 2\n", "a = 1\nb = 2\n"), "");
    EXPECT_EQ(against("a = 1\nb = 2\nc = 3\n", "a = 1\nb = 22\nc = 4\n"),
              other + "b is 2 there and 22 here");
    EXPECT_EQ(against("a = 11\n", "a = 1\n"), other + "a is 11 there and 1 here");
    EXPECT_EQ(against("a = 1\nb = 2\n", "a = 1\nc = 2\n"),
              other + "\"b = 2\" there and \"c = 2\" here");
    EXPECT_EQ(against("a = 1\n", "a = 1\nb = 2\n"), other + "\"\" there and \"b = 2\" here");
    EXPECT_EQ(against("", "a = 1\n"), other + "\"\" there and \"a = 1\" here");
}

TEST_F(CheckpointFrame, KnowsAGameByItsDefinition) {
    const std::string text = gameConfig(*parseGame(twoPlayerLimit));
    EXPECT_TRUE(text.starts_with("game.rule = limit\ngame.numPlayers = 2\n")) << text;
    EXPECT_NE(text, gameConfig(*parseGame(threePlayerLimit)));
    EXPECT_TRUE(gameConfig(*parseGame(twoPlayerNoLimit)).starts_with("game.rule = nolimit\n"));
    EXPECT_EQ(text.find("GAMEDEF"), std::string::npos);
}

// Whichever call fails, the path holds the old checkpoint or the new one.
TEST_F(CheckpointFrame, AFailedWriteLeavesAWholeOne) {
    ASSERT_TRUE(write({5, 6}).ok());
    const std::string after = *readWholeFile(path);
    ASSERT_TRUE(write({1, 2}).ok());
    const std::string before = *readWholeFile(path);
    size_t kept = 0;
    for (size_t k = 1;; ++k) {
        putContents(path, before);
        FaultyFiles files;
        files.failAt(k, ENOSPC);
        const Status status = write({5, 6}, config, files);
        if (!files.metFault())
            break;
        const std::string found = *readWholeFile(path);
        EXPECT_TRUE(found == after || (!status && found == before)) << k;
        kept += found == before;
    }
    EXPECT_GT(kept, 3U); // create, write, sync, rename
}

} // namespace
} // namespace tamarin::test
