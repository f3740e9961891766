#include "report/convergence.h"

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

// Two runs, the second of which begins to count its seconds anew, and two measures.
constexpr const char* twoRuns =
    "{\"iteration\":1,\"seconds\":0.5,\"iterationsPerSecond\":2.0,\"averageRegret\":3.5}\n"
    "{\"iteration\":8,\"seconds\":4.0,\"iterationsPerSecond\":2.0,\"averageRegret\":1.25}\n"
    "{\"iteration\":8,\"seconds\":4.0,\"exploitability\":410.5,\"interval95\":22.5}\n"
    "{\"iteration\":9,\"seconds\":0.25,\"iterationsPerSecond\":4.0,\"averageRegret\":1.0}\n";

std::string refusal(std::string_view text) {
    const auto read = readConvergence("run/log", text);
    return read ? "" : read.error();
}

TEST(Convergence, IsReadByMeasure) {
    const auto curves = readConvergence("run/log", twoRuns);
    ASSERT_TRUE(curves.ok());
    ASSERT_EQ(curves->size(), 2U);
    const ConvergenceCurve& regret = (*curves)[0];
    EXPECT_EQ(regret.log, "run/log");
    EXPECT_EQ(regret.measure, ConvergenceMeasure::averageRegret);
    ASSERT_EQ(regret.points.size(), 3U);
    EXPECT_EQ(regret.points[1].iteration, 8U);
    EXPECT_EQ(regret.points[1].seconds, 4.0);
    EXPECT_EQ(regret.points[1].value, 1.25);
    EXPECT_FALSE(regret.points[1].interval95);
    EXPECT_EQ(regret.points[2].seconds, 4.25);
    const ConvergenceCurve& real = (*curves)[1];
    EXPECT_EQ(real.measure, ConvergenceMeasure::exploitability);
    ASSERT_EQ(real.points.size(), 1U);
    EXPECT_EQ(real.points[0].value, 410.5);
    EXPECT_EQ(real.points[0].interval95, 22.5);

    const auto small = readConvergence(
        "l", "{\"iteration\":9,\"seconds\":0.1,\"nashConv\":0.2,\"gain\":[0.1],\"value\":[0]}");
    ASSERT_TRUE(small.ok());
    EXPECT_EQ((*small)[0].measure, ConvergenceMeasure::nashConv);
    EXPECT_EQ((*small)[0].points[0].value, 0.2);
}

TEST(Convergence, RefusesWhatIsNoLog) {
    const std::string good = "{\"iteration\":1,\"seconds\":0.5,\"averageRegret\":3.5}\n";
    EXPECT_EQ(refusal(good), "");
    EXPECT_EQ(refusal(good + "{\"iteration\":2,\"seconds\":0.75,\"avera"), ""); // being written
    EXPECT_EQ(refusal(""), "run/log: there is no step of a training in it");
    EXPECT_EQ(refusal("{\"iteration\":2"), "run/log: there is no step of a training in it");
    const std::string second = "run/log:2: not a line of a training's log";
    EXPECT_EQ(refusal(good + "nonsense\n"), second);
    EXPECT_EQ(refusal(good + "\n" + good), second);
    EXPECT_EQ(refusal(good + "[1,2]\n"), second);
    EXPECT_EQ(refusal(good + "{\"iteration\":2,\"seconds\":1}\n"), second);
    EXPECT_EQ(refusal(good + "{\"iteration\":-2,\"seconds\":1,\"nashConv\":1}\n"), second);
    EXPECT_EQ(refusal(good + "{\"iteration\":2,\"seconds\":\"1\",\"nashConv\":1}\n"), second);
    EXPECT_EQ(refusal(good + "{\"seconds\":1,\"nashConv\":1}\n"), second);
}

TEST(Convergence, IsThinnedByTime) {
    std::vector<ConvergencePoint> points;
    for (uint64_t i = 1; i <= 1000; ++i)
        points.push_back({i, static_cast<double>(i), 1.0, {}});
    EXPECT_EQ(thinned(points, 1000).size(), 1000U);
    const auto some = thinned(points, 6);
    std::vector<uint64_t> left;
    for (const ConvergencePoint& point : some)
        left.push_back(point.iteration);
    EXPECT_EQ(left, (std::vector<uint64_t>{1, 4, 13, 42, 133, 421, 1000}));
}

TEST(Convergence, IsPrintedAsATable) {
    const auto curves = readConvergence("run/log", twoRuns);
    EXPECT_EQ(convergenceAsTable(*curves), "run/log: average regret, chips\n"
                                           "     iterations           time  average regret\n"
                                           "              1          0.5 s  3.5\n"
                                           "              8          4.0 s  1.25\n"
                                           "              9          4.2 s  1\n"
                                           "\n"
                                           "run/log: exploitability, mbb/hand\n"
                                           "     iterations           time  exploitability\n"
                                           "              8          4.0 s  410.5 +- 22\n");
}

TEST(Convergence, HasItsFiguresAsJson) {
    const auto json = convergenceAsJson(*readConvergence("run/log", twoRuns));
    ASSERT_EQ(json["curves"].size(), 2U);
    EXPECT_EQ(json["curves"][0]["measure"], "averageRegret");
    EXPECT_EQ(json["curves"][0]["unit"], "chips");
    EXPECT_EQ(json["curves"][0]["points"][2]["seconds"], 4.25);
    EXPECT_FALSE(json["curves"][0]["points"][2].contains("interval95"));
    EXPECT_EQ(json["curves"][1]["log"], "run/log");
    EXPECT_EQ(json["curves"][1]["unit"], "mbb/hand");
    EXPECT_EQ(json["curves"][1]["points"][0],
              (nlohmann::ordered_json{
                  {"iteration", 8}, {"seconds", 4.0}, {"value", 410.5}, {"interval95", 22.5}}));
}

} // namespace
} // namespace tamarin::test
