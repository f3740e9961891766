#include "web/table_list.h"

#include "abstraction/table_names.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <sys/random.h>

namespace tamarin {

namespace {

namespace fs = std::filesystem;

// Of the cards: nobody at the table may guess it.
Result<uint64_t> secretSeed() {
    uint64_t seed = 0;
    if (::getrandom(&seed, sizeof seed, 0) != static_cast<ssize_t>(sizeof seed))
        return Error{std::string("no random numbers from the system: ") + std::strerror(errno)};
    return seed;
}

} // namespace

Result<GameFile> openListedGame(const std::string& name, const std::string& directory) {
    const std::vector<std::string> names = gameNames(directory);
    if (std::ranges::find(names, name) == names.end())
        return Error{"there is no game of that name"};
    return openGameFile(name, directory);
}

Result<std::shared_ptr<WebTable>> TableList::open(const std::string& game,
                                                  const std::vector<std::string>& opponents) {
    auto opened = openListedGame(game, directory_);
    if (!opened)
        return Error{opened.error()};
    if (Status dealable = checkDealable(opened->rules.get()); !dealable)
        return Error{"it cannot be dealt: " + dealable.error()};
    const auto seed = secretSeed();
    if (!seed)
        return Error{seed.error()};
    auto plans = planOpponents(*opened, directory_, opponents, *seed, programs_);
    if (!plans)
        return Error{plans.error()};
    const std::lock_guard lock(mutex_);
    std::erase_if(tables_, [](const auto& entry) { return entry.second->over(); });
    if (tables_.size() >= mostTables)
        return Error{"there are " + std::to_string(mostTables) + " tables; leave one first"};
    WebTable::Setup setup;
    setup.id = ++lastId_;
    setup.log = newLog(opened->name);
    setup.game = std::make_shared<const GameFile>(std::move(*opened));
    setup.opponents = std::move(*plans);
    setup.seed = *seed;
    auto table = std::make_shared<WebTable>(std::move(setup));
    tables_[table->id()] = table;
    return table;
}

// With the mutex held. The numbers go on behind those of tables that have not written yet.
std::string TableList::newLog(const std::string& game) const {
    const std::string stem = fs::path(game).stem().string();
    for (uint32_t number = lastId_;; ++number) {
        const std::string path =
            inDirectory(directory_, "logs/" + stem + ".browser." + std::to_string(number) + ".log");
        std::error_code error;
        const bool ours = std::ranges::any_of(
            tables_, [&](const auto& entry) { return entry.second->log() == path; });
        if (!ours && !fs::exists(path, error))
            return path;
    }
}

std::shared_ptr<WebTable> TableList::find(uint32_t id) const {
    const std::lock_guard lock(mutex_);
    const auto found = tables_.find(id);
    return found == tables_.end() ? nullptr : found->second;
}

void TableList::close(uint32_t id) {
    std::shared_ptr<WebTable> table; // its end, which may take a moment, is outside the lock
    const std::lock_guard lock(mutex_);
    const auto found = tables_.find(id);
    if (found == tables_.end())
        return;
    table = std::move(found->second);
    tables_.erase(found);
    table->leave();
}

std::string TableList::summaries() const {
    const std::lock_guard lock(mutex_);
    std::string list;
    for (auto entry = tables_.rbegin(); entry != tables_.rend(); ++entry)
        list += (list.empty() ? "" : ",") + entry->second->summary();
    return "[" + list + "]";
}

bool TableList::isWriting(const std::string& log) const {
    const std::lock_guard lock(mutex_);
    return std::ranges::any_of(tables_, [&](const auto& entry) {
        return !entry.second->over() && fs::path(entry.second->log()).filename() == log;
    });
}

} // namespace tamarin
