// Making a card abstraction as the commands do it: refused where memory or disk will not do, with
// progress, stopped by a signal without a loss.
#pragma once

#include "clustering/make_abstraction.h"
#include "support/result.h"

namespace tamarin {

// options: all but what is told and asked on the way, which is set here. After a signal "stopped",
// with a word about going on.
Result<MadeAbstraction> makeCards(MakeOptions options, bool quiet);

} // namespace tamarin
