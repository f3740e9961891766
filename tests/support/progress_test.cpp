#include "support/progress.h"

#include "support/progress_doubles.h"

#include <pty.h>
#include <unistd.h>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

TEST(Progress, PrintsALineEveryFewSeconds) {
    MemoryStream out;
    ManualClock clock;
    Progress progress("Playing hands", "hands", 4000, out.stream(), clock);
    for (int second = 1; second <= 11; ++second) {
        clock.advance(1);
        progress.update(static_cast<uint64_t>(second) * 200);
    }
    EXPECT_EQ(out.text(), "Playing hands:  25 %  1,000 of 4,000 hands, 200/s, 15.0 s left\n"
                          "Playing hands:  50 %  2,000 of 4,000 hands, 200/s, 10.0 s left\n");
    clock.advance(9);
    progress.finish(4000, "done");
    progress.finish(4000);
    progress.update(4000);
    const std::string last = "Playing hands: 4,000 hands in 20.0 s, 200/s  done\n";
    ASSERT_GT(out.text().size(), last.size());
    EXPECT_EQ(out.text().substr(out.text().size() - last.size()), last);
}

TEST(Progress, ManagesWithoutATotal) {
    MemoryStream out;
    ManualClock clock;
    Progress progress("Reading", "lines", 0, out.stream(), clock);
    clock.advance(10);
    progress.update(123, "file a");
    EXPECT_EQ(out.text(), "Reading: 123 lines, 12.3/s  file a\n");
}

TEST(Progress, CountsOnlyItsOwnRunAfterAResumption) {
    MemoryStream out;
    ManualClock clock;
    Progress progress("Training", "iterations", 2000, out.stream(), clock);
    progress.resumeAt(1000);
    clock.advance(10);
    progress.update(1100);
    EXPECT_EQ(out.text(), "Training:  55 %  1,100 of 2,000 iterations, 10.0/s, 1 min 30 s left\n");
}

TEST(Progress, IsSilentWhenNothingHappens) {
    MemoryStream out;
    ManualClock clock;
    {
        Progress progress("Playing", "hands", 10, out.stream(), clock);
        progress.update(1);
    }
    EXPECT_EQ(out.text(), "");
}

TEST(Progress, SurvivesStrangeNumbers) {
    MemoryStream out;
    ManualClock clock;
    Progress progress("Playing", "hands", 10, out.stream(), clock);
    clock.advance(6);
    progress.update(25); // more than the total
    clock.advance(6);
    progress.update(0);
    clock.advance(6);
    progress.update(UINT64_MAX);
    EXPECT_NE(out.text().find("100 %  25 of 10 hands"), std::string::npos) << out.text();
    EXPECT_NE(out.text().find("  0 %  0 of 10 hands\n"), std::string::npos) << out.text();
    EXPECT_EQ(out.text().find('-'), std::string::npos) << out.text();
}

TEST(Progress, RedrawsABarOnATerminal) {
    int master = -1;
    int slave = -1;
    ASSERT_EQ(openpty(&master, &slave, nullptr, nullptr, nullptr), 0);
    FILE* terminal = fdopen(slave, "w");
    ManualClock clock;
    {
        Progress progress("Playing", "hands", 100, terminal, clock);
        clock.advance(0.05);
        progress.update(1); // too soon to draw
        clock.advance(0.95);
        progress.update(25);
        clock.advance(1);
        progress.update(50);
    }
    std::string drawn; // a terminal may hand it over in pieces
    while (drawn.find('\n') == std::string::npos) {
        char text[1000];
        const ssize_t size = read(master, text, sizeof text);
        ASSERT_GT(size, 0) << drawn;
        drawn.append(text, static_cast<size_t>(size));
    }
    EXPECT_EQ(drawn,
              "\rPlaying: [######------------------]  25 %  25 of 100 hands, 25.0/s, 3.0 s left"
              "\x1b[K"
              "\rPlaying: [############------------]  50 %  50 of 100 hands, 25.0/s, 2.0 s left"
              "\x1b[K\r\n");
    fclose(terminal);
    close(master);
}

TEST(Describe, Durations) {
    EXPECT_EQ(describeDuration(0), "0.0 s");
    EXPECT_EQ(describeDuration(1.234), "1.2 s");
    EXPECT_EQ(describeDuration(59.94), "59.9 s");
    EXPECT_EQ(describeDuration(59.95), "1 min 00 s");
    EXPECT_EQ(describeDuration(200), "3 min 20 s");
    EXPECT_EQ(describeDuration(3599.4), "59 min 59 s");
    EXPECT_EQ(describeDuration(3599.6), "1 h 00 min");
    EXPECT_EQ(describeDuration(7500), "2 h 05 min");
    EXPECT_EQ(describeDuration(47 * 3600 + 59 * 60), "47 h 59 min");
    EXPECT_EQ(describeDuration(76 * 3600), "3 d 04 h");
    EXPECT_EQ(describeDuration(-1), "0.0 s");
    EXPECT_EQ(describeDuration(std::strtod("nan", nullptr)), "0.0 s");
}

TEST(Describe, Bytes) {
    EXPECT_EQ(describeBytes(0), "0 bytes");
    EXPECT_EQ(describeBytes(1), "1 byte");
    EXPECT_EQ(describeBytes(999), "999 bytes");
    EXPECT_EQ(describeBytes(1000), "1.0 kB");
    EXPECT_EQ(describeBytes(999'949), "999.9 kB");
    EXPECT_EQ(describeBytes(999'950), "1.0 MB");
    EXPECT_EQ(describeBytes(12'345'678), "12.3 MB");
    EXPECT_EQ(describeBytes(10'500'000'000), "10.5 GB");
    EXPECT_EQ(describeBytes(UINT64_MAX), "18.4 EB");
}

TEST(Describe, Counts) {
    EXPECT_EQ(describeCount(0), "0");
    EXPECT_EQ(describeCount(999), "999");
    EXPECT_EQ(describeCount(1000), "1,000");
    EXPECT_EQ(describeCount(1'286'792), "1,286,792");
    EXPECT_EQ(describeCount(UINT64_MAX), "18,446,744,073,709,551,615");
}

} // namespace
} // namespace tamarin::test
