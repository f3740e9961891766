// A playing directory with a small hold'em game, a card abstraction of a few buckets and a
// blueprint.
#pragma once

#include "clustering/sparse_abstraction.h"
#include "response/measured.h"
#include "support/temp_directory.h"
#include "toolbox/run_toolbox.h"

#include <filesystem>
#include <fstream>

#include <gtest/gtest.h>

namespace tamarin::test {

class SmallBlueprint : public PlayingDirectory {
protected:
    static constexpr const char* blueprint = "strategies/small/blueprint";

    void SetUp() override {
        PlayingDirectory::SetUp();
        writeSparseAbstraction("few");
        std::ofstream("small.game") << shortGame(4, 13, "1 1 0 0", "10 10 20 20", "0 3 1 1");
        ASSERT_EQ(callTamarin({"train", "small.game", "--cards", "few", "--iterations", "5",
                               "--seed", "3", "--quiet"})
                      .status,
                  0);
    }
    // One bit of a file's last byte.
    static void damage(const std::string& path) {
        std::fstream file(path, std::ios::binary | std::ios::in | std::ios::out);
        file.seekg(-1, std::ios::end);
        const auto byte = static_cast<char>(file.get() ^ 1);
        file.seekp(-1, std::ios::end);
        file.put(byte);
    }
};

} // namespace tamarin::test
