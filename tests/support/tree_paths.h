// Where the tree and the build lie. One object knows, so that nothing else that is compiled depends
// on it and a compiler cache serves clones in every folder.
#pragma once

#include <string>

namespace tamarin::test {

std::string inTree(const std::string& name);  // "games/kuhn.limit.3p.game"
std::string inBuild(const std::string& name); // "bin/tamarin"

} // namespace tamarin::test
