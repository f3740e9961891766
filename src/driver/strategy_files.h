// How the agents find their strategies: a good file is loaded, a bad one is put aside, and the
// directory to write to is made before any long work begins.
#pragma once

#include "solver/cfr.h"

#include <functional>
#include <string>

namespace tamarin {

// Loads the solver from the file. A file that is there but does not load, or that fits(solver) does
// not accept, is put aside (PATH.bad, .bad.2, ...), with a line on standard error, so that nothing
// is lost when a new strategy takes its place. Says "Warning: could not load strategy from disk!"
// on standard output and returns false unless the strategy is loaded.
bool loadStrategy(CFR& solver, const std::string& path,
                  const std::function<bool(CFR&)>& fits = nullptr);

// Makes the directory of the file; a "Warning: " line on standard output when that fails.
void makeDirectoryOf(const std::string& path);

} // namespace tamarin
