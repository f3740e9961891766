// Arrows between the rooms go one way, read from the #include lines and from the CMake files; and a
// name is one type.
#include "architecture/tree.h"
#include "support/tree_paths.h"

#include <fstream>
#include <iterator>
#include <regex>
#include <sstream>
#include <unistd.h>

#include <gtest/gtest.h>

namespace fs = std::filesystem;

namespace tamarin::test {

namespace {

const fs::path tree = test::inTree("");

std::string lines(const std::vector<std::string>& list) {
    std::string text;
    for (const std::string& line : list)
        text += line + "\n";
    return text;
}

std::string contents(const fs::path& path) {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
}

// A small tree of its own, to see that the reader of includes finds what is planted in it.
class PlantedTree : public testing::Test {
protected:
    void SetUp() override {
        const auto* info = testing::UnitTest::GetInstance()->current_test_info();
        tree = fs::temp_directory_path() /
               ("tamarin_tree_" + std::string(info->name()) + "_" + std::to_string(getpid()));
        plant("src/support/file.h", "#include <vector>\n");
        plant("src/game/state.h", "#include \"support/file.h\"\n");
        plant("src/solver/cfr.h", "#include \"game/state.h\"\n#include <map>\n");
    }
    void TearDown() override { fs::remove_all(tree); }

    void plant(const std::string& name, const std::string& text) const {
        fs::create_directories((tree / name).parent_path());
        std::ofstream(tree / name) << text;
    }

    fs::path tree;
};

} // namespace

TEST(Includes, PointDownward) {
    EXPECT_FALSE(includesBelow(tree, "src").empty());
    EXPECT_EQ(lines(backwardArrows(tree)), "");
}

TEST(Types, HaveNamesOfTheirOwn) {
    EXPECT_EQ(lines(typesDefinedTwice(tree)), "");
}

TEST(Includes, RoomListHasNoCircle) {
    // Rooms without a user left to remove must run out only when no room is left.
    RoomUses rooms = allowedUses();
    while (!rooms.empty()) {
        const size_t before = rooms.size();
        for (auto room = rooms.begin(); room != rooms.end(); ++room) {
            if (room->second.empty()) {
                const std::string name = room->first;
                rooms.erase(room);
                for (auto& [other, uses] : rooms)
                    uses.erase(name);
                break;
            }
        }
        ASSERT_LT(rooms.size(), before) << "a circle through " << rooms.begin()->first;
    }
}

TEST(Includes, CMakeNamesNoMoreThanTheRoomMayUse) {
    static const std::regex call(R"(tamarin_room\(\s*(\w+)([^)]*)\))");
    static const std::regex keyword("[A-Z]+");
    for (const auto& [room, allowed] : allowedUses()) {
        const fs::path file = tree / "src" / room / "CMakeLists.txt";
        if (!fs::exists(file))
            continue;
        const std::string text = contents(file);
        for (std::sregex_iterator it(text.begin(), text.end(), call), end; it != end; ++it) {
            EXPECT_EQ((*it)[1], room);
            std::istringstream words((*it)[2]);
            bool uses = false;
            for (std::string word; words >> word;) {
                if (std::regex_match(word, keyword)) {
                    uses = word == "USES";
                } else if (uses) {
                    EXPECT_TRUE(allowed.contains(word)) << room << " may not use " << word;
                }
            }
        }
    }
}

TEST_F(PlantedTree, IsCleanAtFirst) {
    EXPECT_EQ(lines(backwardArrows(tree)), "");
}

TEST_F(PlantedTree, BackwardArrowIsFound) {
    plant("src/game/text.cpp", "// text\n#include \"game/state.h\"\n#  include \"solver/cfr.h\"\n");
    EXPECT_EQ(lines(backwardArrows(tree)), "src/game/text.cpp:3: game may not include solver\n");
}

TEST_F(PlantedTree, ArrowBetweenNeighboursIsFound) {
    plant("src/index/hand_index.h", "#include \"support/file.h\"\n");
    EXPECT_EQ(lines(backwardArrows(tree)),
              "src/index/hand_index.h:1: index may not include support\n");
}

TEST_F(PlantedTree, IncludeWithoutItsRoomIsFound) {
    plant("src/game/text.cpp", "#include \"state.h\"\n");
    EXPECT_EQ(lines(backwardArrows(tree)),
              "src/game/text.cpp:1: \"state.h\" is no src/ROOM/FILE\n");
}

TEST_F(PlantedTree, ToolboxLibraryBelowTheToolboxIsFound) {
    plant("src/game/text.cpp", "#include <fmt/format.h>\n");
    plant("src/toolbox/main.cpp", "#include <fmt/format.h>\n");
    EXPECT_EQ(lines(backwardArrows(tree)),
              "src/game/text.cpp:1: <fmt/format.h> belongs to the toolbox\n");
}

TEST_F(PlantedTree, TypesOfOneNameAreFound) {
    plant("src/game/state.h",
          "class State;\nclass State : public Base {\n    struct Cards {\n    };\n};\n");
    plant("src/game/hand.h", "struct Cards {\n};\nenum class Street { flop };\n");
    plant("src/solver/cfr.cpp",
          "namespace {\nstruct State {\n};\n} // namespace\nclass State final {\n};\n"
          "enum class Street : int {\n};\n");
    EXPECT_EQ(lines(typesDefinedTwice(tree)),
              "src/solver/cfr.cpp:5: State is a type of src/game/state.h:2\n"
              "src/solver/cfr.cpp:7: Street is a type of src/game/hand.h:3\n");
}

TEST_F(PlantedTree, UnknownRoomIsFound) {
    plant("src/attic/old.cpp", "#include <map>\n");
    EXPECT_EQ(lines(backwardArrows(tree)), "src/attic/old.cpp:1: attic is no room\n");
}

} // namespace tamarin::test
