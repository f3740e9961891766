// Table files of the right sizes without their contents: sparse files, with a few entries written.
#pragma once

#include "abstraction/round_indexers.h"
#include "abstraction/table_names.h"

#include <cstdio>
#include <filesystem>
#include <string>
#include <unistd.h>
#include <vector>

#include <gtest/gtest.h>

namespace tamarin::testing {

// A playing directory of the test's own, entered for its time.
class PlayingDirectory : public ::testing::Test {
protected:
    void SetUp() override {
        home_ = std::filesystem::current_path();
        const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
        directory_ = std::filesystem::temp_directory_path() /
                     ("tamarin_tables_" + std::string(info->name()) + std::to_string(getpid()));
        std::filesystem::create_directories(directory_ / "lookup");
        std::filesystem::current_path(directory_);
    }
    void TearDown() override {
        std::filesystem::current_path(home_);
        std::filesystem::remove_all(directory_);
    }

private:
    std::filesystem::path home_;
    std::filesystem::path directory_;
};

// Writes count elements of zero, the first of them replaced by those given.
template <class T>
void writeSparse(const std::string& path, size_t count, const std::vector<T>& first = {}) {
    FILE* const file = std::fopen(path.c_str(), "wb");
    ASSERT_NE(file, nullptr) << path;
    if (!first.empty()) {
        ASSERT_EQ(std::fwrite(first.data(), sizeof(T), first.size(), file), first.size());
    }
    std::fclose(file);
    std::filesystem::resize_file(path, count * sizeof(T));
}

inline void writeSparseEquities(const std::vector<double>& first = {}) {
    for (int players = 2; players <= 3; ++players)
        for (int round = 0; round < holdemRounds; ++round)
            writeSparse(equityPath(players, round), roundSizes[static_cast<size_t>(round)], first);
}

} // namespace tamarin::testing
