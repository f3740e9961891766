// What the manifest of lookup/ says of the tables that a builder makes.
#pragma once

#include "table_builder/table_builder.h"

namespace tamarin {

// Lets the builder enter every table that it makes, with how and from what, as soon as it is there;
// first enters what an earlier run made and was killed before entering. The directory and the seed
// must be set. A failure is a line on standard error.
void keepManifest(BuildOptions& build);

} // namespace tamarin
