#include "support/file.h"

#include "support/child_process.h"
#include "support/faulty_files.h"
#include "support/temp_directory.h"

#include <algorithm>
#include <atomic>
#include <sys/stat.h>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

bool contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

// ---- Reading whole files

TEST(ReadWholeFile, ReturnsTheBytes) {
    const TempDirectory directory;
    const std::string path = directory.file("name with spaces and \xc3\xbc");
    for (const std::string& contents :
         {std::string(), std::string("a\0b\n", 4), std::string(100'000, 'x')}) {
        putContents(path, contents);
        const Result<std::string> read = readWholeFile(path);
        ASSERT_TRUE(read.ok()) << read.error();
        EXPECT_EQ(*read, contents);
    }
}

TEST(ReadWholeFile, RefusesMoreThanTheLimit) {
    const TempDirectory directory;
    const std::string path = directory.file("file");
    putContents(path, std::string(1000, 'x'));
    EXPECT_TRUE(readWholeFile(path, 1000).ok());
    const Result<std::string> read = readWholeFile(path, 999);
    ASSERT_FALSE(read.ok());
    EXPECT_TRUE(contains(read.error(), path));
    EXPECT_TRUE(contains(read.error(), "999"));
}

// Such files say that their size is 0.
TEST(ReadWholeFile, ReadsFilesThatTheKernelMakesUp) {
    const Result<std::string> read = readWholeFile("/proc/self/status");
    ASSERT_TRUE(read.ok()) << read.error();
    EXPECT_TRUE(contains(*read, "Name:"));
    EXPECT_FALSE(readWholeFile("/proc/self/status", 10).ok());
}

// Each foreign thing is refused with a line that names it, and none of them hangs.
TEST(ReadWholeFile, RefusesWhatIsNoRegularFile) {
    const TempDirectory directory;
    ASSERT_EQ(mkfifo(directory.file("pipe").c_str(), 0666), 0);
    ASSERT_EQ(symlink("nowhere", directory.file("dangling").c_str()), 0);
    ASSERT_EQ(symlink("round", directory.file("round").c_str()), 0);
    for (const std::string& path :
         {directory.path(), directory.file("pipe"), directory.file("dangling"),
          directory.file("round"), directory.file("missing"), std::string("/dev/zero"),
          std::string(5000, 'n')}) {
        const Result<std::string> read = readWholeFile(path);
        ASSERT_FALSE(read.ok()) << path;
        EXPECT_TRUE(contains(read.error(), path));
        const Result<MappedFile> mapped = MappedFile::open(path);
        ASSERT_FALSE(mapped.ok()) << path;
        EXPECT_TRUE(contains(mapped.error(), path));
    }
}

TEST(ReadWholeFile, RefusesOrReadsAfterAFaultOfEachCall) {
    const TempDirectory directory;
    const std::string path = directory.file("file");
    const std::string contents(50'000, 'x');
    putContents(path, contents);
    for (const int error : {EIO, ENOSPC, EMFILE, EINTR}) {
        for (size_t k = 1;; ++k) {
            FaultyFiles files;
            files.failAt(k, error);
            const Result<std::string> read = readWholeFile(path, 1 << 20, files);
            if (read.ok())
                EXPECT_EQ(*read, contents);
            else
                EXPECT_NE(error, EINTR);
            if (!files.metFault()) {
                EXPECT_TRUE(read.ok());
                EXPECT_GT(k, 4u);
                break;
            }
        }
    }
}

// ---- Mapped files

TEST(MappedFile, ShowsTheBytes) {
    const TempDirectory directory;
    const std::string path = directory.file("table");
    const double numbers[] = {1.5, -2.25, 1e300};
    putContents(path, std::string(reinterpret_cast<const char*>(numbers), sizeof numbers));
    const Result<MappedFile> mapped = MappedFile::open(path, sizeof numbers);
    ASSERT_TRUE(mapped.ok()) << mapped.error();
    EXPECT_EQ(mapped->size(), sizeof numbers);
    const std::span<const double> view = mapped->as<double>();
    ASSERT_EQ(view.size(), 3u);
    EXPECT_EQ(view[0], 1.5);
    EXPECT_EQ(view[2], 1e300);
}

TEST(MappedFile, ShowsTheSameBytesAfterForgettingTheirPages) {
    const TempDirectory directory;
    const std::string path = directory.file("table");
    const std::vector<double> numbers(10'000, 0.25);
    putContents(path, std::string(reinterpret_cast<const char*>(numbers.data()),
                                  numbers.size() * sizeof(double)));
    const Result<MappedFile> mapped = MappedFile::open(path);
    ASSERT_TRUE(mapped.ok());
    EXPECT_EQ(mapped->as<double>()[9'999], 0.25);
    mapped->forgetPages();
    EXPECT_TRUE(std::ranges::equal(mapped->as<double>(), numbers));
}

TEST(MappedFile, ShowsAnEmptyFile) {
    const TempDirectory directory;
    putContents(directory.file("empty"), "");
    const Result<MappedFile> mapped = MappedFile::open(directory.file("empty"));
    ASSERT_TRUE(mapped.ok());
    EXPECT_EQ(mapped->size(), 0u);
    EXPECT_TRUE(mapped->bytes().empty());
    EXPECT_TRUE(MappedFile::open(directory.file("empty"), 0).ok());
}

TEST(MappedFile, MovesItsMapping) {
    const TempDirectory directory;
    putContents(directory.file("a"), "aaaa");
    putContents(directory.file("b"), "bb");
    Result<MappedFile> a = MappedFile::open(directory.file("a"));
    Result<MappedFile> b = MappedFile::open(directory.file("b"));
    MappedFile moved(std::move(*a));
    EXPECT_EQ(moved.size(), 4u);
    moved = std::move(*b);
    EXPECT_EQ(moved.size(), 2u);
    EXPECT_EQ(static_cast<char>(moved.bytes()[1]), 'b');
}

// A file cut or grown by any amount is refused by its size alone.
TEST(MappedFile, RefusesEveryOtherSize) {
    const TempDirectory directory;
    const std::string path = directory.file("table");
    constexpr size_t expected = 4096;
    putContents(path, std::string(3 * expected, 'x'));
    size_t refused = 0;
    for (size_t size = 2 * expected + 1; size-- > 0;) {
        ASSERT_EQ(truncate(path.c_str(), static_cast<off_t>(size)), 0);
        const Result<MappedFile> mapped = MappedFile::open(path, expected);
        ASSERT_EQ(mapped.ok(), size == expected) << size;
        if (mapped.ok())
            continue;
        ++refused;
        EXPECT_EQ(mapped.error(), path + " has " + std::to_string(size) + " bytes, not 4096");
    }
    EXPECT_EQ(refused, 2 * expected);
}

TEST(MappedFile, FailsOrMapsAfterAFaultOfEachCall) {
    const TempDirectory directory;
    const std::string path = directory.file("table");
    putContents(path, "12345678");
    for (const int error : {EIO, ENOMEM, EINTR}) {
        for (size_t k = 1;; ++k) {
            FaultyFiles files;
            files.failAt(k, error);
            const Result<MappedFile> mapped = MappedFile::open(path, 8, files);
            if (!mapped.ok())
                EXPECT_TRUE(contains(mapped.error(), path));
            else
                EXPECT_EQ(static_cast<char>(mapped->bytes()[7]), '8');
            if (!files.metFault()) {
                EXPECT_TRUE(mapped.ok());
                break;
            }
        }
    }
}

TEST(MappedFile, KeepsItsBytesWhenTheFileIsReplaced) {
    const TempDirectory directory;
    const std::string path = directory.file("table");
    putContents(path, std::string(100'000, 'a'));
    const Result<MappedFile> mapped = MappedFile::open(path);
    ASSERT_TRUE(writeWholeFile(path, "b").ok());
    for (const std::byte byte : mapped->bytes())
        ASSERT_EQ(static_cast<char>(byte), 'a');
    ASSERT_EQ(unlink(path.c_str()), 0);
    EXPECT_EQ(static_cast<char>(mapped->bytes()[99'999]), 'a');
}

// Readers of a table that is rebuilt again and again see one generation or another, never a
// mixture.
TEST(MappedFile, IsOfOneGenerationUnderReplacement) {
    const TempDirectory directory;
    const std::string path = directory.file("table");
    constexpr size_t size = 50'000;
    ASSERT_TRUE(writeWholeFile(path, std::string(size, 'a')).ok());
    std::atomic<bool> stop{false};
    std::atomic<int> views{0};
    std::atomic<int> bad{0};
    std::vector<std::thread> readers;
    for (int i = 0; i < 4; ++i)
        readers.emplace_back([&] {
            while (!stop) {
                const Result<MappedFile> mapped = MappedFile::open(path, size);
                if (!mapped.ok()) {
                    ++bad;
                    continue;
                }
                const auto bytes = mapped->bytes();
                for (const std::byte byte : bytes)
                    if (byte != bytes[0]) {
                        ++bad;
                        break;
                    }
                ++views;
            }
        });
    for (int generation = 1; generation <= 100; ++generation)
        EXPECT_TRUE(
            writeWholeFile(path, std::string(size, static_cast<char>('a' + generation % 26))).ok());
    while (views < 100)
        std::this_thread::yield();
    stop = true;
    for (std::thread& reader : readers)
        reader.join();
    EXPECT_EQ(bad, 0);
}

// ---- Directories and bad files

TEST(MakeDirectories, MakesAllThatIsMissing) {
    const TempDirectory directory;
    const std::string deep = directory.file("a/b/c");
    ASSERT_TRUE(makeDirectories(deep).ok());
    EXPECT_TRUE(std::filesystem::is_directory(deep));
    EXPECT_TRUE(makeDirectories(deep).ok());
    EXPECT_TRUE(makeDirectories(deep + "/").ok());
    EXPECT_TRUE(makeDirectories(directory.file("a//d")).ok());
    EXPECT_TRUE(std::filesystem::is_directory(directory.file("a/d")));
    EXPECT_TRUE(makeDirectories(".").ok());
    EXPECT_TRUE(makeDirectories("/").ok());
}

// A directory's name is on the disk only once its parent is.
TEST(MakeDirectories, SyncsEachNewNameIntoItsParent) {
    const TempDirectory directory;
    FaultyFiles files;
    ASSERT_TRUE(makeDirectories(directory.file("a/b"), files).ok());
    std::vector<std::string> made;
    for (const FileCall& call : files.log())
        if (call.error == 0 && (call.name == "mkdir" || call.name == "fsync"))
            made.push_back(call.name + " " + call.path);
    EXPECT_EQ(made, (std::vector<std::string>{
                        "mkdir " + directory.file("a"), "fsync " + directory.path(),
                        "mkdir " + directory.file("a/b"), "fsync " + directory.file("a")}));
    FaultyFiles again;
    ASSERT_TRUE(makeDirectories(directory.file("a/b"), again).ok());
    EXPECT_EQ(again.count("fsync"), 0u);
}

TEST(MakeDirectories, SaysWhatIsInTheWay) {
    const TempDirectory directory;
    putContents(directory.file("file"), "x");
    for (const char* name : {"file", "file/below"}) {
        const Status status = makeDirectories(directory.file(name));
        ASSERT_FALSE(status.ok());
        EXPECT_TRUE(contains(status.error(), directory.file("file")));
    }
    EXPECT_FALSE(makeDirectories("").ok());
    EXPECT_FALSE(makeDirectories("/proc/no/such").ok());
}

TEST(SetAsideBadFile, KeepsTheFileForAPerson) {
    const TempDirectory directory;
    putContents(directory.file("table"), "bad");
    const auto aside = setAsideBadFile(directory.file("table"));
    ASSERT_TRUE(aside.ok()) << aside.error();
    EXPECT_EQ(*aside, directory.file("table.bad"));
    EXPECT_EQ(directory.names(), std::set<std::string>{"table.bad"});
    EXPECT_EQ(contentsOf(directory.file("table.bad")), "bad");
    const auto gone = setAsideBadFile(directory.file("table"));
    ASSERT_FALSE(gone.ok());
    EXPECT_TRUE(contains(gone.error(), directory.file("table")));
}

// A second bad file once replaced the first, which had been good.
TEST(SetAsideBadFile, ReplacesNothing) {
    const TempDirectory directory;
    const std::vector<std::string> names = {"table.bad", "table.bad.2", "table.bad.3"};
    for (const std::string& name : names) {
        putContents(directory.file("table"), "for " + name);
        const auto aside = setAsideBadFile(directory.file("table"));
        ASSERT_TRUE(aside.ok()) << aside.error();
        EXPECT_EQ(*aside, directory.file(name));
    }
    EXPECT_EQ(directory.names(), (std::set<std::string>(names.begin(), names.end())));
    for (const std::string& name : names)
        EXPECT_EQ(contentsOf(directory.file(name)), "for " + name);
    // Nor what a name points to, though there is nothing.
    ASSERT_EQ(symlink("nowhere", directory.file("other.bad").c_str()), 0);
    putContents(directory.file("other"), "bad");
    EXPECT_EQ(*setAsideBadFile(directory.file("other")), directory.file("other.bad.2"));
}

TEST(KeepBeside, LeavesTheFileInPlaceUntilItIsReplaced) {
    const TempDirectory directory;
    const std::string path = directory.file("strategy");
    putContents(path, "old");
    putContents(path + ".bad", "older");
    const auto kept = keepBeside(path);
    ASSERT_TRUE(kept.ok()) << kept.error();
    EXPECT_EQ(*kept, path + ".bad.2");
    EXPECT_EQ(contentsOf(path), "old");
    ASSERT_TRUE(writeWholeFile(path, "new").ok());
    EXPECT_EQ(contentsOf(path), "new");
    EXPECT_EQ(contentsOf(path + ".bad.2"), "old");
    EXPECT_EQ(contentsOf(path + ".bad"), "older");
    const std::string absent = directory.file("absent");
    EXPECT_EQ(keepBeside(absent).error(),
              absent + ": could not move it to " + absent + ".bad: No such file or directory");
}

// A directory has no second name anywhere, and stands for all files where there are no hard links.
TEST(KeepBeside, MovesWhatCanHaveNoSecondName) {
    const TempDirectory directory;
    const std::string path = directory.file("strategy");
    ASSERT_TRUE(makeDirectories(path + "/inside").ok());
    putContents(path + ".bad", "older");
    const auto kept = keepBeside(path);
    ASSERT_TRUE(kept.ok()) << kept.error();
    EXPECT_EQ(*kept, path + ".bad.2");
    EXPECT_EQ(directory.names(), (std::set<std::string>{"strategy.bad", "strategy.bad.2"}));
    EXPECT_EQ(contentsOf(path + ".bad"), "older");
}

TEST(KeepBeside, KeepsWhatALinkLeadsTo) {
    const TempDirectory directory;
    putContents(directory.file("far"), "old");
    ASSERT_EQ(symlink("far", directory.file("strategy").c_str()), 0);
    ASSERT_TRUE(keepBeside(directory.file("strategy")).ok());
    ASSERT_TRUE(writeWholeFile(directory.file("strategy"), "new").ok()); // behind the link
    EXPECT_EQ(contentsOf(directory.file("far")), "new");
    EXPECT_EQ(contentsOf(directory.file("strategy.bad")), "old");
}

} // namespace
} // namespace tamarin::test
