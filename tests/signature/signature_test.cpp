#include "signature/signature.h"

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

std::string lines(const Signature& signature) {
    std::string text;
    for (const SignaturePart& part : signature.parts())
        text += signatureText(part.value) + " " + part.name + "\n";
    return text;
}

// What the whole promises: the same input, the same bits, from any compiler, at any optimisation,
// with any number of threads (tests/toolbox/signature_command_test.cpp takes three). Where this
// fails without an intended change of behaviour, the change is wrong; where one is intended,
// expected.cpp states the new numbers and the commit says why.
TEST(Signature, IsTheExpectedOne) {
    const auto found = computeSignature(1);
    ASSERT_TRUE(found);
    EXPECT_EQ(lines(*found), lines(expectedSignature()));
}

TEST(Signature, EndsWhenTold) {
    int asked = 0;
    EXPECT_FALSE(computeSignature(0, [&] { return ++asked == 2; }));
    EXPECT_EQ(asked, 2);
}

TEST(Signature, WholeDependsOnEveryPart) {
    const Signature all({{"ranks", 1}, {"match", 2}});
    EXPECT_EQ(all.whole(), Signature({{"ranks", 1}, {"match", 2}}).whole());
    EXPECT_NE(all.whole(), Signature({{"ranks", 3}, {"match", 2}}).whole());
    EXPECT_NE(all.whole(), Signature({{"ranks", 1}, {"match", 3}}).whole());
    EXPECT_NE(all.whole(), Signature({{"ranks", 1}, {"other", 2}}).whole());
    EXPECT_NE(all.whole(), Signature({{"ranks", 1}}).whole());
}

TEST(Signature, NamesThePartsThatDiffer) {
    using Names = std::vector<std::string>;
    const Signature all({{"ranks", 1}, {"indices", 2}, {"match", 3}});
    EXPECT_EQ(partsThatDiffer(all, all), Names{});
    EXPECT_EQ(partsThatDiffer(all, Signature({{"ranks", 1}, {"indices", 9}, {"match", 3}})),
              Names{"indices"});
    EXPECT_EQ(partsThatDiffer(all, Signature({{"ranks", 1}, {"match", 3}})), Names{"indices"});
    EXPECT_EQ(partsThatDiffer(Signature({{"ranks", 7}, {"indices", 2}}), all),
              (Names{"ranks", "match"}));
}

TEST(SignatureText, HasSixteenDigits) {
    EXPECT_EQ(signatureText(0), "0000000000000000");
    EXPECT_EQ(signatureText(0x00a1f3d2c4b59687), "00a1f3d2c4b59687");
    EXPECT_EQ(signatureText(~uint64_t{0}), "ffffffffffffffff");
}

} // namespace
} // namespace tamarin::test
