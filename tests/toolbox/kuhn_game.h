// The game that most tests of commands are about.
#pragma once

#include <string>

namespace tamarin::test {

inline constexpr const char* kuhn = "kuhn.limit.3p.game";
inline const std::string game = kuhn;

} // namespace tamarin::test
