// The rules engine, whole: definitions, hands, showdowns and their text.
#pragma once

#include "game/definition.h" // IWYU pragma: export
#include "game/showdown.h"   // IWYU pragma: export
#include "game/state.h"      // IWYU pragma: export
#include "game/text.h"       // IWYU pragma: export
