// Whether a strategy file is whole and belongs to a game.
//
// CFR::load accepts whatever fills the sections; this looks at everything that can be known of a
// file without a header: its exact size, the keys (complete, in ascending order, in their own
// section, padded with zeros), the valid actions and the sums.
#pragma once

#include "support/file.h"
#include "training/small_game.h"

#include <string>

namespace tamarin {

// An error names the file, the record and its byte offset, and what is wrong there.
Status checkStrategyFile(const SmallGame& game, const std::string& path,
                         FileSystem& files = systemFiles());

} // namespace tamarin
