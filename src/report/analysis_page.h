// A match taken apart, as one page: how the result ran with its band, and all the tables.
#pragma once

#include "report/analysis_report.h"

namespace tamarin {

std::string analysisPage(const AnalysisReport& report);

} // namespace tamarin
