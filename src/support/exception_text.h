// What a person is told of an exception that ends a program.
#pragma once

#include <string>

namespace tamarin {

// One line about the exception that is being handled, without a line end; to be called in a catch
// (...) block. The solver throws plain character strings, all else is derived from std::exception.
std::string describeException();

} // namespace tamarin
