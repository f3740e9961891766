// A card abstraction as a page (report/page.h): what each round's buckets hold, the grid of
// starting hands, and every bucket where they are not too many to read; or one bucket.
#pragma once

#include "report/abstraction_view.h"

#include <string>

namespace tamarin {

std::string abstractionPage(const AbstractionView& view);

} // namespace tamarin
