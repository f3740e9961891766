// A table as a page (report/page.h): its range, its histogram, and for pre-flop the coloured grids
// of starting hands, of all pre-flop tables that lie there.
#pragma once

#include "report/table_view.h"

#include <string>

namespace tamarin {

std::string tablePage(const TableView& view);

} // namespace tamarin
