// The game that most tests of commands are about.
#pragma once

#include <string>

namespace tamarin::test {

inline const std::string kuhnGame = "kuhn.limit.3p.game";

} // namespace tamarin::test
