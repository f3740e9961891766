// docs/writing-an-agent.md shows docs/examples/cautious_agent.cpp as it is compiled.
#include "support/tree_paths.h"

#include <fstream>
#include <iterator>
#include <string>

#include <gtest/gtest.h>

namespace tamarin::test {

namespace {

std::string contents(const std::string& name) {
    std::ifstream file(tamarin::test::inTree("docs/" + name));
    return {std::istreambuf_iterator<char>(file), {}};
}

} // namespace

TEST(WritingAnAgent, ShowsTheExampleAsItIs) {
    const std::string page = contents("writing-an-agent.md");
    const std::string example = contents("examples/cautious_agent.cpp");
    ASSERT_FALSE(example.empty());
    EXPECT_NE(page.find("```cpp\n" + example + "```\n"), std::string::npos);
}

} // namespace tamarin::test
