#include "sampling/menu_blueprint.h"

#include "sampling/small_training.h"
#include "support/temp_directory.h"
#include "support/word_checksum.h"

#include <cstring>
#include <fstream>

#include <gtest/gtest.h>

namespace tamarin {
namespace {

constexpr size_t menuHeadSize = 176;
constexpr size_t menuPartsSize = size_t{1} << 20U;

// Hold'em with the tiny menu; numbers of buckets that make more than two MiB.
struct WrittenMenu {
    explicit WrittenMenu(std::optional<int> ownSeat = {})
        : game(test::loadGameFile("holdem.nolimit.2p.reverse_blinds.game")),
          menu(*BettingMenu::parse("bets = 1 A\nopponents = min, none", "menu")),
          tree(*game, menu, ownSeat), sets(tree, 2, counts) {
        SplitMix random(4);
        for (int32_t& sum : sets.allSums())
            sum = static_cast<int32_t>(random.below(1000));
        origin = {{hashOfGame(*game), "169-900", 77, counts, 5, 1234}, menu.text(), ownSeat};
        path = directory.file("blueprint");
        EXPECT_TRUE(writeMenuBlueprint(path, sets, origin).ok());
        bytes = test::contentsOf(path);
    }
    // What is said of the file with other bytes.
    std::string errorWith(const std::string& contents) const {
        std::ofstream(path, std::ios::binary) << contents;
        const auto file = MenuBlueprint::open(path, *game);
        if (file)
            return "";
        EXPECT_TRUE(file.error().starts_with(path + ": ")) << file.error();
        return file.error().substr(std::min(file.error().size(), path.size() + 2));
    }

    const std::vector<uint32_t> counts{169, 300, 500, 900};
    test::TempDirectory directory;
    GamePtr game;
    BettingMenu menu;
    MenuTree tree;
    MenuSets sets;
    MenuOrigin origin;
    std::string path;
    std::string bytes;
};

TEST(MenuBlueprint, HoldsTheAverageStrategyAndItsTree) {
    for (const std::optional<int> ownSeat : {std::optional<int>(), std::optional<int>(1)}) {
        const WrittenMenu written(ownSeat);
        const auto file = MenuBlueprint::open(written.path, *written.game);
        ASSERT_TRUE(file.ok()) << file.error();
        EXPECT_EQ(file->origin().menu, "bets = 1 A\nopponents = min, none\n");
        EXPECT_EQ(file->origin().ownSeat, ownSeat);
        EXPECT_EQ(file->origin().training.abstraction, "169-900");
        EXPECT_EQ(file->origin().training.abstractionHash, 77U);
        EXPECT_EQ(file->origin().training.buckets, written.counts);
        EXPECT_EQ(file->origin().training.seed, 5U);
        EXPECT_EQ(file->origin().training.steps, 1234U);
        ASSERT_EQ(file->tree().nodes().size(), written.tree.nodes().size());
        EXPECT_EQ(written.tree.nodes().size() == 1360, !ownSeat);
        for (size_t n = 0; n < written.tree.nodes().size(); ++n) {
            const MenuTree::Node& node = written.tree.nodes()[n];
            for (size_t bucket = 0; bucket < written.counts[node.round]; bucket += 1 + n % 7) {
                std::vector<double> shares(node.numEdges);
                written.sets.average(written.sets.placeOf(node, bucket), shares.size(),
                                     shares.data());
                const auto parts = file->parts(static_cast<int32_t>(n), bucket);
                ASSERT_TRUE(std::ranges::equal(parts, inParts(shares)));
            }
        }
    }
}

TEST(MenuBlueprint, EveryByteOfTheHeadIsGuarded) {
    const WrittenMenu written;
    EXPECT_EQ(written.errorWith(written.bytes), "");
    const size_t menuEnd = menuHeadSize + (written.origin.menu.size() + 7) / 8 * 8;
    for (size_t at = 0; at < menuEnd + 16; ++at) {
        std::string damaged = written.bytes;
        damaged[at] = static_cast<char>(damaged[at] ^ 0x10);
        const std::string error = written.errorWith(damaged);
        if (at < 8)
            EXPECT_EQ(error, "not a blueprint");
        else if (at < 12)
            EXPECT_NE(error.find("another version"), std::string::npos) << at << error;
        else if (at < 16)
            EXPECT_NE(error.find("byte order"), std::string::npos) << at << error;
        else
            EXPECT_TRUE(error.starts_with("damaged")) << at << error;
    }
    std::string older = written.bytes;
    older[8] = 1;
    EXPECT_EQ(written.errorWith(older), "format 1, not 2: a blueprint of limit for two");
}

TEST(MenuBlueprint, EveryBlockIsGuarded) {
    const WrittenMenu written;
    const size_t payload = written.sets.numNumbers();
    const size_t blocks = (payload + menuPartsSize - 1) / menuPartsSize;
    ASSERT_GT(blocks, 2U);
    const size_t start = written.bytes.size() - payload;
    for (size_t block = 0; block < blocks; ++block) {
        std::string damaged = written.bytes;
        const size_t at = std::min(start + block * menuPartsSize + 5, damaged.size() - 1);
        damaged[at] = static_cast<char>(damaged[at] ^ 1);
        EXPECT_EQ(written.errorWith(damaged), "damaged, block " + std::to_string(block + 1) +
                                                  " of " + std::to_string(blocks) +
                                                  " does not fit its checksum");
    }
    for (const size_t size : {size_t{1}, size_t{8}, size_t{100}, menuHeadSize, menuHeadSize + 20,
                              start, written.bytes.size() - 1})
        EXPECT_NE(written.errorWith(written.bytes.substr(0, size)), "") << size;
    EXPECT_EQ(written.errorWith(written.bytes.substr(0, 100)), "cut short, it has 100 bytes");
    EXPECT_TRUE(written.errorWith(written.bytes + "x").starts_with("damaged or cut short"));
    EXPECT_EQ(written.errorWith("GAMEDEF\nlimit\n"), "not a blueprint");
    std::filesystem::remove(written.path);
    EXPECT_FALSE(MenuBlueprint::open(written.path, *written.game).ok());
}

// A writer that errs has sound checksums: its sums are looked at, too.
TEST(MenuBlueprint, ProbabilitiesAddUp) {
    WrittenMenu written;
    const size_t payload = written.sets.numNumbers();
    const size_t blocks = (payload + menuPartsSize - 1) / menuPartsSize;
    std::string wrong = written.bytes;
    const size_t start = wrong.size() - payload;
    wrong[start + 2] = static_cast<char>(wrong[start + 2] + 1);
    const auto put = [&](size_t from, size_t size, size_t to) {
        WordChecksum checksum;
        checksum.add(std::as_bytes(std::span(wrong.data() + from, size)));
        const uint64_t value = checksum.value();
        std::memcpy(wrong.data() + to, &value, sizeof value);
    };
    put(start, menuPartsSize, start - (blocks + 1) * 8);
    put(0, start - 8, start - 8);
    const std::string error = written.errorWith(wrong);
    EXPECT_TRUE(error.starts_with("the probabilities of bucket 0 at node ")) << error;
}

TEST(MenuBlueprint, OtherGamesAndBucketsAreRefused) {
    const WrittenMenu written;
    const GamePtr limit = test::loadGameFile("holdem.limit.2p.reverse_blinds.game");
    const auto other = MenuBlueprint::open(written.path, *limit);
    ASSERT_FALSE(other.ok());
    EXPECT_EQ(other.error(), written.path + ": made for another game than this one");
    const auto file = MenuBlueprint::open(written.path, *written.game);
    EXPECT_EQ(file->madeOver({}).error(),
              written.path + ": trained over other buckets than those that the card abstraction "
                             "169-900 has now");
    MenuOrigin origin = written.origin;
    origin.training.abstraction = std::string(64, 'x');
    EXPECT_FALSE(writeMenuBlueprint(written.path, written.sets, origin).ok());
    origin = written.origin;
    origin.menu = "bets = 2 A\n"; // another tree
    ASSERT_TRUE(writeMenuBlueprint(written.path, written.sets, origin).ok());
    const auto foreign = MenuBlueprint::open(written.path, *written.game);
    ASSERT_FALSE(foreign.ok());
    EXPECT_TRUE(foreign.error().starts_with(written.path + ": made for a betting tree of 1360"))
        << foreign.error();
}

TEST(MenuBlueprint, LimitGamesForThreeHaveNoMenu) {
    const test::TempDirectory directory;
    test::SmallTraining small(test::threePlayerKuhn, "", {});
    small.trainer.run(640);
    const std::vector<uint32_t> counts{4};
    const MenuOrigin origin{{hashOfGame(*small.game), "kuhn", 1, counts, 1, 640}, "", {}};
    const std::string path = directory.file("blueprint");
    ASSERT_TRUE(writeMenuBlueprint(path, small.trainer.sets(), origin).ok());
    const auto file = MenuBlueprint::open(path, *small.game);
    ASSERT_TRUE(file.ok()) << file.error();
    EXPECT_EQ(file->tree().nodes().size(), 12U);
    EXPECT_EQ(file->parts(0, 2).size(), 2U);
}

} // namespace
} // namespace tamarin
