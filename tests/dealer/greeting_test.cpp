#include "dealer/greeting.h"

#include <gtest/gtest.h>

namespace tamarin::test {

using Outcome = Greeting::Outcome;

TEST(Greeting, TakesTheVersionLine) {
    EXPECT_EQ(Greeting().hear("VERSION:2.0.0"), Outcome::welcome);
    for (const char* line : {"", "VERSION:1.0.0", "VERSION:2.0.0 ", " VERSION:2.0.0",
                             "version:2.0.0", "VERSION:2.0.00", "# hello", ";"}) {
        Greeting greeting;
        EXPECT_EQ(greeting.hear(line), Outcome::refused) << line;
        EXPECT_EQ(greeting.complaint(),
                  "says '" + std::string(line) + "' instead of VERSION:2.0.0");
    }
}

TEST(Greeting, ShowsStrangeBytesAsText) {
    Greeting binary;
    binary.hear(std::string("\x16\x03\x01\0\x80 a", 7));
    EXPECT_EQ(binary.complaint(), "says '\\x16\\x03\\x01\\x00\\x80 a' instead of VERSION:2.0.0");
    Greeting endless;
    endless.hear(std::string(4096, 'x'));
    EXPECT_EQ(endless.complaint(),
              "says '" + std::string(80, 'x') + "...' instead of VERSION:2.0.0");
}

TEST(Greeting, AsksForItsTokenFirst) {
    Greeting greeting("s3cret");
    EXPECT_EQ(greeting.hear("#token s3cret"), Outcome::unfinished);
    EXPECT_EQ(greeting.hear("VERSION:2.0.0"), Outcome::welcome);

    Greeting old("s3cret");
    EXPECT_EQ(old.hear("#token s3cret"), Outcome::unfinished);
    EXPECT_EQ(old.hear("VERSION:1.0.0"), Outcome::refused);
    EXPECT_EQ(old.complaint(), "says 'VERSION:1.0.0' instead of VERSION:2.0.0");
}

TEST(Greeting, RefusesAnotherTokenAndNone) {
    for (const char* line : {"#token", "# token s3cret", "VERSION:2.0.0", "s3cret", "", "#",
                             "token s3cret", "#TOKEN s3cret"}) {
        Greeting greeting("s3cret");
        EXPECT_EQ(greeting.hear(line), Outcome::refused) << line;
        EXPECT_EQ(greeting.complaint(), "gives no token") << line;
    }
    for (const char* line :
         {"#token ", "#token s3cre", "#token s3crets", "#token s3creT", "#token  s3cret",
          "#token s3cret ", "#token x3cret", "#token s3crets3cret"}) {
        Greeting greeting("s3cret");
        EXPECT_EQ(greeting.hear(line), Outcome::refused) << line;
        EXPECT_EQ(greeting.complaint(), "gives a wrong token") << line;
    }
}

// One try: whoever guesses connects again for the next.
TEST(Greeting, TakesATokenThatNobodyAskedForAsNonsense) {
    Greeting greeting;
    EXPECT_EQ(greeting.hear("#token s3cret"), Outcome::refused);
    EXPECT_EQ(greeting.complaint(), "says '#token ...' instead of VERSION:2.0.0");
    Greeting twice("s3cret");
    EXPECT_EQ(twice.hear("#token s3cret"), Outcome::unfinished);
    EXPECT_EQ(twice.hear("#token s3cret"), Outcome::refused);
    EXPECT_EQ(twice.complaint(), "says '#token ...' instead of VERSION:2.0.0");
}

TEST(SameToken, ComparesAllOfIt) {
    EXPECT_TRUE(sameToken("abc", "abc"));
    for (const char* said : {"", "a", "ab", "abd", "xbc", "axc", "abcabc", "abca"})
        EXPECT_FALSE(sameToken("abc", said)) << said;
    EXPECT_TRUE(sameToken("", ""));
    EXPECT_FALSE(sameToken("", "a"));
}

TEST(IsToken, IsOnePrintableWord) {
    EXPECT_TRUE(isToken("a"));
    EXPECT_TRUE(isToken("!#token~"));
    EXPECT_TRUE(isToken(std::string(200, 'x')));
    for (const std::string& text :
         {std::string(), std::string(201, 'x'), std::string("a b"), std::string("a\n"),
          std::string("a\0b", 3), std::string("\xc3\xa4"), std::string("\x7f")})
        EXPECT_FALSE(isToken(text)) << text;
}

} // namespace tamarin::test
