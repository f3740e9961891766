// A page of how trainings came closer to an equilibrium: a drawing for each measure, with a curve
// for each training, and the same figures as tables.
#pragma once

#include "report/convergence.h"

#include <string>
#include <vector>

namespace tamarin {

std::string convergencePage(const std::vector<ConvergenceCurve>& curves);

} // namespace tamarin
