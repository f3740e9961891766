// Table files of the right sizes without their contents: sparse files, with a few entries written.
// And tables of small rounds, whose files hold something else in every place.
#pragma once

#include "abstraction/EquityTables.h"
#include "abstraction/round_indexers.h"
#include "abstraction/table_names.h"

#include <array>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <stdexcept>
#include <string>
#include <unistd.h>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace tamarin::test {

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

// Equity tables whose rounds are short: the indexers know all hands, but each round ends after so
// many, so that whatever goes over a round is quick.
inline constexpr std::array<size_t, holdemRounds> smallSizes{169, 1009, 1006, 1003};
class SmallTables : public EquityTables {
public:
    explicit SmallTables(std::string directory = "", std::ostream& sink = std::cout)
        : EquityTables(std::move(directory), sink) {
        for (int round = 1; round < holdemRounds; ++round)
            indexer(round)->round_size[1] = smallSizes[static_cast<size_t>(round)];
    }
};

// A number in [0, 1) that is another one for other players, rounds, seats and places.
inline double scatter(int players, int round, int seat, size_t index) {
    uint64_t mixed = (static_cast<uint64_t>(players * 100 + round * 10 + seat) << 32U) + index + 1;
    for (int i = 0; i < 2; ++i) {
        mixed *= 0x9e3779b97f4a7c15U;
        mixed ^= mixed >> 32U;
    }
    return static_cast<double>(mixed >> 11U) * 0x1p-53;
}

// The tables of doubles that the small files hold.
inline std::vector<double> smallEquities(int players, int round) {
    std::vector<double> table(smallSizes[static_cast<size_t>(round)]);
    for (size_t i = 0; i < table.size(); ++i)
        table[i] = 0.1 + 0.7 * scatter(players, round, 7, i);
    return table;
}
inline std::vector<double> smallUtilities(int round, int seat) {
    std::vector<double> table(smallSizes[static_cast<size_t>(round)]);
    for (size_t i = 0; i < table.size(); ++i)
        table[i] = -1.5 + 3 * scatter(2, round, seat, i);
    return table;
}
// And those of bytes, up to most.
inline std::vector<uint8_t> smallBytes(int players, int round, int seat, int most) {
    std::vector<uint8_t> table(smallSizes[static_cast<size_t>(round)]);
    for (size_t i = 0; i < table.size(); ++i)
        table[i] = static_cast<uint8_t>(scatter(players, round, seat, i) * (most + 1));
    return table;
}

template <class T>
void writeWhole(const std::string& path, const std::vector<T>& table) {
    writeSparse<T>(path, table.size(), table);
}
template <class T>
std::vector<T> readWhole(const std::string& path) {
    std::vector<T> table(std::filesystem::file_size(path) / sizeof(T));
    FILE* const file = std::fopen(path.c_str(), "rb");
    EXPECT_NE(file, nullptr) << path;
    EXPECT_EQ(std::fread(table.data(), sizeof(T), table.size(), file), table.size());
    std::fclose(file);
    return table;
}
template <class T>
std::vector<T> copyOf(const T* table, size_t size) {
    EXPECT_NE(table, nullptr);
    return table == nullptr ? std::vector<T>() : std::vector<T>(table, table + size);
}

inline void writeSmallEquities() {
    for (int players = 2; players <= 3; ++players)
        for (int round = 0; round < holdemRounds; ++round)
            writeWhole(equityPath(players, round), smallEquities(players, round));
}
inline void writeSmallUtilities() {
    for (int round = 0; round < holdemRounds; ++round)
        for (int seat = 0; seat < 2; ++seat)
            writeWhole(utilityPath(2, round, seat), smallUtilities(round, seat));
}

// What the action prints on standard output and standard error.
struct Said {
    std::string output;
    std::string errors;
};
template <class Action>
Said saidDuring(const Action& action) {
    ::testing::internal::CaptureStdout();
    ::testing::internal::CaptureStderr();
    action();
    Said said;
    said.errors = ::testing::internal::GetCapturedStderr();
    said.output = ::testing::internal::GetCapturedStdout();
    return said;
}

// The message of the std::runtime_error that the action ends in.
template <class Action>
std::string refusalOf(const Action& action) {
    try {
        action();
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return "not refused";
}

} // namespace tamarin::test
