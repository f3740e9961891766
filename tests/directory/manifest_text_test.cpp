#include "directory/manifest_text.h"

#include <gtest/gtest.h>

namespace tamarin::test {

TEST(ManifestText, IsReadAndPrintedTheSame) {
    const std::string text = "{\n  \"files\": [\n    {\n      \"name\": \"a\",\n      \"size\": 3\n"
                             "    },\n    7\n  ],\n  \"begun\": [\n    \"odd\"\n  ]\n}\n";
    const auto manifest = parseManifest(text);
    ASSERT_TRUE(manifest.ok());
    EXPECT_EQ(printManifest(*manifest), text);
    EXPECT_EQ(printManifest(ManifestText{}), "{\n  \"files\": []\n}\n");
}

TEST(ManifestText, RefusesWhatIsNone) {
    for (const std::string nonsense : {"", "{", "[]", "{\"files\":3}", "{\"begun\":[]}"})
        EXPECT_EQ(parseManifest(nonsense).error(), "is no manifest") << nonsense;
    EXPECT_EQ(parseManifest("{\"files\":" + std::string(8'000'000, '[')).error(), "is no manifest");
    EXPECT_EQ(parseManifest("{\"files\":" + std::string(4'000'000, '[') +
                            std::string(4'000'000, ']') + "}")
                  .error(),
              "is no manifest");
    EXPECT_TRUE(parseManifest("{\"files\":[],\"begun\":7}").ok());
}

TEST(ManifestText, RecordsSayWhatTheySayAsTheyShould) {
    const auto manifest = parseManifest(R"({"files": [
        {"name": "a", "size": 18446744073709551615, "xxh3": "77", "from": "x", "made": "y"},
        {"name": "a", "size": 5},
        {"name": "b", "size": -1, "xxh3": 77, "since": 9223372036854775808},
        {"name": "c", "size": 1.5, "since": -3},
        {"name": ""}, {"name": "."}, {"name": ".."}, {"name": "up/../down"}, {"name": "/etc/x"},
        {"name": "nul\u0000"}, {"name": 4}, {"size": 4}, 7, null]})");
    ASSERT_TRUE(manifest.ok());
    const auto records = recordsIn(manifest->files);
    ASSERT_EQ(records.size(), 3U);
    EXPECT_EQ(records[0].name, "a");
    EXPECT_EQ(records[0].size, UINT64_MAX);
    EXPECT_EQ(records[0].hash, "77");
    EXPECT_EQ(records[0].from, "x");
    EXPECT_EQ(records[0].made, "y");
    EXPECT_EQ(records[0].since, std::nullopt);
    EXPECT_EQ(records[1].name, "b");
    EXPECT_EQ(records[1].size, std::nullopt);
    EXPECT_EQ(records[1].hash, "");
    EXPECT_EQ(records[1].since, std::nullopt);
    EXPECT_EQ(records[2].name, "c");
    EXPECT_EQ(records[2].size, std::nullopt);
    EXPECT_EQ(records[2].since, -3);
}

TEST(ManifestText, PutsAndRemoves) {
    auto list =
        nlohmann::ordered_json::parse(R"([7, {"name": "a"}, {"name": "b"}, {"name": "a"}])");
    putRecord(list, {{"name", "a"}, {"size", 1}});
    putRecord(list, {{"name", "c"}});
    EXPECT_EQ(list.dump(), R"([7,{"name":"a","size":1},{"name":"b"},{"name":"a"},{"name":"c"}])");
    removeRecord(list, "a");
    EXPECT_EQ(list.dump(), R"([7,{"name":"b"},{"name":"c"}])");
}

} // namespace tamarin::test
