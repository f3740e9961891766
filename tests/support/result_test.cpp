#include "support/result.h"

#include <memory>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

Result<int> half(int number) {
    if (number % 2 != 0)
        return Error{std::to_string(number) + " is odd"};
    return number / 2;
}

TEST(Result, HoldsAValue) {
    const Result<int> result = half(8);
    ASSERT_TRUE(result.ok());
    EXPECT_TRUE(static_cast<bool>(result));
    EXPECT_EQ(*result, 4);
    EXPECT_EQ(result.value(), 4);
}

TEST(Result, HoldsAnError) {
    const Result<int> result = half(7);
    ASSERT_FALSE(result.ok());
    EXPECT_EQ(result.error(), "7 is odd");
}

TEST(Result, HoldsWhatCannotBeCopied) {
    Result<std::unique_ptr<int>> result(std::make_unique<int>(5));
    const std::unique_ptr<int> value = std::move(*result);
    EXPECT_EQ(*value, 5);
}

TEST(Result, TellsAnErrorFromAValueOfTheSameKind) {
    const Result<std::string> value(std::string("text"));
    const Result<std::string> error(Error{"text"});
    EXPECT_TRUE(value.ok());
    EXPECT_FALSE(error.ok());
}

TEST(ResultDeathTest, RefusesTheWrongQuestion) {
    EXPECT_DEATH(static_cast<void>(half(7).value()), "ok\\(\\)");
    EXPECT_DEATH(static_cast<void>(half(8).error()), "!ok\\(\\)");
}

TEST(Status, IsSuccessUnlessToldOtherwise) {
    EXPECT_TRUE(Status().ok());
    const Status failed = Error{"what, where"};
    ASSERT_FALSE(failed.ok());
    EXPECT_EQ(failed.error(), "what, where");
    EXPECT_DEATH(static_cast<void>(Status().error()), "!ok_");
}

} // namespace
} // namespace tamarin::test
