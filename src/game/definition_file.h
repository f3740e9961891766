// A game definition out of a file.
#pragma once

#include "game/definition.h"

namespace tamarin {

// Null after one line on standard error: "ERROR: could not open game PATH" or "ERROR: could not
// read game PATH" (after the line that says which value is wrong). Never waits: it reads regular
// files only, since a pipe may have no writer and a device no end.
GamePtr readDefinitionFile(const char* path);

} // namespace tamarin
