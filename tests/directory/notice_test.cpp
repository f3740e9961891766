#include "directory/notice.h"

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

TEST(Notice, ComplaintsNameTheProgramAndRemarksDoNot) {
    ::testing::internal::CaptureStderr();
    complain("{} is {} bytes short", "a{}b", 3);
    complain("50 % {done}");
    remark("checking {}", "river");
    remark("{}");
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "tamarin: a{}b is 3 bytes short\n"
                                                        "tamarin: 50 % {done}\n"
                                                        "checking river\n"
                                                        "{}\n");
}

} // namespace
} // namespace tamarin::test
