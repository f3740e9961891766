// A game definition out of a file.
#pragma once

#include "game/definition.h"

namespace tamarin {

// Null after one line on standard error: "ERROR: could not open game PATH" or "ERROR: could not
// read game PATH" (then behind the line that says which value is wrong). Never waits: what is no
// regular file, such as a pipe that nobody writes or a device without an end, is not read.
GamePtr readDefinitionFile(const char* path);

} // namespace tamarin
