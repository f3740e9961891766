#include "abstraction/table_store.h"

#include "abstraction/refused_moves.h"
#include "abstraction/sparse_tables.h"

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

using TableFiles = PlayingDirectory;

TEST_F(TableFiles, AreMappedAndReleased) {
    writeSparse<double>("lookup/t", 10, {1.5, 2.5});
    TableStore store;
    const auto loaded = store.load<double>("lookup/t", 10);
    EXPECT_TRUE(loaded.whole);
    EXPECT_EQ(loaded.table[1], 2.5);
    store.release(loaded.table);
    store.release(new double[3]);
    store.release(static_cast<uint8_t*>(nullptr));
}

TEST_F(TableFiles, UnreadableFileIsAllZeroAndSaidSo) {
    TableStore store;
    ::testing::internal::CaptureStderr();
    const auto loaded = store.load<uint8_t>("lookup/none", 10);
    EXPECT_NE(::testing::internal::GetCapturedStderr().find("WARNING: could not open lookup/none"),
              std::string::npos);
    EXPECT_FALSE(loaded.whole);
    for (int i = 0; i < 10; ++i)
        EXPECT_EQ(loaded.table[i], 0);
    store.release(loaded.table);
}

TEST_F(TableFiles, UsableMeansThereAndOfItsSize) {
    EXPECT_FALSE(usableFile("lookup/t", 80));
    writeSparse<double>("lookup/t", 10);
    EXPECT_TRUE(usableFile("lookup/t", 80));
    ::testing::internal::CaptureStderr();
    EXPECT_FALSE(usableFile("lookup/t", 88));
    EXPECT_EQ(::testing::internal::GetCapturedStderr(),
              "ERROR: lookup/t has 80 bytes, not 88: rebuilding it\n");
    EXPECT_FALSE(std::filesystem::exists("lookup/t"));
    EXPECT_TRUE(std::filesystem::exists("lookup/t.bad"));
}

TEST_F(TableFiles, MapSaysWhyNot) {
    writeSparse<double>("lookup/t", 10, {1.5, 2.5});
    TableStore store;
    const auto mapped = store.map<double>("lookup/t", 10);
    ASSERT_TRUE(mapped.ok());
    store.forgetPages(*mapped);
    EXPECT_EQ((*mapped)[1], 2.5);
    const double other = 0;
    store.forgetPages(&other); // not from here
    store.release(*mapped);
    const auto none = store.map<uint8_t>("lookup/none", 10);
    ASSERT_FALSE(none.ok());
    EXPECT_EQ(none.error().find("lookup/none"), 0U) << none.error();
    EXPECT_FALSE(store.map<double>("lookup/t", 11).ok());
}

TEST_F(TableFiles, UsableTablesHaveBeenLookedInto) {
    EXPECT_FALSE(usableTable<uint8_t>("lookup/t", 4, bucketEntries));
    writeSparse<uint8_t>("lookup/t", 4, {1, 2});
    EXPECT_TRUE(usableTable<uint8_t>("lookup/t", 4, bucketEntries));
    writeSparse<uint8_t>("lookup/t", 4, {1, 20});
    ::testing::internal::CaptureStderr();
    EXPECT_FALSE(usableTable<uint8_t>("lookup/t", 4, bucketEntries));
    EXPECT_EQ(::testing::internal::GetCapturedStderr(),
              "ERROR: lookup/t holds bucket 20 at hand 1 (byte 1), not 0..9: rebuilding it\n");
    EXPECT_FALSE(std::filesystem::exists("lookup/t"));
    EXPECT_EQ(std::filesystem::file_size("lookup/t.bad"), 4U);
    writeSparse<double>("lookup/t", 4, {0, 0.5, 2});
    ::testing::internal::CaptureStderr();
    EXPECT_FALSE(usableTable<double>("lookup/t", 4, equityEntries));
    EXPECT_FALSE(usableTable<double>("lookup/t", 4, equityEntries)); // moved away
    ::testing::internal::GetCapturedStderr();
}

TEST_F(TableFiles, WhereItCannotBeMovedABadFileStaysAndIsNotUsable) {
    writeSparse<double>("lookup/t", 10);
    const RefusedMoves refused;
    for (int twice = 0; twice < 2; ++twice) {
        ::testing::internal::CaptureStderr();
        EXPECT_FALSE(usableFile("lookup/t", 88));
        const std::string said = ::testing::internal::GetCapturedStderr();
        EXPECT_EQ(
            said.find("ERROR: lookup/t has 80 bytes, not 88: rebuilding it\nWARNING: lookup/t"), 0U)
            << said;
    }
    EXPECT_TRUE(std::filesystem::exists("lookup/t"));
}

} // namespace
} // namespace tamarin::test
