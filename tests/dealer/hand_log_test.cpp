#include "dealer/hand_log.h"

#include "game/games.h"
#include "game/random_hand.h"

#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <sys/file.h>
#include <sys/stat.h>
#include <thread>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

namespace tamarin::test {

using tamarin::test::loadGameFile;

namespace {

LoggedHand randomHand(const Game& game, uint32_t seed) {
    LoggedHand hand{};
    test::playRandomHand(game, seed, [&](const State& state) { hand.state = state; });
    for (uint8_t seat = 0; seat < game.numPlayers; ++seat) {
        hand.chips.push_back(valueOfState(&game, &hand.state, seat));
        hand.names.push_back("p" + std::to_string(seat));
    }
    return hand;
}

std::string contents(const std::string& path) {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
}

class HandLogFile : public testing::Test {
protected:
    std::string path = testing::TempDir() + "hand_log_" + std::to_string(getpid());
    void TearDown() override { std::filesystem::remove(path); }
};

} // namespace

TEST(HandLine, OfAKuhnHand) {
    const GamePtr game = loadGameFile("kuhn.limit.3p.game");
    LoggedHand hand{};
    ASSERT_GT(readState("STATE:7:crfc:Qs|Ks|As", game.get(), &hand.state), 0);
    hand.chips = {-2, 3, -1};
    hand.names = {"rule", "call", "random"};
    EXPECT_EQ(formatHand(game.get(), hand), "STATE:7:crfc:Qs|Ks|As:-2|3|-1:rule|call|random");
}

RC_GTEST_PROP(HandLine, ReadsBackAsItWas, (uint32_t seed)) {
    for (const char* name :
         {"kuhn.limit.3p.game", "holdem.limit.3p.game", "holdem.nolimit.2p.reverse_blinds.game"}) {
        const GamePtr game = loadGameFile(name);
        const LoggedHand hand = randomHand(*game, seed);
        const std::string line = formatHand(game.get(), hand);
        const auto read = parseHand(game.get(), line);
        RC_ASSERT(read.ok());
        RC_ASSERT(statesEqual(game.get(), &hand.state, &read->state) == 1);
        RC_ASSERT(read->chips == hand.chips);
        RC_ASSERT(read->names == hand.names);
        RC_ASSERT(formatHand(game.get(), *read) == line);
    }
}

TEST(HandLine, RefusesWhatItDidNotWrite) {
    const GamePtr game = loadGameFile("kuhn.limit.3p.game");
    ASSERT_TRUE(parseHand(game.get(), "STATE:7:crfc:Qs|Ks|As:-2|3|-1:a|b|c").ok());
    const std::string good = "STATE:7:crff:Qs|Ks|As:-1|2|-1:a|b|c";
    ASSERT_TRUE(parseHand(game.get(), good).ok());
    for (const char* line :
         {"", "STATE", "STATE:7:crf:Qs|Ks|As:-1|2|-1:a|b|c", "STATE:7:crff:Qs|Ks|As",
          "STATE:7:crff:Qs|Ks|As:", "STATE:7:crff:Qs|Ks|As:-1|2|-1",
          "STATE:7:crff:Qs|Ks|As:-1|2:a|b|c", "STATE:7:crff:Qs|Ks|As:-1|2|-1:a|b",
          "STATE:7:crff:Qs|Ks|As:-1|2|x:a|b|c", "STATE:7:crff:Qs|Ks|As:-1|2|nan:a|b|c",
          "STATE:7:crff:Qs|Ks|As:-1|3|-2:a|b|c", "STATE:7:crff:Qs|Ks|As:-1|2|-1:a|b|c:d",
          "STATE:7:crff:Qs|Ks|As -1|2|-1:a|b|c"})
        EXPECT_FALSE(parseHand(game.get(), line).ok()) << line;
}

TEST_F(HandLogFile, IsReadWhileItIsWritten) {
    const GamePtr game = loadGameFile("kuhn.limit.3p.game");
    auto log = HandLog::create(path);
    ASSERT_TRUE(log.ok());
    ASSERT_TRUE(log->begin("two words").ok());
    std::vector<LoggedHand> hands;
    for (uint32_t seed = 0; seed < 20; ++seed) {
        hands.push_back(randomHand(*game, seed));
        ASSERT_TRUE(log->add(game.get(), hands.back()).ok());
        size_t count = 0;
        ASSERT_TRUE(readHandLog(game.get(), path, [&](const LoggedHand& hand) {
                        EXPECT_EQ(hand.chips, hands[count].chips);
                        ++count;
                    }).ok());
        EXPECT_EQ(count, hands.size());
    }
    EXPECT_TRUE(log->close().ok());
    EXPECT_TRUE(contents(path).starts_with("# tamarin match two words\nSTATE:0:"));
}

TEST_F(HandLogFile, ReplacesAnOlderOneWithItsFirstLine) {
    {
        auto log = HandLog::create(path);
        ASSERT_TRUE(log.ok());
        EXPECT_TRUE(std::filesystem::exists(path));
    }
    EXPECT_FALSE(std::filesystem::exists(path)) << "nothing was written";
    const std::string older = "# tamarin match that was longer than the new one\n";
    std::ofstream(path) << older;
    {
        auto log = HandLog::create(path);
        ASSERT_TRUE(log.ok());
    }
    EXPECT_EQ(contents(path), older);
    auto log = HandLog::create(path);
    ASSERT_TRUE(log.ok());
    ASSERT_TRUE(log->begin("new").ok());
    EXPECT_EQ(contents(path), "# tamarin match new\n");
    EXPECT_TRUE(log->close().ok());
}

TEST_F(HandLogFile, ALineCutOffIsNoHand) {
    const GamePtr game = loadGameFile("kuhn.limit.3p.game");
    std::ofstream(path) << "STATE:7:crff:Qs|Ks|As:-1|2|-1:a|b|c\nSTATE:8:crff:Qs|Ks|As:-1|2|-1:a|b";
    int count = 0;
    EXPECT_TRUE(readHandLog(game.get(), path, [&](const LoggedHand&) { ++count; }).ok());
    EXPECT_EQ(count, 1);
}

TEST_F(HandLogFile, ErrorsNameTheLine) {
    const GamePtr game = loadGameFile("kuhn.limit.3p.game");
    std::ofstream(path) << "# comment\n\nSTATE:7:crff:Qs|Ks|As:-1|2|0:a|b|c\n";
    const Status status = readHandLog(game.get(), path, [](const LoggedHand&) {});
    ASSERT_FALSE(status.ok());
    EXPECT_EQ(status.error(), path + ":3: seat 2 did not win 0");
    EXPECT_FALSE(readHandLog(game.get(), path + ".none", [](const LoggedHand&) {}).ok());
}

TEST(HandLogErrors, AreReported) {
    EXPECT_FALSE(HandLog::create("/nonexistent/log").ok());
    auto full = HandLog::create("/dev/full");
    ASSERT_TRUE(full.ok());
    const Status status = full->begin("x");
    ASSERT_FALSE(status.ok());
    EXPECT_EQ(status.error(), "could not write /dev/full: No space left on device");
}

// A log was once written over whatever the path held.
TEST_F(HandLogFile, RefusesWhatIsNoLog) {
    for (const std::string& text :
         {std::string("GAMEDEF\nlimit\n"), std::string("# tamarin matc"), std::string("\0", 1),
          std::string("# a note\n# tamarin match kuhn\n"), std::string("STAT")}) {
        std::ofstream(path) << text;
        const auto log = HandLog::create(path);
        ASSERT_FALSE(log.ok()) << text;
        EXPECT_EQ(log.error(), path + " holds something else than a match log; name another file, "
                                      "or remove it");
        EXPECT_EQ(contents(path), text);
    }
    for (const char* text : {"", "STATE:7:crff:Qs|Ks|As:-1|2|-1:a|b|c\n", "# tamarin match "}) {
        std::ofstream(path) << text;
        EXPECT_TRUE(HandLog::create(path).ok()) << text;
        EXPECT_EQ(contents(path), text);
    }
}

// Two matches once wrote into one file.
TEST_F(HandLogFile, BelongsToOneMatch) {
    auto first = HandLog::create(path);
    ASSERT_TRUE(first.ok());
    const auto refused = [&] { return HandLog::create(path).error(); };
    EXPECT_EQ(refused(), "could not write " + path + ": another match is writing it");
    EXPECT_TRUE(std::filesystem::exists(path)) << "it is not the second's to remove";
    ASSERT_TRUE(first->begin("one").ok());
    EXPECT_EQ(refused(), "could not write " + path + ": another match is writing it");
    EXPECT_EQ(contents(path), "# tamarin match one\n");
    EXPECT_TRUE(first->close().ok());
    EXPECT_TRUE(HandLog::create(path).ok());
}

// Opening a pipe waits for its reader, and no signal ended the wait.
TEST_F(HandLogFile, APipeMustHaveItsReader) {
    ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
    EXPECT_EQ(HandLog::create(path).error(),
              "could not write " + path + ": nobody reads this pipe; start its reader first");
    EXPECT_TRUE(std::filesystem::exists(path));
    const int reader = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    auto log = HandLog::create(path);
    ASSERT_TRUE(log.ok()) << log.error();
    ASSERT_TRUE(log->begin("x").ok());
    char text[64];
    EXPECT_EQ(::read(reader, text, sizeof text), 18);
    EXPECT_EQ(std::string(text, 18), "# tamarin match x\n");
    EXPECT_TRUE(log->close().ok());
    ::close(reader);
}

TEST_F(HandLogFile, ASlowReaderIsWaitedForAsLongAsOneLikes) {
    ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
    const int reader = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    int asked = 0;
    bool wait = false;
    const std::string line(100000, 'x'); // more than a pipe holds
    auto log = HandLog::create(path, [&] { return ++asked < 3 || wait; });
    ASSERT_TRUE(log.ok());
    EXPECT_EQ(log->begin(line).error(), "stopped while nobody reads " + path);
    EXPECT_EQ(asked, 3);

    wait = true;
    std::string heard;
    std::thread slow([&] {
        char text[4096];
        for (ssize_t size; heard.size() < 65536 + 100017 &&
                           ((size = ::read(reader, text, sizeof text)) > 0 || errno == EAGAIN);)
            heard.append(text, static_cast<size_t>(std::max<ssize_t>(size, 0)));
    });
    EXPECT_TRUE(log->begin(line).ok());
    slow.join();
    EXPECT_TRUE(heard.ends_with("# tamarin match " + line + "\n"));
    ::close(reader);
}

namespace {

// A disk with troubles of its own.
class BadDisk : public FileSystem {
public:
    ssize_t read(int fd, void* buffer, size_t size) override {
        if (++reads % 2 == 0)
            return FileSystem::read(fd, buffer, size);
        errno = EINTR;
        return -1;
    }
    ssize_t write(int fd, const void* buffer, size_t size) override {
        if (++writes % 2 == 1) {
            errno = EINTR;
            return -1;
        }
        return FileSystem::write(fd, buffer, std::min<size_t>(size, 3));
    }
    int close(int fd) override {
        FileSystem::close(fd);
        errno = closeError;
        return closeError == 0 ? 0 : -1;
    }
    int flock(int fd, int operation) override {
        if (lockError != 0) {
            errno = lockError;
            return -1;
        }
        if (beforeLock)
            beforeLock();
        return FileSystem::flock(fd, operation);
    }
    int reads = 0;
    int writes = 0;
    int closeError = 0;
    int lockError = 0;
    std::function<void()> beforeLock; // what another process does between open and lock
};

} // namespace

TEST_F(HandLogFile, LosesNothingToInterruptedCallsAndShortWrites) {
    BadDisk disk;
    std::ofstream(path) << "# tamarin match that is looked at first\n";
    auto log = HandLog::create(
        path, [] { return true; }, disk);
    ASSERT_TRUE(log.ok());
    ASSERT_TRUE(log->begin("of many pieces").ok());
    EXPECT_EQ(contents(path), "# tamarin match of many pieces\n");
    EXPECT_GT(disk.writes, 10);
    EXPECT_EQ(disk.reads, 2);
}

TEST_F(HandLogFile, TellsWhatClosingFinds) {
    BadDisk disk;
    auto log = HandLog::create(
        path, [] { return true; }, disk);
    ASSERT_TRUE(log->begin("x").ok());
    disk.closeError = EIO;
    EXPECT_EQ(log->close().error(), "could not write " + path + ": Input/output error");
    auto interrupted = HandLog::create(
        path, [] { return true; }, disk);
    disk.closeError = EINTR; // the descriptor is closed all the same
    EXPECT_TRUE(interrupted->close().ok());
}

TEST_F(HandLogFile, DoesWithoutALockWhereThereAreNone) {
    BadDisk disk;
    disk.lockError = ENOLCK;
    EXPECT_TRUE(HandLog::create(
                    path, [] { return true; }, disk)
                    .ok());
}

// A lock on a file without the name would keep no other match out, and nobody would find the log.
TEST_F(HandLogFile, MustStillHaveItsNameWhenItIsLocked) {
    for (const bool replaced : {false, true}) {
        std::ofstream(path) << "# tamarin match old\n";
        BadDisk disk;
        disk.beforeLock = [&] {
            std::filesystem::remove(path);
            if (replaced)
                std::ofstream(path) << "# tamarin match of another\n";
        };
        const auto log = HandLog::create(
            path, [] { return true; }, disk);
        ASSERT_FALSE(log.ok()) << replaced;
        EXPECT_EQ(log.error(),
                  "could not write " + path + ": it was taken away just now; try again");
        EXPECT_EQ(std::filesystem::exists(path), replaced);
    }
    EXPECT_EQ(contents(path), "# tamarin match of another\n");
}

} // namespace tamarin::test
