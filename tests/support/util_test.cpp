#include "support/util.h"

#include "support/child_process.h"
#include "support/faulty_files.h"
#include "support/interrupt.h"
#include "support/temp_directory.h"

#include <cfloat>
#include <cmath>
#include <cstring>
#include <limits>
#include <memory>
#include <sstream>
#include <sys/resource.h>
#include <sys/stat.h>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

namespace tamarin::test {
namespace {

// ---- Table files

TEST(TableFiles, KeepAllBits) {
    const TempDirectory directory;
    const std::string path = directory.file("table");
    int ints[] = {0, -1, 1, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()};
    saveIntTable(path.c_str(), ints, std::size(ints));
    const std::unique_ptr<int[]> intsBack(loadIntTable(path.c_str(), std::size(ints)));
    EXPECT_EQ(std::memcmp(ints, intsBack.get(), sizeof ints), 0);

    uint8_t bytes[256];
    for (size_t i = 0; i < sizeof bytes; ++i)
        bytes[i] = static_cast<uint8_t>(i);
    saveByteTable(path.c_str(), bytes, sizeof bytes);
    const std::unique_ptr<uint8_t[]> bytesBack(loadByteTable(path.c_str(), sizeof bytes));
    EXPECT_EQ(std::memcmp(bytes, bytesBack.get(), sizeof bytes), 0);

    double doubles[] = {0.0, -0.0, 1.0 / 3, DBL_MAX, DBL_MIN, 5e-324, INFINITY, NAN};
    saveDoubleTable(path.c_str(), doubles, std::size(doubles));
    const std::unique_ptr<double[]> doublesBack(loadDoubleTable(path.c_str(), std::size(doubles)));
    EXPECT_EQ(std::memcmp(doubles, doublesBack.get(), sizeof doubles), 0);
}

// No header, no count, the machine's own byte order.
TEST(TableFiles, AreBareArrays) {
    const TempDirectory directory;
    const std::string path = directory.file("table");
    int ints[] = {1, -2};
    saveIntTable(path.c_str(), ints, 2);
    EXPECT_EQ(contentsOf(path), std::string("\x01\0\0\0\xfe\xff\xff\xff", 8));
    double doubles[] = {1.0};
    saveDoubleTable(path.c_str(), doubles, 1);
    EXPECT_EQ(contentsOf(path), std::string("\0\0\0\0\0\0\xf0\x3f", 8));
    saveByteTable(path.c_str(), nullptr, 0);
    EXPECT_EQ(contentsOf(path), "");
}

TEST(TableFiles, AreFollowedByZerosWhenTheyAreShort) {
    const TempDirectory directory;
    const std::string path = directory.file("table");
    int ints[] = {7, 8, 9};
    saveIntTable(path.c_str(), ints, 3);
    // Memory that was used before, so that zeros are not there by luck.
    for (int round = 0; round < 3; ++round) {
        auto* used = new int[6];
        std::memset(used, 0xEE, 6 * sizeof(int));
        delete[] used;
        const std::unique_ptr<int[]> table(loadIntTable(path.c_str(), 6));
        EXPECT_EQ(std::vector<int>(table.get(), table.get() + 6),
                  (std::vector<int>{7, 8, 9, 0, 0, 0}));
    }
}

TEST(TableFiles, LongerThanAskedForAreReadInPart) {
    const TempDirectory directory;
    const std::string path = directory.file("table");
    int ints[] = {7, 8, 9};
    saveIntTable(path.c_str(), ints, 3);
    const std::unique_ptr<int[]> table(loadIntTable(path.c_str(), 2));
    EXPECT_EQ(table[1], 8);
}

TEST(TableFiles, CountATornElementAsMissing) {
    const TempDirectory directory;
    const std::string path = directory.file("table");
    putContents(path, std::string(11, '\x01'));
    const std::unique_ptr<int[]> table(loadIntTable(path.c_str(), 4));
    EXPECT_EQ(table[1], 0x01010101);
    EXPECT_EQ(table[2], 0);
    EXPECT_EQ(table[3], 0);
}

TEST(TableFiles, AreAllZeroWithAWarningWhenTheyCannotBeRead) {
    const TempDirectory directory;
    for (const std::string& path : {directory.file("missing"), directory.path()}) {
        ::testing::internal::CaptureStderr();
        const std::unique_ptr<double[]> table(loadDoubleTable(path.c_str(), 100));
        const std::string said = ::testing::internal::GetCapturedStderr();
        for (int i = 0; i < 100; ++i)
            EXPECT_EQ(table[static_cast<size_t>(i)], 0.0);
        EXPECT_NE(said.find(path), std::string::npos);
        EXPECT_EQ(std::count(said.begin(), said.end(), '\n'), 1);
    }
}

TEST(TableFiles, OfNoElementsCanBeLoaded) {
    const std::unique_ptr<int[]> table(loadIntTable("/dev/null", 0));
    EXPECT_NE(table, nullptr);
}

// A save that fails in any way ends by the assertion of its kind, after a line with the cause.
TEST(TableFilesDeathTest, FailToBeSavedByAssertion) {
    int ints[] = {1};
    uint8_t bytes[] = {1};
    double doubles[] = {1};
    EXPECT_DEATH(saveIntTable("/dev/full", ints, 1),
                 "ERROR: /dev/full: .*No space left on device.*\n.*util.*: "
                 "void saveIntTable\\(const char\\*, int\\*, size_t\\): Assertion "
                 "`fwrite\\(arr, sizeof \\(int\\), size, file\\)==size' failed\\.");
    EXPECT_DEATH(saveByteTable("/dev/full", bytes, 1),
                 "/dev/full.*\n.*util.*: "
                 "void saveByteTable\\(const char\\*, uint8_t\\*, size_t\\): Assertion "
                 "`fwrite\\(arr, sizeof \\(uint8_t\\), size, file\\)==size' failed\\.");
    EXPECT_DEATH(saveDoubleTable("/dev/full", doubles, 1),
                 "/dev/full.*\n.*util.*: "
                 "void saveDoubleTable\\(const char\\*, double\\*, size_t\\): Assertion "
                 "`fwrite\\(arr, sizeof \\(double\\), size, file\\)==size' failed\\.");
    EXPECT_DEATH(saveIntTable("/no/such/directory/table", ints, 1),
                 "/no/such/directory/table: .*No such file or directory.*\n.*fwrite");
}

TEST(TableFiles, KeepTheOldOneWhenTheDiskIsFull) {
    const TempDirectory directory;
    const std::string path = directory.file("table");
    std::vector<int> old(10, 5);
    saveIntTable(path.c_str(), old.data(), old.size());
    const ChildOutcome outcome = runInChild([&] {
        ignoreBrokenPipes();
        const rlimit none{0, 0};
        setrlimit(RLIMIT_CORE, &none);
        const rlimit bound{100'000, RLIM_INFINITY};
        setrlimit(RLIMIT_FSIZE, &bound);
        std::vector<int> table(1'000'000, 6);
        saveIntTable(path.c_str(), table.data(), table.size());
        return 0;
    });
    EXPECT_TRUE(outcome.killedBy(SIGABRT));
    EXPECT_NE(outcome.errors.find(path + ": could not write: File too large"), std::string::npos);
    EXPECT_EQ(directory.names(), std::set<std::string>{"table"});
    const std::unique_ptr<int[]> table(loadIntTable(path.c_str(), 10));
    EXPECT_EQ(table[9], 5);
}

TEST(SaveTable, ReportsEachFaultAndKeepsTheOldTable) {
    const TempDirectory directory;
    const std::string path = directory.file("table");
    for (size_t k = 1;; ++k) {
        putContents(path, "old");
        FaultyFiles files;
        files.failAt(k, EIO, true);
        const Status status = saveTable(path.c_str(), "newer", 5, files);
        const bool renamed = files.count("rename") > 0 && !files.failed("rename");
        EXPECT_EQ(contentsOf(path), renamed ? "newer" : "old");
        if (!files.metFault()) {
            EXPECT_TRUE(status.ok());
            break;
        }
    }
}

// ---- Names and strings

TEST(FileExist, KnowsEveryKindOfFile) {
    const TempDirectory directory;
    putContents(directory.file("file"), "");
    ASSERT_EQ(symlink("nowhere", directory.file("dangling").c_str()), 0);
    EXPECT_TRUE(file_exist(directory.path()));
    EXPECT_TRUE(file_exist(directory.file("file")));
    EXPECT_TRUE(file_exist("/dev/null"));
    EXPECT_FALSE(file_exist(directory.file("missing")));
    EXPECT_FALSE(file_exist(directory.file("dangling")));
    EXPECT_FALSE(file_exist(""));
}

using Pieces = std::vector<std::string>;

TEST(Split, KeepsEmptyPiecesButNotOneAtTheEnd) {
    EXPECT_EQ(split("a,,b", ','), (Pieces{"a", "", "b"}));
    EXPECT_EQ(split("a,", ','), (Pieces{"a"}));
    EXPECT_EQ(split("", ','), Pieces{});
    EXPECT_EQ(split(",", ','), (Pieces{""}));
    EXPECT_EQ(split(",a", ','), (Pieces{"", "a"}));
    EXPECT_EQ(split("a,,", ','), (Pieces{"a", ""}));
    EXPECT_EQ(split("a b", ','), (Pieces{"a b"}));
    EXPECT_EQ(split(std::string("a\0b", 3), '\0'), (Pieces{"a", "b"}));
}

TEST(Split, AppendsToTheGivenList) {
    Pieces pieces{"before"};
    EXPECT_EQ(&split("a,b", ',', pieces), &pieces);
    EXPECT_EQ(pieces, (Pieces{"before", "a", "b"}));
}

// Piece by piece from a stream, which is how the rule about the end came about.
RC_GTEST_PROP(Split, ReadsAsAStreamDoes, ()) {
    const auto text = *rc::gen::container<std::string>(rc::gen::elementOf(std::string("ab,,\n ")));
    Pieces expected;
    std::istringstream stream(text);
    for (std::string piece; std::getline(stream, piece, ',');)
        expected.push_back(piece);
    RC_ASSERT(split(text, ',') == expected);
}

// ---- k-means

struct Points {
    std::vector<std::vector<double>> values;
    std::vector<double*> rows;

    explicit Points(std::vector<std::vector<double>> points) : values(std::move(points)) {
        for (auto& point : values)
            rows.push_back(point.data());
    }
    double** data() { return rows.data(); }
    int n() const { return static_cast<int>(values.size()); }
    int m() const { return static_cast<int>(values[0].size()); }
};

std::vector<int> labelsOf(Points& points, int k, double t, Points* centroids = nullptr) {
    uint8_t* labels = k_means(points.data(), points.n(), points.m(), k, t,
                              centroids ? centroids->data() : nullptr);
    std::vector<int> list(labels, labels + points.n());
    std::free(labels);
    return list;
}

TEST(KMeans, FindsTwoHeaps) {
    Points points({{0, 0}, {0, 1}, {1, 0}, {10, 10}, {10, 11}, {11, 10}});
    Points centroids(std::vector<std::vector<double>>(2, std::vector<double>(2)));
    EXPECT_EQ(labelsOf(points, 2, 0, &centroids), (std::vector<int>{0, 0, 0, 1, 1, 1}));
    EXPECT_DOUBLE_EQ(centroids.values[0][0], 1.0 / 3);
    EXPECT_DOUBLE_EQ(centroids.values[1][1], 31.0 / 3);
    EXPECT_EQ(labelsOf(points, 2, 0), (std::vector<int>{0, 0, 0, 1, 1, 1}));
}

TEST(KMeans, WithAClusterForEachPointKeepsThemApart) {
    Points points({{5}, {1}, {4}, {2}, {3}});
    for (const double t : {0.0, DBL_MAX}) // to the end, and after the first pass alone
        EXPECT_EQ(labelsOf(points, 5, t), (std::vector<int>{0, 1, 2, 3, 4}));
}

TEST(KMeans, GivesATieToTheFirstCluster) {
    Points points({{0}, {1}, {2}, {2}});
    EXPECT_EQ(labelsOf(points, 2, DBL_MAX), (std::vector<int>{0, 0, 1, 1}));
}

TEST(KMeans, MovesAnEmptyClusterToTheOrigin) {
    Points points({{5, 7}, {5, 7}, {5, 7}});
    Points centroids(std::vector<std::vector<double>>(2, std::vector<double>(2, 99)));
    EXPECT_EQ(labelsOf(points, 2, 0, &centroids), (std::vector<int>{0, 0, 0}));
    EXPECT_EQ(centroids.values[0], (std::vector<double>{5, 7}));
    EXPECT_EQ(centroids.values[1], (std::vector<double>{0, 0}));
}

// The whole method once more, word for word, on plain vectors; counts the passes.
std::vector<int> slowKMeans(const std::vector<std::vector<double>>& data, size_t k, double t,
                            std::vector<std::vector<double>>& centroids) {
    const size_t n = data.size();
    const size_t m = data[0].size();
    std::vector<int> labels(n);
    centroids.clear();
    for (size_t i = 0; i < k; ++i)
        centroids.push_back(data[i * (n / k)]);
    double error = DBL_MAX;
    for (;;) {
        const double old = error;
        error = 0;
        std::vector<std::vector<size_t>> members(k);
        for (size_t h = 0; h < n; ++h) {
            std::vector<double> distances;
            for (size_t i = 0; i < k; ++i) {
                double distance = 0;
                for (size_t j = m; j-- > 0;)
                    distance += std::pow(data[h][j] - centroids[i][j], 2);
                distances.push_back(distance);
            }
            const auto least = std::min_element(distances.begin(), distances.end());
            labels[h] = static_cast<int>(least - distances.begin());
            members[static_cast<size_t>(labels[h])].push_back(h);
            error += *least;
        }
        for (size_t i = 0; i < k; ++i)
            for (size_t j = 0; j < m; ++j) {
                double sum = 0;
                for (const size_t h : members[i])
                    sum += data[h][j];
                centroids[i][j] = members[i].empty() ? sum : sum / double(members[i].size());
            }
        if (std::fabs(error - old) <= t)
            return labels;
    }
}

RC_GTEST_PROP(KMeans, AgreesWithThePlainForm, ()) {
    const auto n = *rc::gen::inRange<size_t>(1, 40);
    const auto m = *rc::gen::inRange<size_t>(1, 5);
    const auto k = *rc::gen::inRange<size_t>(1, n + 1);
    // A positive threshold: with an empty cluster thrown to the origin the error may go in circles.
    const double t = *rc::gen::elementOf(std::vector<double>{1e-9, 0.5, 50, DBL_MAX});
    std::vector<std::vector<double>> values;
    for (size_t i = 0; i < n; ++i) {
        std::vector<double> point;
        for (size_t j = 0; j < m; ++j)
            point.push_back(*rc::gen::inRange(-50, 50) / 7.0);
        values.push_back(point);
    }
    Points points(values);
    Points centroids(std::vector<std::vector<double>>(k, std::vector<double>(m)));
    std::vector<std::vector<double>> slowCentroids;
    const std::vector<int> slowLabels = slowKMeans(values, k, t, slowCentroids);
    RC_ASSERT(labelsOf(points, static_cast<int>(k), t, &centroids) == slowLabels);
    RC_ASSERT(centroids.values == slowCentroids);
    RC_ASSERT(points.values == values);
}

TEST(KMeans, EndsOnPointsThatAreNotFinite) {
    Points points({{NAN}, {INFINITY}, {1}, {2}});
    EXPECT_EQ(labelsOf(points, 2, 0).size(), 4u);
}

TEST(KMeansDeathTest, RefusesBadArguments) {
    Points points({{1}, {2}});
    const char* const text =
        "util.*: uint8_t\\* k_means\\(double\\*\\*, int, int, int, double, double\\*\\*\\): "
        "Assertion `data && k > 0 && k <= n && m > 0 && t >= 0' failed\\.";
    EXPECT_DEATH(k_means(nullptr, 2, 1, 1, 0, nullptr), text);
    EXPECT_DEATH(k_means(points.data(), 2, 1, 0, 0, nullptr), text);
    EXPECT_DEATH(k_means(points.data(), 2, 1, -1, 0, nullptr), text);
    EXPECT_DEATH(k_means(points.data(), 2, 1, 3, 0, nullptr), text);
    EXPECT_DEATH(k_means(points.data(), 2, 0, 1, 0, nullptr), text);
    EXPECT_DEATH(k_means(points.data(), 2, 1, 1, -0.5, nullptr), text);
    EXPECT_DEATH(k_means(points.data(), 2, 1, 1, NAN, nullptr), text);
}

} // namespace
} // namespace tamarin::test
