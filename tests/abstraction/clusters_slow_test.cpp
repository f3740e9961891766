// Clusters made from whole tables.
#include "abstraction/EquityTables.h"
#include "abstraction/sparse_tables.h"

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

using Clusters = PlayingDirectory;

TEST_F(Clusters, OneMissingFileMakesAllEightAnew) {
    writeSparseEquities({0.25, 0.75, 0.5});
    writeSparse<uint8_t>(clusterPath(2, 0), roundSizes[0], {55});
    EquityTables tables;
    ::testing::internal::CaptureStdout();
    tables.load();
    tables.loadCluster();
    const std::string output = ::testing::internal::GetCapturedStdout();
    EXPECT_NE(output.find("loading clusters...\ngenerating pre-flop clusters 2p\n"
                          "generating pre-flop clusters 3p\ngenerating flop clusters 2p\n"),
              std::string::npos)
        << output;
    EXPECT_EQ(tables.getCluster(static_cast<unsigned char>(0), 2, 0), 33);
    EXPECT_EQ(tables.getCluster(static_cast<unsigned char>(1), 2, 3), 100);
    EXPECT_EQ(std::filesystem::file_size(clusterPath(3, 3)), roundSizes[3]);
}

} // namespace
} // namespace tamarin::test
