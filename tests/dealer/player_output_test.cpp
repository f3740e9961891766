#include "dealer/player_output.h"

#include "support/progress_doubles.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <gtest/gtest.h>

namespace tamarin::test {

using tamarin::test::ManualClock;
using tamarin::test::MemoryStream;

namespace {

// A pipe that the test writes into and what becomes of it.
class Printing {
public:
    explicit Printing(const std::string& prefix = "") {
        int ends[2];
        EXPECT_EQ(::pipe2(ends, O_CLOEXEC | O_NONBLOCK), 0);
        writer = ends[1];
        fd = ends[0];
        output = PlayerOutput(ends[0], prefix, shown.stream(), clock);
    }
    ~Printing() { stop(); }

    // What fits into the pipe.
    size_t print(const std::string& text) {
        const ssize_t written = ::write(writer, text.data(), text.size());
        return written < 0 ? 0 : static_cast<size_t>(written);
    }
    void stop() {
        if (writer >= 0)
            ::close(writer);
        writer = -1;
    }
    // Prints the line without end, as long as the output takes any; the bytes taken.
    size_t flood(const std::string& line) {
        std::string text;
        while (text.size() < 65536)
            text += line + "\n";
        size_t taken = 0;
        for (int turn = 0; turn < 10000 && output.fdToPoll() >= 0; ++turn) {
            print(text);
            const size_t before = waiting();
            output.take();
            EXPECT_LE(before - waiting(), PlayerOutput::piece);
            taken += before - waiting();
        }
        return taken;
    }
    size_t waiting() const {
        int count = 0;
        EXPECT_EQ(::ioctl(fd, FIONREAD, &count), 0);
        return static_cast<size_t>(count);
    }

    ManualClock clock;
    MemoryStream shown;
    int writer = -1;
    int fd = -1;
    PlayerOutput output;
};

} // namespace

TEST(PlayerOutput, KeepsTheLastLines) {
    Printing player;
    player.print("1\n2\r\n\n3  \n4\n5");
    player.output.take();
    EXPECT_EQ(player.output.lastLines(), (std::deque<std::string>{"1", "2", "3", "4"}));
    player.print("6\n");
    player.output.take();
    EXPECT_EQ(player.output.lastLines(), (std::deque<std::string>{"2", "3", "4", "56"}));
    player.print("the end");
    player.stop();
    player.output.take();
    EXPECT_EQ(player.output.lastLines().back(), "the end");
    EXPECT_EQ(player.output.fdToPoll(), -1);
    EXPECT_EQ(player.shown.text(), "");
}

TEST(PlayerOutput, MayComeByteByByte) {
    Printing player;
    for (const char byte : std::string("ab\nc\n")) {
        player.print(std::string(1, byte));
        player.output.take();
    }
    EXPECT_EQ(player.output.lastLines(), (std::deque<std::string>{"ab", "c"}));
    EXPECT_EQ(player.output.fdToPoll(), player.fd);
}

TEST(PlayerOutput, ClosesItsDescriptorAtItsEnd) {
    Printing player;
    EXPECT_GE(::fcntl(player.fd, F_GETFD), 0);
    { const PlayerOutput gone = std::move(player.output); }
    EXPECT_EQ(::fcntl(player.fd, F_GETFD), -1);
}

TEST(PlayerOutput, CutsALongLine) {
    Printing player;
    player.print(std::string(1000, 'x') + "\n" + std::string(299, 'y'));
    player.output.take();
    player.print("zz\nshort\n");
    player.output.take();
    EXPECT_EQ(
        player.output.lastLines(),
        (std::deque<std::string>{std::string(300, 'x'), std::string(299, 'y') + "z", "short"}));
}

TEST(PlayerOutput, IsTakenAPieceAtATimeAndAtARate) {
    Printing player;
    const size_t first = player.flood("y");
    EXPECT_LE(first, PlayerOutput::burst);
    EXPECT_GT(first, PlayerOutput::burst - PlayerOutput::piece);
    EXPECT_EQ(player.output.fdToPoll(), -1);
    const size_t left = player.waiting();
    player.output.take();
    EXPECT_EQ(player.waiting(), left) << "it has had its share";
    PlayerOutput moved = std::move(player.output);
    EXPECT_EQ(moved.fdToPoll(), -1) << "nor does it get another by moving";
    player.output = std::move(moved);

    player.clock.advance(0.25);
    EXPECT_EQ(player.output.fdToPoll(), player.fd);
    const size_t second = player.flood("y");
    EXPECT_LE(second, PlayerOutput::bytesASecond / 4 + PlayerOutput::piece);
    EXPECT_GE(second, PlayerOutput::bytesASecond / 4 - PlayerOutput::piece);

    // A long silence earns one burst and no more.
    player.clock.advance(1000);
    EXPECT_LE(player.flood("y"), PlayerOutput::burst);
}

TEST(PlayerOutput, TheRestIsTakenWhateverTheShare) {
    Printing player;
    player.flood("y");
    while (player.print("n\n") > 0) {
    }
    ASSERT_GT(player.waiting(), 2 * PlayerOutput::piece);
    player.output.takeRest();
    EXPECT_EQ(player.waiting(), 0U);
    EXPECT_EQ(player.output.lastLines().back(), "n");
    player.print("last words");
    player.stop();
    player.output.takeRest();
    EXPECT_EQ(player.output.lastLines().back(), "last words");
    EXPECT_EQ(player.output.fdToPoll(), -1);
}

namespace {

// Asked for the time as a line is shown, it makes the player print another.
class PrintingClock : public tamarin::Clock {
public:
    TimePoint now() const override {
        if (writer >= 0 && printed < 1000 && ::write(writer, "again\n", 6) == 6)
            ++printed;
        return {};
    }
    int writer = -1;
    mutable int printed = 0;
};

} // namespace

// Somebody who prints as fast as it is read would be read for ever.
TEST(PlayerOutput, TheRestIsWhatWasThereWhenItWasAskedFor) {
    int ends[2];
    ASSERT_EQ(::pipe2(ends, O_CLOEXEC | O_NONBLOCK), 0);
    PrintingClock clock;
    MemoryStream shown;
    PlayerOutput output(ends[0], "[a] ", shown.stream(), clock);
    ASSERT_EQ(::write(ends[1], "one\ntwo\n", 8), 8);
    clock.writer = ends[1];
    output.takeRest();
    clock.writer = -1;
    EXPECT_EQ(output.lastLines(), (std::deque<std::string>{"one", "two"}));
    EXPECT_EQ(clock.printed, 2);
    ::close(ends[1]);
}

TEST(PlayerOutput, ShowsEveryLineOfATalkativePlayer) {
    Printing player("[a] ");
    player.print("one\n\ntwo\n");
    player.output.take();
    EXPECT_EQ(player.shown.text(), "[a] one\n[a] \n[a] two\n");
}

TEST(PlayerOutput, ShowsSoManyLinesASecondAndCountsTheOthers) {
    Printing player("[a] ");
    const auto prints = [&](uint64_t lines) {
        for (uint64_t i = 0; i < lines; ++i) {
            player.print("y\n");
            player.output.take();
        }
    };
    const auto shown = [&](uint64_t lines) {
        std::string text;
        for (uint64_t i = 0; i < lines; ++i)
            text += "[a] y\n";
        return text;
    };
    constexpr uint64_t most = PlayerOutput::linesShownASecond;
    prints(most + 7);
    EXPECT_EQ(player.shown.text(), shown(most));
    player.clock.advance(0.999);
    prints(3);
    EXPECT_EQ(player.shown.text(), shown(most));
    player.clock.advance(0.001);
    prints(most + 2);
    const std::string text =
        shown(most) + "[a] (further output passed over: 10 lines)\n" + shown(most);
    EXPECT_EQ(player.shown.text(), text);
    // What was passed over last is told at the end, and once; the count goes where the output goes.
    PlayerOutput moved = std::move(player.output);
    player.print("y\n");
    moved.take();
    EXPECT_EQ(player.shown.text(), text);
    player.stop();
    moved.take();
    EXPECT_EQ(player.shown.text(), text + "[a] (further output passed over: 3 lines)\n");
    moved = PlayerOutput();
    EXPECT_EQ(player.shown.text(), text + "[a] (further output passed over: 3 lines)\n");
}

} // namespace tamarin::test
