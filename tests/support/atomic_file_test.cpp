#include "support/child_process.h"
#include "support/faulty_files.h"
#include "support/file.h"
#include "support/interrupt.h"
#include "support/temp_directory.h"

#include <set>
#include <sys/file.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <system_error>
#include <thread>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

// More than one buffer of the writer, and not a multiple of it.
std::string largeContents(char letter) {
    std::string contents(700'001, letter);
    for (size_t i = 0; i < contents.size(); i += 1000)
        contents[i] = static_cast<char>('0' + i / 1000 % 10);
    return contents;
}

// Writes contents in pieces of several sizes, as a writer of records would.
Status writeInPieces(const std::string& path, const std::string& contents, FileSystem& files) {
    Result<AtomicFile> file = AtomicFile::create(path, files);
    if (!file)
        return Error{file.error()};
    size_t piece = 1;
    for (size_t at = 0; at < contents.size(); at += piece, piece = piece * 3 % 300'007 + 1)
        if (Status status = file->write(contents.substr(at, piece)); !status)
            return status;
    return file->commit();
}

std::string causeOf(int error) {
    return std::generic_category().message(error);
}

// The number of a process that has just died.
pid_t deadProcess() {
    const pid_t child = startChild([] { return 0; });
    waitForChild(child);
    return child;
}

std::string temporaryName(const std::string& base, pid_t pid, int number) {
    return base + ".tmp." + std::to_string(pid) + "." + std::to_string(number);
}

// Which bytes were asked to go to the disk before the sync.
class WatchedFiles : public FileSystem {
public:
    void startWriting(int, uint64_t begin, uint64_t size) override {
        EXPECT_EQ(begin, asked);
        asked += size;
        ++times;
    }
    uint64_t asked = 0;
    int times = 0;
};

TEST(AtomicFile, ALargeOneIsOnItsWayToTheDiskWhileItIsWritten) {
    const TempDirectory directory;
    constexpr uint64_t mebibyte = uint64_t{1} << 20;
    const std::string part(mebibyte / 2 + 1, 'p');
    WatchedFiles files;
    auto file = AtomicFile::create(directory.file("table"), files);
    ASSERT_TRUE(file.ok());
    uint64_t written = 0;
    for (; written < 15 * mebibyte; written += part.size())
        ASSERT_TRUE(file->write(part).ok());
    EXPECT_EQ(files.times, 0);
    for (; written < 50 * mebibyte; written += part.size()) {
        ASSERT_TRUE(file->write(part).ok());
        EXPECT_LT(written + part.size() - files.asked, 17 * mebibyte);
    }
    EXPECT_EQ(files.times, 3);
    ASSERT_TRUE(file->commit().ok());
    EXPECT_EQ(std::filesystem::file_size(directory.file("table")), written);

    // A device is written as it comes.
    WatchedFiles device;
    auto null = AtomicFile::create("/dev/null", device);
    ASSERT_TRUE(null.ok());
    for (int i = 0; i < 50; ++i)
        ASSERT_TRUE(null->write(part).ok());
    EXPECT_EQ(device.times, 0);
}

TEST(AtomicFile, LeavesExactlyWhatWasWritten) {
    const TempDirectory directory;
    const std::string path = directory.file("table");
    for (const std::string& contents : {std::string(), std::string("x"), largeContents('a')}) {
        ASSERT_TRUE(writeInPieces(path, contents, systemFiles()).ok());
        EXPECT_EQ(contentsOf(path), contents);
        EXPECT_EQ(directory.names(), std::set<std::string>{"table"});
    }
}

TEST(AtomicFile, ShowsNothingBeforeTheCommit) {
    const TempDirectory directory;
    const std::string path = directory.file("table");
    Result<AtomicFile> file = AtomicFile::create(path);
    ASSERT_TRUE(file.ok());
    ASSERT_TRUE(file->write(largeContents('a')).ok());
    EXPECT_EQ(contentsOf(path), "(absent)");
    ASSERT_TRUE(file->commit().ok());
    EXPECT_EQ(contentsOf(path), largeContents('a'));
}

TEST(AtomicFile, WithoutACommitLeavesTheOldFileAndNoLitter) {
    const TempDirectory directory;
    const std::string path = directory.file("table");
    putContents(path, "old");
    {
        Result<AtomicFile> file = AtomicFile::create(path);
        ASSERT_TRUE(file->write(largeContents('a')).ok());
    }
    EXPECT_EQ(contentsOf(path), "old");
    EXPECT_EQ(directory.names(), std::set<std::string>{"table"});
}

TEST(AtomicFile, DiscardGivesUpAtOnce) {
    const TempDirectory directory;
    Result<AtomicFile> file = AtomicFile::create(directory.file("table"));
    ASSERT_TRUE(file->write("new").ok());
    file->discard();
    EXPECT_TRUE(directory.names().empty());
    EXPECT_FALSE(file->write("more").ok());
    EXPECT_FALSE(file->commit().ok());
    EXPECT_TRUE(directory.names().empty());
}

TEST(AtomicFile, IsFinishedByItsCommit) {
    const TempDirectory directory;
    const std::string path = directory.file("table");
    Result<AtomicFile> file = AtomicFile::create(path);
    ASSERT_TRUE(file->write("new").ok());
    ASSERT_TRUE(file->commit().ok());
    file->discard();
    EXPECT_FALSE(file->write("more").ok());
    EXPECT_FALSE(file->commit().ok());
    EXPECT_EQ(contentsOf(path), "new");
}

// Several files are each finished before the first takes its place.
TEST(AtomicFile, HasNothingLeftToWriteOnceItIsFinished) {
    const TempDirectory directory;
    const std::string path = directory.file("table");
    putContents(path, "old");
    FaultyFiles files;
    Result<AtomicFile> file = AtomicFile::create(path, files);
    ASSERT_TRUE(file->write("new").ok());
    ASSERT_TRUE(file->finish().ok());
    EXPECT_EQ(contentsOf(path), "old");
    EXPECT_FALSE(file->write("more").ok());
    EXPECT_FALSE(file->finish().ok());
    const size_t before = files.log().size();
    files.failCall("write", ENOSPC);
    ASSERT_TRUE(file->commit().ok());
    EXPECT_EQ(contentsOf(path), "new");
    EXPECT_EQ(files.log().at(before).name, "rename");
    EXPECT_EQ(files.count("write"), 1u);
    EXPECT_EQ(files.count("fsync"), 2u);
    EXPECT_FALSE(file->commit().ok());
}

TEST(AtomicFile, IsGivenUpAfterItIsFinishedLikeBefore) {
    const TempDirectory directory;
    const std::string path = directory.file("table");
    putContents(path, "old");
    for (const bool discarded : {true, false}) {
        Result<AtomicFile> file = AtomicFile::create(path);
        ASSERT_TRUE(file->write("new").ok());
        ASSERT_TRUE(file->finish().ok());
        if (discarded) {
            file->discard();
            EXPECT_EQ(directory.names(), std::set<std::string>{"table"});
            EXPECT_FALSE(file->commit().ok());
        }
    }
    EXPECT_EQ(contentsOf(path), "old");
    EXPECT_EQ(directory.names(), std::set<std::string>{"table"});
}

// The umask of this process, for a scope.
class Umask {
public:
    explicit Umask(mode_t mask) : before_(umask(mask)) {}
    ~Umask() { umask(before_); }
    Umask(const Umask&) = delete;
    Umask& operator=(const Umask&) = delete;

private:
    mode_t before_;
};

mode_t permissionsOf(const std::string& path) {
    struct stat about = {};
    EXPECT_EQ(stat(path.c_str(), &about), 0);
    return about.st_mode & 07777U;
}

TEST(AtomicFile, HasTheWantedPermissionsLessTheUmask) {
    const TempDirectory directory;
    for (const mode_t mask : {0U, 022U, 027U, 077U}) {
        const Umask set(mask);
        const std::string path = directory.file(std::to_string(mask));
        ASSERT_TRUE(writeWholeFile(path, "text").ok());
        EXPECT_EQ(permissionsOf(path), 0666U & ~mask);
        Result<AtomicFile> file = AtomicFile::create(path + ".644", systemFiles(), 0644);
        ASSERT_TRUE(file->commit().ok());
        EXPECT_EQ(permissionsOf(path + ".644"), 0644U & ~mask);
    }
}

// Neither does a private file become public, nor a shared one private.
TEST(AtomicFile, KeepsThePermissionsOfTheFileItReplaces) {
    const TempDirectory directory;
    const std::string path = directory.file("table");
    for (const mode_t mask : {0U, 077U})
        for (const mode_t mode : {0600U, 0640U, 0664U, 0755U, 0444U}) {
            const Umask set(mask);
            putContents(path, "old");
            ASSERT_EQ(chmod(path.c_str(), mode), 0);
            Result<AtomicFile> file = AtomicFile::create(path, systemFiles(), 0644);
            ASSERT_TRUE(file->write("new").ok());
            for (const std::string& name : directory.names())
                EXPECT_EQ(permissionsOf(directory.file(name)) & 077U & ~mode, 0U) << name;
            ASSERT_TRUE(file->commit().ok());
            EXPECT_EQ(contentsOf(path), "new");
            EXPECT_EQ(permissionsOf(path), mode) << std::oct << mode << ' ' << mask;
            std::filesystem::remove(path);
        }
}

TEST(AtomicFile, MovesWithItsTemporaryFile) {
    const TempDirectory directory;
    Result<AtomicFile> first = AtomicFile::create(directory.file("first"));
    Result<AtomicFile> second = AtomicFile::create(directory.file("second"));
    ASSERT_TRUE(first->write("1").ok());
    *second = std::move(*first); // the second is given up
    EXPECT_EQ(second->path(), directory.file("first"));
    ASSERT_TRUE(second->commit().ok());
    EXPECT_EQ(directory.names(), std::set<std::string>{"first"});
}

TEST(AtomicFile, TwoWritersOfOnePathLeaveTheLaterCommit) {
    const TempDirectory directory;
    const std::string path = directory.file("table");
    Result<AtomicFile> first = AtomicFile::create(path);
    Result<AtomicFile> second = AtomicFile::create(path);
    ASSERT_TRUE(first->write("first").ok());
    ASSERT_TRUE(second->write("second").ok());
    ASSERT_TRUE(second->commit().ok());
    EXPECT_EQ(contentsOf(path), "second");
    ASSERT_TRUE(first->commit().ok());
    EXPECT_EQ(contentsOf(path), "first");
    EXPECT_EQ(directory.names(), std::set<std::string>{"table"});
}

// A second writer that comes at any moment of the first one's work, also between its close and its
// rename, must not take the first one's temporary file for litter.
TEST(AtomicFile, AnotherWriterMayComeBeforeAnyCall) {
    const TempDirectory directory;
    const std::string path = directory.file("table");
    FaultyFiles files;
    Result<AtomicFile> file = AtomicFile::create(path, files);
    ASSERT_TRUE(file.ok());
    size_t others = 0;
    files.beforeCall = [&](size_t) {
        EXPECT_TRUE(writeWholeFile(path, "other").ok());
        ++others;
    };
    ASSERT_TRUE(file->write(largeContents('a')).ok());
    const Status status = file->commit();
    ASSERT_TRUE(status.ok()) << status.error();
    EXPECT_GT(others, 5u);
    EXPECT_EQ(directory.names(), std::set<std::string>{"table"});
}

TEST(AtomicFile, ManyThreadsWritingOnePathLeaveOneWholeFile) {
    const TempDirectory directory;
    const std::string path = directory.file("table");
    std::vector<std::thread> threads;
    for (char letter = 'a'; letter < 'e'; ++letter)
        threads.emplace_back([&path, letter] {
            for (int round = 0; round < 10; ++round)
                EXPECT_TRUE(writeWholeFile(path, std::string(10'000, letter)).ok());
        });
    for (std::thread& thread : threads)
        thread.join();
    const std::string contents = contentsOf(path);
    EXPECT_EQ(contents, std::string(10'000, contents[0]));
    EXPECT_EQ(directory.names(), std::set<std::string>{"table"});
}

TEST(AtomicFile, NamesPathAndCauseWhenItCannotBegin) {
    const TempDirectory directory;
    const std::string missing = directory.file("no/such/table");
    const Result<AtomicFile> file = AtomicFile::create(missing);
    ASSERT_FALSE(file.ok());
    EXPECT_NE(file.error().find(missing), std::string::npos);
    EXPECT_NE(file.error().find(causeOf(ENOENT)), std::string::npos);

    const Result<AtomicFile> onDirectory = AtomicFile::create(directory.path());
    ASSERT_FALSE(onDirectory.ok());
    EXPECT_NE(onDirectory.error().find("directory"), std::string::npos);
}

TEST(AtomicFile, FollowsASymbolicLink) {
    const TempDirectory directory;
    ASSERT_EQ(mkdir(directory.file("store").c_str(), 0777), 0);
    putContents(directory.file("store/real"), "old");
    ASSERT_EQ(symlink("store/real", directory.file("link").c_str()), 0);
    ASSERT_EQ(symlink("store/later", directory.file("dangling").c_str()), 0);
    ASSERT_EQ(symlink("round", directory.file("round").c_str()), 0);
    ASSERT_TRUE(writeWholeFile(directory.file("link"), "new").ok());
    ASSERT_TRUE(writeWholeFile(directory.file("dangling"), "made").ok());
    EXPECT_TRUE(std::filesystem::is_symlink(directory.file("link")));
    EXPECT_EQ(contentsOf(directory.file("store/real")), "new");
    EXPECT_EQ(contentsOf(directory.file("store/later")), "made");
    EXPECT_FALSE(writeWholeFile(directory.file("round"), "new").ok());
}

// ---- Targets that are no regular files

TEST(AtomicFile, WritesADeviceInPlaceAndReportsThatItIsFull) {
    const Status status = writeWholeFile("/dev/full", "text");
    ASSERT_FALSE(status.ok());
    EXPECT_NE(status.error().find("/dev/full"), std::string::npos);
    EXPECT_NE(status.error().find(causeOf(ENOSPC)), std::string::npos);
    EXPECT_TRUE(writeWholeFile("/dev/null", "text").ok());
    struct stat about = {};
    ASSERT_EQ(stat("/dev/full", &about), 0);
    EXPECT_TRUE(S_ISCHR(about.st_mode));
}

TEST(AtomicFile, WritesAPipeInPlace) {
    const TempDirectory directory;
    const std::string path = directory.file("pipe");
    ASSERT_EQ(mkfifo(path.c_str(), 0666), 0);
    std::string received;
    std::thread reader([&] { received = contentsOf(path); });
    EXPECT_TRUE(writeWholeFile(path, largeContents('p')).ok());
    reader.join();
    EXPECT_EQ(received, largeContents('p'));
    EXPECT_EQ(directory.names(), std::set<std::string>{"pipe"});
}

// ---- Temporary files left behind

TEST(AtomicFile, RemovesTheTemporariesOfDeadProcessesAndNoOthers) {
    const TempDirectory directory;
    const pid_t dead = deadProcess();
    const pid_t living = startChild([] {
        pause();
        return 0;
    });
    const std::set<std::string> stale{temporaryName("table", dead, 0),
                                      temporaryName("table", dead, 17),
                                      temporaryName("table", getpid(), 999'999)};
    const std::set<std::string> others{
        temporaryName("table", living, 0),
        temporaryName("table", getppid(), 0),
        temporaryName("other", dead, 0),
        temporaryName("table", dead, 0) + "x",
        temporaryName("table", dead, 0) + ".bad",
        "table.tmp." + std::to_string(dead),
        "table.tmp." + std::to_string(dead) + ".",
        "table.tmp..0",
        "table.tmp.x.0",
        "table.tmp.0.0",
        "table.tmp.99999999999999999999.0",
        "xtable.tmp." + std::to_string(dead) + ".0",
        "table",
    };
    for (const std::string& name : stale)
        putContents(directory.file(name), "litter");
    for (const std::string& name : others)
        putContents(directory.file(name), "keep");
    const std::string asDirectory = temporaryName("table", dead, 1);
    ASSERT_EQ(mkdir(directory.file(asDirectory).c_str(), 0777), 0);
    const std::string asLink = temporaryName("table", dead, 2);
    ASSERT_EQ(symlink("table", directory.file(asLink).c_str()), 0);

    ASSERT_TRUE(writeWholeFile(directory.file("table"), "new").ok());
    std::set<std::string> expected = others;
    expected.insert({asDirectory, asLink});
    EXPECT_EQ(directory.names(), expected);
    kill(living, SIGKILL);
    waitForChild(living);
}

// In a container that shares the directory the writer lives, but its number means nothing here.
TEST(AtomicFile, SparesALockedTemporaryWhateverItsProcessNumber) {
    const TempDirectory directory;
    const std::string name = temporaryName("table", deadProcess(), 0);
    const int fd = open(directory.file(name).c_str(), O_RDWR | O_CREAT, 0666);
    ASSERT_EQ(flock(fd, LOCK_EX), 0);
    ASSERT_TRUE(writeWholeFile(directory.file("table"), "new").ok());
    EXPECT_EQ(directory.names(), (std::set<std::string>{"table", name}));
    close(fd);
    ASSERT_TRUE(writeWholeFile(directory.file("table"), "newer").ok());
    EXPECT_EQ(directory.names(), std::set<std::string>{"table"});
}

// O_EXCL: a file that happens to bear the next temporary name (also as a link to something
// precious) is never opened, cut or written.
TEST(AtomicFile, NeverOpensATemporaryThatIsAlreadyThere) {
    const TempDirectory directory;
    putContents(directory.file("precious"), "precious");
    std::string firstName;
    {
        FaultyFiles files;
        ASSERT_TRUE(writeWholeFile(directory.file("table"), "x", files).ok());
        for (const FileCall& call : files.log())
            if (call.name == "write")
                firstName = call.path;
    }
    const int number = std::stoi(firstName.substr(firstName.rfind('.') + 1));
    for (int next = number + 1; next < number + 4; ++next)
        ASSERT_EQ(
            symlink("precious", directory.file(temporaryName("table", getpid(), next)).c_str()), 0);
    ASSERT_TRUE(writeWholeFile(directory.file("table"), "new").ok());
    EXPECT_EQ(contentsOf(directory.file("precious")), "precious");
    EXPECT_EQ(contentsOf(directory.file("table")), "new");
    EXPECT_FALSE(std::filesystem::is_symlink(directory.file("table")));
}

// ---- Every call fails in turn

struct Fault {
    int error;
    bool forEver;
};

class AtomicFileFaults : public ::testing::TestWithParam<Fault> {};

// Fails the k-th call for every k until a run meets no fault, over an old file and over none.
TEST_P(AtomicFileFaults, LeaveTheOldFileOrTheNewOneWhole) {
    const auto [error, forEver] = GetParam();
    const std::string fresh = largeContents('n');
    size_t points = 0;
    for (const std::string old : {"(absent)", "the old file"}) {
        for (size_t k = 1;; ++k) {
            const TempDirectory directory;
            const std::string path = directory.file("table");
            if (old != "(absent)")
                putContents(path, old);
            putContents(directory.file(temporaryName("table", getpid(), 999'999)), "litter");
            FaultyFiles files;
            files.failAt(k, error, forEver);
            const Status status = writeInPieces(path, fresh, files);
            if (!files.metFault()) {
                ASSERT_TRUE(status.ok());
                break;
            }
            ++points;
            SCOPED_TRACE("call " + std::to_string(k) + " " + files.log()[k - 1].name);
            const std::string contents = contentsOf(path);
            if (status.ok()) {
                EXPECT_EQ(contents, fresh);
            } else {
                EXPECT_NE(error, EINTR) << "an interrupted call is no failure";
                const bool renamed = files.count("rename") > 0 && !files.failed("rename");
                EXPECT_EQ(contents, renamed ? fresh : old);
                EXPECT_NE(status.error().find(path), std::string::npos) << status.error();
                EXPECT_NE(status.error().find(causeOf(error)), std::string::npos) << status.error();
                EXPECT_EQ(status.error().find('\n'), std::string::npos);
            }
            // What could not be removed now goes when the next writer comes.
            if (!files.failed("unlink") && !files.failed("flock") && !files.failed("fstat") &&
                !files.failed("open") && !files.failed("stat")) {
                std::set<std::string> names = directory.names();
                names.erase("table");
                EXPECT_EQ(names, std::set<std::string>{});
            }
            ASSERT_TRUE(writeWholeFile(path, "afterwards").ok());
            EXPECT_EQ(directory.names(), std::set<std::string>{"table"});
        }
    }
    EXPECT_GT(points, 30u);
}

INSTANTIATE_TEST_SUITE_P(Errors, AtomicFileFaults,
                         ::testing::Values(Fault{ENOSPC, false}, Fault{ENOSPC, true},
                                           Fault{EIO, false}, Fault{EIO, true},
                                           Fault{EDQUOT, false}, Fault{EDQUOT, true},
                                           Fault{EMFILE, false}, Fault{EMFILE, true},
                                           Fault{EINTR, false}),
                         [](const auto& instance) {
                             return std::string(strerrorname_np(instance.param.error)) +
                                    (instance.param.forEver ? "ForEver" : "Once");
                         });

TEST(AtomicFile, CompletesShortWrites) {
    const TempDirectory directory;
    const std::string path = directory.file("table");
    for (const size_t most : {size_t{1}, size_t{7}, size_t{4096}}) {
        FaultyFiles files;
        files.writeAtMost(most);
        const std::string contents = largeContents('s').substr(0, most * 1000 + 1);
        ASSERT_TRUE(writeInPieces(path, contents, files).ok());
        EXPECT_EQ(contentsOf(path), contents);
        EXPECT_GE(files.count("write"), contents.size() / most);
    }
}

// After a failed sync the kernel may drop the data and call the next sync a success.
TEST(AtomicFile, NeverSyncsADescriptorAgainAfterAFailure) {
    const TempDirectory directory;
    const std::string path = directory.file("table");
    putContents(path, "old");
    FaultyFiles files;
    files.failCall("fsync", EIO);
    Result<AtomicFile> file = AtomicFile::create(path, files);
    ASSERT_TRUE(file->write("new").ok());
    const Status first = file->commit();
    ASSERT_FALSE(first.ok());
    const Status second = file->commit();
    ASSERT_FALSE(second.ok());
    EXPECT_EQ(first.error(), second.error());
    EXPECT_EQ(file->write("more").error(), first.error());
    EXPECT_EQ(files.count("fsync"), 1u);
    EXPECT_EQ(files.count("rename"), 0u);
    EXPECT_EQ(contentsOf(path), "old");
    EXPECT_EQ(directory.names(), std::set<std::string>{"table"});
}

// A close that fails is not tried again either: by then the descriptor may be somebody else's.
TEST(AtomicFile, ReportsAFailedClose) {
    const TempDirectory directory;
    const std::string path = directory.file("table");
    FaultyFiles files;
    files.failCall("close", EIO);
    EXPECT_FALSE(writeWholeFile(path, "new", files).ok());
    std::set<int> closed;
    for (const FileCall& call : files.log())
        if (call.name == "close") {
            EXPECT_TRUE(closed.insert(call.fd).second);
        }
    EXPECT_EQ(files.count("rename"), 0u);
    EXPECT_TRUE(directory.names().empty());
}

// ---- The power goes

TEST(AtomicFile, SyncsDataBeforeTheRenameAndTheDirectoryAfterIt) {
    const TempDirectory directory;
    const std::string path = directory.file("table");
    FaultyFiles files;
    ASSERT_TRUE(writeInPieces(path, largeContents('a'), files).ok());
    size_t lastWrite = 0;
    size_t dataSync = 0;
    size_t rename = 0;
    size_t directorySync = 0;
    for (size_t i = 0; i < files.log().size(); ++i) {
        const FileCall& call = files.log()[i];
        if (call.name == "write")
            lastWrite = i;
        if (call.name == "rename")
            rename = i;
        if (call.name == "fsync")
            (call.path == directory.path() ? directorySync : dataSync) = i;
    }
    EXPECT_LT(0u, lastWrite);
    EXPECT_LT(lastWrite, dataSync);
    EXPECT_LT(dataSync, rename);
    EXPECT_LT(rename, directorySync);
    EXPECT_EQ(files.count("fsync"), 2u);
}

// Cuts the power after every call, twenty times each, and looks at what the disk may hold.
TEST(AtomicFile, SurvivesAPowerCutAtAnyCall) {
    std::mt19937 random(20);
    for (const std::string& fresh : {std::string(), std::string("short"), largeContents('n')}) {
        const TempDirectory directory;
        const std::string path = directory.file("table");
        const std::string old = "the old file";
        putContents(path, old);
        PowerLossFiles files;
        size_t states = 0;
        size_t olds = 0;
        size_t news = 0;
        files.afterCall = [&] {
            for (int damage = 0; damage < 20; ++damage, ++states) {
                const auto disk = files.afterPowerLoss(random);
                const auto found = disk.find(path);
                if (found == disk.end())
                    continue; // before the first call the double has not seen the file yet
                olds += found->second == old;
                news += found->second == fresh;
                EXPECT_TRUE(found->second == old || found->second == fresh);
            }
        };
        ASSERT_TRUE(writeInPieces(path, fresh, files).ok());
        EXPECT_GT(states, 100u);
        EXPECT_GT(news, 0u);
        for (int damage = 0; damage < 100; ++damage) {
            const auto disk = files.afterPowerLoss(random);
            EXPECT_EQ(disk.at(path), fresh) << "reported as saved, and lost";
            EXPECT_EQ(disk.size(), 1u);
        }
    }
}

// The double itself: a writer without any sync is caught.
TEST(PowerLossFiles, SpoilWhatWasNotSynced) {
    const TempDirectory directory;
    const std::string path = directory.file("table");
    putContents(path, "old");
    PowerLossFiles files;
    const std::string temporary = directory.file("temporary");
    const int fd = files.open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL, 0666);
    ASSERT_EQ(files.write(fd, "brand-new", 9), 9);
    files.close(fd);
    ASSERT_EQ(files.rename(temporary.c_str(), path.c_str()), 0);
    std::mt19937 random(1);
    std::set<std::string> seen;
    for (int i = 0; i < 400; ++i)
        seen.insert(files.afterPowerLoss(random).at(path));
    EXPECT_TRUE(seen.count("old"));
    EXPECT_TRUE(seen.count("brand-new"));
    EXPECT_TRUE(seen.count(""));
    EXPECT_TRUE(seen.count("bran"));
    EXPECT_TRUE(seen.count(std::string(9, '\0')));
}

// ---- The process is killed

// Killed right before and right after each call: the file is whole, and the next writer finds no
// litter it does not clear.
TEST(AtomicFile, SurvivesAKillAtAnyCall) {
    const TempDirectory directory;
    const std::string path = directory.file("table");
    const std::string old = "the old file";
    const std::string fresh = largeContents('n');
    size_t kills = 0;
    for (const bool after : {false, true}) {
        for (size_t k = 1;; ++k) {
            ASSERT_TRUE(writeWholeFile(path, old).ok());
            const ChildOutcome outcome = runInChild([&] {
                FaultyFiles files;
                const auto killAt = [&](size_t call) {
                    if (call == k)
                        raise(SIGKILL);
                };
                (after ? files.afterCall : files.beforeCall) = killAt;
                return writeInPieces(path, fresh, files).ok() ? 0 : 1;
            });
            const std::string contents = contentsOf(path);
            if (!outcome.killedBy(SIGKILL)) {
                EXPECT_TRUE(outcome.exited(0));
                EXPECT_EQ(contents, fresh);
                break;
            }
            ++kills;
            EXPECT_TRUE(contents == old || contents == fresh) << "call " << k;
            ASSERT_TRUE(writeWholeFile(path, old).ok());
            EXPECT_EQ(directory.names(), std::set<std::string>{"table"}) << "call " << k;
        }
    }
    EXPECT_GT(kills, 20u);
}

// ---- The disk is full

// The limit on file sizes stands for every way in which the disk says no in the middle of a file.
TEST(AtomicFile, ReportsALimitOnFileSizes) {
    const TempDirectory directory;
    const std::string path = directory.file("table");
    const std::string fresh = largeContents('n');
    putContents(path, "old");
    for (const size_t limit : {size_t{0}, size_t{1}, size_t{100'000}, fresh.size() - 1}) {
        const ChildOutcome outcome = runInChild([&] {
            ignoreBrokenPipes();
            const rlimit bound{limit, RLIM_INFINITY};
            setrlimit(RLIMIT_FSIZE, &bound);
            const Status status = writeInPieces(path, fresh, systemFiles());
            if (status.ok())
                return 1;
            if (status.error().find(causeOf(EFBIG)) == std::string::npos)
                return 2;
            const rlimit none{RLIM_INFINITY, RLIM_INFINITY};
            setrlimit(RLIMIT_FSIZE, &none);
            return writeInPieces(path + ".later", fresh, systemFiles()).ok() ? 0 : 3;
        });
        EXPECT_TRUE(outcome.exited(0)) << outcome.status;
        EXPECT_EQ(contentsOf(path), "old");
        EXPECT_EQ(contentsOf(path + ".later"), fresh);
        EXPECT_EQ(directory.names(), (std::set<std::string>{"table", "table.later"}));
    }
}

// A real file system of limited size, where the kernel lets us mount one.
TEST(AtomicFile, ReportsAFullDisk) {
    const TempDirectory directory;
    const std::string fresh = largeContents('n');
    constexpr int notPossible = 77;
    const ChildOutcome outcome = runInChild([&] {
        const std::string identity = "0 " + std::to_string(getuid()) + " 1";
        const std::string group = "0 " + std::to_string(getgid()) + " 1";
        if (unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0)
            return notPossible;
        putContents("/proc/self/setgroups", "deny");
        putContents("/proc/self/uid_map", identity);
        putContents("/proc/self/gid_map", group);
        int failures = 0;
        int successes = 0;
        for (size_t step = 1; step <= 64; ++step) {
            const size_t size = 2 * fresh.size() * 11 / 10 * step / 64; // the old file needs room
            const std::string options = "size=" + std::to_string(size);
            if (mount("tmpfs", directory.path().c_str(), "tmpfs", 0, options.c_str()) != 0)
                return notPossible;
            const std::string path = directory.file("table");
            const bool hadOld = writeWholeFile(path, largeContents('o')).ok();
            const Status status = writeInPieces(path, fresh, systemFiles());
            const std::string expected = status.ok() ? fresh
                                         : hadOld    ? largeContents('o')
                                                     : "(absent)";
            if (contentsOf(path) != expected)
                return 1;
            if (!status.ok() && status.error().find(causeOf(ENOSPC)) == std::string::npos) {
                std::fprintf(stderr, "%s\n", status.error().c_str());
                return 2;
            }
            if (directory.names().size() != (expected == "(absent)" ? 0 : 1))
                return 3;
            ++(status.ok() ? successes : failures);
            if (umount(directory.path().c_str()) != 0)
                return 4;
        }
        return failures > 10 && successes > 2 ? 0 : 5;
    });
    if (outcome.exited(notPossible))
        GTEST_SKIP() << "no right to mount a file system of limited size";
    EXPECT_TRUE(outcome.exited(0)) << outcome.status << outcome.errors;
}

} // namespace
} // namespace tamarin::test
