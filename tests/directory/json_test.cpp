#include "directory/json.h"

#include <gtest/gtest.h>

namespace tamarin::test {

using Json = nlohmann::ordered_json;

namespace {

std::string nested(size_t depth, const std::string& open, const std::string& inner,
                   const std::string& close) {
    std::string text;
    for (size_t i = 0; i < depth; ++i)
        text += open;
    text += inner;
    for (size_t i = 0; i < depth; ++i)
        text += close;
    return text;
}

} // namespace

TEST(Json, IsReadOrDiscarded) {
    EXPECT_EQ(readJson(R"({"a": [1, "x", null]})"), Json::parse(R"({"a": [1, "x", null]})"));
    EXPECT_EQ(readJson(" 3"), Json(3));
    for (const char* nonsense : {"", "{", "[1,]", "{\"a\": \"\xff\"}", "[] []", "nan"})
        EXPECT_TRUE(readJson(nonsense).is_discarded()) << nonsense;
}

TEST(Json, IsReadToADepthAndNoDeeper) {
    const auto deepest = static_cast<size_t>(deepestJson);
    for (const char* inner : {"", "7"}) {
        EXPECT_TRUE(readJson(nested(deepest, "[", inner, "]")).is_array());
        EXPECT_TRUE(readJson(nested(deepest + 1, "[", inner, "]")).is_discarded());
    }
    EXPECT_TRUE(readJson(nested(deepest, "{\"a\":", "7", "}")).is_object());
    EXPECT_TRUE(readJson(nested(deepest + 1, "{\"a\":", "7", "}")).is_discarded());
    EXPECT_TRUE(readJson("{\"files\": [" + nested(100, "{\"a\":", "7", "}") + "]}").is_discarded());
}

// The program once ended here: its stack was full.
TEST(Json, TakesMillionsOfBrackets) {
    constexpr size_t many = 4'000'000;
    EXPECT_TRUE(readJson(nested(many, "[", "", "]")).is_discarded());
    EXPECT_TRUE(readJson(nested(many, "[", "", "")).is_discarded());
    EXPECT_TRUE(readJson("{\"files\":" + nested(many, "[", "", "]") + "}").is_discarded());
}

TEST(Json, WritesAnyBytes) {
    EXPECT_EQ(jsonText({{"name", "a\xff\"b"}}), "{\n  \"name\": \"a\xEF\xBF\xBD\\\"b\"\n}");
    EXPECT_EQ(asJsonText("a\xff\"b\xc3\xbc"), "a\xEF\xBF\xBD\"b\xc3\xbc");
    EXPECT_EQ(asJsonText(asJsonText("\xff")), asJsonText("\xff"));
}

} // namespace tamarin::test
