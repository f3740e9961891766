// The games of the signature, definitions of games/ that CMake puts into the program: it may run
// where there are no game files.
#pragma once

namespace tamarin::signature {

extern const char* const kuhn2;
extern const char* const kuhn3;
extern const char* const leduc;
extern const char* const limit2;
extern const char* const limit3;
extern const char* const noLimit2;

} // namespace tamarin::signature
