// What `verify` and `tables --verify` do with a report.
#pragma once

#include "report/table_report.h"

namespace tamarin {

// Prints the report, as JSON or as text, and returns the exit status: exitFailed when a file is
// wrong.
int verify(ReportOptions options, bool json, bool quiet);

} // namespace tamarin
