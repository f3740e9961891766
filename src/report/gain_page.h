// Where a best response makes its gain, as a page (report/page.h): by round, by first decision, and
// a grid of the starting hands.
#pragma once

#include "report/gain_report.h"

#include <string>

namespace tamarin {

std::string gainPage(const GainReport& report);

} // namespace tamarin
