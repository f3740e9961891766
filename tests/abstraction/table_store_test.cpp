#include "abstraction/table_store.h"

#include "abstraction/sparse_tables.h"

#include <gtest/gtest.h>

namespace tamarin::testing {
namespace {

using TableFiles = PlayingDirectory;

TEST_F(TableFiles, AreMappedAndReleased) {
    writeSparse<double>("lookup/t", 10, {1.5, 2.5});
    TableStore store;
    const auto loaded = store.doubles("lookup/t", 10);
    EXPECT_TRUE(loaded.whole);
    EXPECT_EQ(loaded.table[1], 2.5);
    store.release(loaded.table);
    store.release(new double[3]);
    store.release(static_cast<uint8_t*>(nullptr));
}

TEST_F(TableFiles, UnreadableFileIsAllZeroAndSaidSo) {
    TableStore store;
    ::testing::internal::CaptureStderr();
    const auto loaded = store.bytes("lookup/none", 10);
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

} // namespace
} // namespace tamarin::testing
