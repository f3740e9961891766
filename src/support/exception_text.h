// What a person is told of an exception that ends a program.
#pragma once

#include <string>

namespace tamarin {

// One line, without its end, on the exception that is being handled; for a catch (...) block. The
// solver throws plain character strings, everybody else what derives from std::exception.
std::string describeException();

} // namespace tamarin
