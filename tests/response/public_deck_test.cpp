#include "response/public_deck.h"

#include "game/games.h"

#include <algorithm>
#include <map>
#include <set>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

GamePtr limit() {
    return loadGameFile("holdem.limit.2p.reverse_blinds.game");
}

uint8_t card(const char* text) {
    uint8_t read = 0;
    EXPECT_EQ(readCard(text, &read), 2);
    return read;
}

TEST(PublicDeck, HasThe169StartingHands) {
    const PublicDeck deck(*limit());
    ASSERT_EQ(deck.holdings().size(), 1326U);
    ASSERT_EQ(deck.numHandClasses(), 169U);
    std::map<unsigned, int> sizes;
    for (size_t c = 0; c < 169; ++c)
        ++sizes[deck.handClassSize(c)];
    EXPECT_EQ(sizes, (std::map<unsigned, int>{{6, 13}, {4, 78}, {12, 78}}));
    const auto classOf = [&](const char* one, const char* other) {
        return deck.handClassOf(deck.numberOf(card(one), card(other)));
    };
    EXPECT_EQ(classOf("As", "Kd"), classOf("Kc", "Ah"));
    EXPECT_NE(classOf("As", "Kd"), classOf("As", "Ks"));
    EXPECT_EQ(deck.cardsOf(deck.numberOf(card("As"), card("2c"))),
              (std::array<uint8_t, 2>{card("2c"), card("As")}));
}

TEST(PublicDeck, HasBoardsStepByStepUpToSuits) {
    const PublicDeck deck(*limit());
    const auto flops = deck.extend(deck.empty(), 3);
    ASSERT_EQ(flops.size(), 1755U);
    unsigned all = 0;
    std::map<size_t, int> symmetries;
    for (const PublicBoard& flop : flops) {
        all += flop.weight;
        ++symmetries[flop.symmetry.size()];
        EXPECT_EQ(flop.weight * flop.symmetry.size(), 24U);
        EXPECT_TRUE(std::ranges::is_sorted(flop.cards));
    }
    EXPECT_EQ(all, 22100U);
    // Of one suit 286, which six renamings leave; of two suits 1,014 + 156 pairs that two leave, a
    // pair and a third suit likewise; three suits of different ranks, that one leaves.
    EXPECT_EQ(symmetries[6], 286 + 13);
    size_t turns = 0;
    for (const PublicBoard& flop : flops) {
        unsigned next = 0;
        for (const PublicBoard& turn : deck.extend(flop, 1)) {
            next += turn.weight;
            ++turns;
            EXPECT_EQ(flop.symmetry.size(), turn.weight * turn.symmetry.size());
        }
        EXPECT_EQ(next, 49U);
    }
    EXPECT_EQ(turns, 63193U);
}

// Every board of a small deck is one that is looked at, turned by a renaming, as often as it says.
TEST(PublicDeck, BoardsStandForAllOthers) {
    GamePtr game = limit();
    game->numSuits = 3;
    game->numRanks = 3;
    const PublicDeck deck(*game);
    EXPECT_EQ(deck.cards().front(), card("Qd")); // the highest ranks and the last suits
    const PublicBoard all = deck.empty();
    EXPECT_EQ(all.symmetry.size(), 6U);
    std::set<std::vector<uint8_t>> seen;
    for (const PublicBoard& board : deck.extend(all, 2)) {
        std::set<std::vector<uint8_t>> images;
        for (const SuitRenaming& suits : all.symmetry) {
            std::vector<uint8_t> image;
            for (const uint8_t one : board.cards)
                image.push_back(renamed(one, suits));
            std::ranges::sort(image);
            images.insert(image);
        }
        EXPECT_EQ(images.size(), board.weight);
        EXPECT_EQ(*images.begin(), board.cards); // the least of them
        seen.merge(images);
    }
    EXPECT_EQ(seen.size(), 36U);
}

struct OneNumber {
    double number = 0;
    void add(const OneNumber& other) { number += other.number; }
    void scale(double factor) { number *= factor; }
};

TEST(PublicDeck, SymmetriseTakesTheMeanOverEveryOrbit) {
    const PublicDeck deck(*limit());
    PublicBoard flop;
    for (const PublicBoard& each : deck.extend(deck.empty(), 3))
        if (each.cards == std::vector<uint8_t>{card("2c"), card("7c"), card("Kc")})
            flop = each;
    ASSERT_EQ(flop.symmetry.size(), 6U);
    std::vector<OneNumber> rows(deck.holdings().size());
    const auto at = [&](const char* one, const char* other) -> double& {
        return rows[deck.numberOf(card(one), card(other))].number;
    };
    at("Ad", "Ah") = 3;
    at("Ad", "As") = 5;
    at("Qc", "Jd") = 6;
    at("Ac", "Tc") = 7;
    deck.symmetrise(flop, rows.data());
    for (const char* other : {"Ah", "As"})
        EXPECT_DOUBLE_EQ(at("Ad", other), 8.0 / 3);
    EXPECT_DOUBLE_EQ(at("Ah", "As"), 8.0 / 3);
    EXPECT_DOUBLE_EQ(at("Qc", "Js"), 2);
    EXPECT_DOUBLE_EQ(at("Qd", "Jc"), 0);
    EXPECT_DOUBLE_EQ(at("Ac", "Tc"), 7);
}

} // namespace
} // namespace tamarin::test
