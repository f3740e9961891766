// docs/writing-an-agent.md shows docs/examples/cautious_agent.cpp as it is compiled.
#include <fstream>
#include <iterator>
#include <string>

#include <gtest/gtest.h>

namespace {

std::string contents(const std::string& name) {
    std::ifstream file(std::string(TAMARIN_SOURCE_DIR "/docs/") + name);
    return {std::istreambuf_iterator<char>(file), {}};
}

} // namespace

TEST(WritingAnAgent, ShowsTheExampleAsItIs) {
    const std::string page = contents("writing-an-agent.md");
    const std::string example = contents("examples/cautious_agent.cpp");
    ASSERT_FALSE(example.empty());
    EXPECT_NE(page.find("```cpp\n" + example + "```\n"), std::string::npos);
}
