// What the server answers to GET: the page's own files, and the questions below /api/.
//
//   /api/games                              games, their seats and opponents
//   /api/tables                             open tables
//   /api/logs, /api/hands?log=&first=, /api/hand?log=&number=, /api/curve?log=
//   /api/strategies, /api/tree?game=, /api/grid?game=&betting=&board=
//
// Knows nothing of sockets. Who may ask was decided before (request_guard.h).
#pragma once

#include "web/hand_history.h"
#include "web/strategy_views.h"
#include "web/table_list.h"

#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace tamarin {

struct WebAnswer {
    int status = 200;
    const char* type = "application/json";
    std::string text;      // of a question
    std::string_view file; // of the page: as long as the program runs
    std::string_view body() const { return file.empty() ? std::string_view(text) : file; }
};

class Queries {
public:
    Queries(std::string directory, TableList& tables)
        : directory_(directory), tables_(tables), history_(directory), strategies_(directory) {}

    // target: of any bytes.
    WebAnswer answer(std::string_view target) const;

private:
    std::string games() const;
    WebAnswer ask(std::string_view path, const std::map<std::string, std::string>& values) const;

    std::string directory_;
    TableList& tables_;
    HandHistory history_;
    StrategyViews strategies_;
};

// What stands behind the question mark, decoded; nothing where it is not as it should be.
std::optional<std::map<std::string, std::string>> queryValues(std::string_view text);

} // namespace tamarin
