// The tables that are open in one server.
//
// All functions may be called from any thread.
#pragma once

#include "web/web_table.h"

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace tamarin {

class TableList {
public:
    // Every table has processes of its own.
    static constexpr size_t mostTables = 6;

    TableList(std::string directory, Programs programs)
        : directory_(std::move(directory)), programs_(std::move(programs)) {}

    // Opens a table. game is a name of gameNames(); the log is a new file
    // DIR/logs/GAME.browser.N.log.
    Result<std::shared_ptr<WebTable>> open(const std::string& game,
                                           const std::vector<std::string>& opponents);
    // Null when there is none.
    std::shared_ptr<WebTable> find(uint32_t id) const;
    // Leaves the table and forgets it.
    void close(uint32_t id);
    // A JSON list of all, the newest first.
    std::string summaries() const;
    // Whether a match of ours is writing the log of that name.
    bool isWriting(const std::string& log) const;

private:
    std::string newLog(const std::string& game) const;

    const std::string directory_;
    const Programs programs_;
    mutable std::mutex mutex_;
    uint32_t lastId_ = 0;
    std::map<uint32_t, std::shared_ptr<WebTable>> tables_;
};

// The game of that name, of the names that there are; a path is no name.
Result<GameFile> openListedGame(const std::string& name, const std::string& directory);

} // namespace tamarin
