#include "solver/combinator.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace tamarin::test {

namespace {

std::vector<std::string> all(combinator& combinations, int k) {
    std::vector<std::string> found;
    while (combinations.next())
        found.emplace_back(reinterpret_cast<char*>(combinations.getCurrent()),
                           static_cast<size_t>(k));
    return found;
}

std::vector<std::string> all(std::string elements, int k) {
    combinator combinations(reinterpret_cast<unsigned char*>(elements.data()),
                            static_cast<int>(elements.size()), k);
    return all(combinations, k);
}

TEST(Combinator, TakesTwoOfFourInOrder) {
    EXPECT_EQ(all("abcd", 2), (std::vector<std::string>{"ab", "ac", "ad", "bc", "bd", "cd"}));
}

TEST(Combinator, TakesOneAllAndNone) {
    EXPECT_EQ(all("abc", 1), (std::vector<std::string>{"a", "b", "c"}));
    EXPECT_EQ(all("abc", 3), (std::vector<std::string>{"abc"}));
    EXPECT_EQ(all("abc", 0), (std::vector<std::string>{""}));
}

TEST(Combinator, KeepsTheElementsAsTheyAre) {
    EXPECT_EQ(all("ba", 1), (std::vector<std::string>{"b", "a"}));
}

TEST(Combinator, CountsBinomially) {
    EXPECT_EQ(all("abcdefghijkl", 5).size(), 792U);
    EXPECT_EQ(all("abcdefgh", 4).size(), 70U);
}

TEST(Combinator, CopiesItsElementsAndLetsTheResultBeOverwritten) {
    std::string elements = "abc";
    combinator combinations(reinterpret_cast<unsigned char*>(elements.data()), 3, 2);
    elements = "xyz";
    ASSERT_TRUE(combinations.next());
    unsigned char* const current = combinations.getCurrent();
    EXPECT_EQ(current[0], 'a');
    current[0] = 'q';
    EXPECT_EQ(combinations.getCurrent()[0], 'a');
}

TEST(Combinator, StartsAgainAfterReset) {
    std::string elements = "abc";
    combinator combinations(reinterpret_cast<unsigned char*>(elements.data()), 3, 2);
    EXPECT_EQ(all(combinations, 2).size(), 3U);
    EXPECT_FALSE(combinations.next());
    combinations.reset();
    EXPECT_EQ(all(combinations, 2), (std::vector<std::string>{"ab", "ac", "bc"}));
}

} // namespace

} // namespace tamarin::test
