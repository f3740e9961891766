// A table below lookup/ as text or JSON; table_page.h makes the page.
#pragma once

#include "table_builder/table_summary.h"

#include <string>
#include <vector>

#include <nlohmann/json.hpp>

namespace tamarin {

// A table and, where it is a pre-flop one, the other pre-flop tables for as many players that lie
// beside it, so that they can be looked at together.
struct TableView {
    std::string path;
    TableSummary summary;
    std::vector<TableSummary> beside;
};
Result<TableView> viewTable(const TableFile& file, const std::string& path);

// "equity against one opponent, flop"
std::string titleOf(const TableFile& file);

std::string tableText(const TableView& view);
nlohmann::ordered_json tableJson(const TableView& view);

} // namespace tamarin
