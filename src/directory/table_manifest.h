// The table builder as the commands run it, with what the manifest of lookup/ says of each table.
#pragma once

#include "support/step_progress.h"
#include "table_builder/table_builder.h"

namespace tamarin {

// Builds with the progress shown; a signal ends the work. Every table is entered in the manifest,
// with how it was made and from what, as soon as it is there; before that, what an earlier run made
// and was killed before entering. A manifest that cannot be kept is a line on standard error.
Result<BuildReport> buildForCommand(BuildOptions build, StepProgress& progress);

} // namespace tamarin
