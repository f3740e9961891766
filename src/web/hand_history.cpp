#include "web/hand_history.h"

#include "abstraction/table_names.h"
#include "dealer/hand_log.h"
#include "support/statistics.h"
#include "web/hand_view.h"
#include "web/table_list.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <map>
#include <optional>
#include <vector>

namespace tamarin {

namespace {

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;

constexpr const char* folderOfLogs = "logs";
constexpr std::string_view logEnding = ".log";

std::string folderIn(const std::string& directory) {
    return inDirectory(directory, folderOfLogs);
}

// The name of the game in the first line, "# tamarin match GAME seed ..."; empty where the file
// does not begin so.
std::string gameOfLog(const fs::path& path) {
    constexpr std::string_view head = "# tamarin match ";
    constexpr size_t longest = 300;
    std::ifstream file(path);
    std::string line(longest, '\0');
    file.read(line.data(), static_cast<std::streamsize>(line.size()));
    line.resize(static_cast<size_t>(file.gcount()));
    if (!line.starts_with(head))
        return "";
    const size_t end = line.find_first_of(" \n", head.size());
    return line.substr(head.size(), end - head.size());
}

struct LogEntry {
    std::string name;
    std::string game;
    uint64_t bytes;
    fs::file_time_type changed;
};

std::vector<LogEntry> logsIn(const std::string& directory) {
    std::vector<LogEntry> entries;
    std::error_code error;
    for (fs::directory_iterator it(folderIn(directory), error), end; !error && it != end;
         it.increment(error)) {
        std::error_code unread; // a file may go while the list is made
        if (!it->is_regular_file(unread) || it->path().extension() != logEnding)
            continue;
        LogEntry entry{it->path().filename().string(), gameOfLog(it->path()), it->file_size(unread),
                       it->last_write_time(unread)};
        if (!unread && !entry.game.empty())
            entries.push_back(std::move(entry));
    }
    std::ranges::sort(entries, [](const LogEntry& a, const LogEntry& b) {
        return a.changed != b.changed ? a.changed > b.changed : a.name > b.name;
    });
    return entries;
}

// A log that somebody asked for by its name, with its game.
struct OpenedLog {
    std::string path;
    GameFile game;
};

Result<OpenedLog> openLog(const std::string& directory, const std::string& name) {
    const auto entries = logsIn(directory);
    const auto found = std::ranges::find(entries, name, &LogEntry::name);
    if (found == entries.end())
        return Error{"there is no match log of that name"};
    if (found->bytes > HandHistory::largestLog)
        return Error{"the log is too long for this page; 'tamarin analyse' reads it"};
    auto game = openListedGame(found->game, directory);
    if (!game)
        return Error{"the log's game: " + game.error()};
    return OpenedLog{folderIn(directory) + "/" + name, std::move(*game)};
}

Result<std::string> failed(const std::string& why) {
    return Error{why};
}

Json asList(const auto& values) {
    Json list = Json::array();
    for (const auto& value : values)
        list.push_back(value);
    return list;
}

Json resultOf(const std::string& player, const RunningMoments& moments, double chips) {
    const Interval interval = interval95(moments);
    return {{"player", player},
            {"hands", moments.count()},
            {"chips", chips},
            {"mean", interval.mean},
            {"halfWidth", std::isfinite(interval.halfWidth) ? Json(interval.halfWidth) : Json()}};
}

// What a list of hands says of one.
Json listedHand(const Game& game, const LoggedHand& hand, uint64_t number) {
    const Json view = handAsJson(game, hand.state, {hand.names, std::nullopt, true});
    Json board = Json::array();
    for (const Json& round : view["board"])
        for (const Json& card : round)
            board.push_back(card);
    return {{"number", number},
            {"hand", hand.state.handId},
            {"names", hand.names},
            {"cards", view["cards"]},
            {"board", board},
            {"chips", asList(hand.chips)},
            {"actions", view["actions"].size()}};
}

// Results by player, in the order in which they are met.
struct Results {
    std::vector<std::string> players;
    std::map<std::string, RunningMoments> perHand;
    std::map<std::string, double> chips;

    void add(const LoggedHand& hand) {
        for (size_t seat = 0; seat < hand.names.size(); ++seat) {
            const std::string& name = hand.names[seat];
            if (!perHand.contains(name))
                players.push_back(name);
            perHand[name].add(hand.chips[seat]);
            chips[name] += hand.chips[seat];
        }
    }
};

} // namespace

std::string HandHistory::logs() const {
    Json list = Json::array();
    for (const LogEntry& entry : logsIn(directory_))
        list.push_back({{"log", entry.name}, {"game", entry.game}, {"bytes", entry.bytes}});
    return wireText(list);
}

Result<std::string> HandHistory::hands(const std::string& log, uint64_t first) const {
    const auto opened = openLog(directory_, log);
    if (!opened)
        return failed(opened.error());
    Json hands = Json::array();
    Results results;
    uint64_t number = 0;
    const Status read =
        readHandLog(opened->game.rules.get(), opened->path, [&](const LoggedHand& hand) {
            results.add(hand);
            if (number >= first && hands.size() < mostListed)
                hands.push_back(listedHand(*opened->game.rules, hand, number));
            ++number;
        });
    if (!read)
        return failed("the log cannot be read to its end");
    Json players = Json::array();
    for (const std::string& player : results.players)
        players.push_back(resultOf(player, results.perHand[player], results.chips[player]));
    return wireText({{"log", log},
                     {"game", opened->game.name},
                     {"bigBlind", bigBlind(*opened->game.rules)},
                     {"total", number},
                     {"first", first},
                     {"hands", hands},
                     {"results", players}});
}

Result<std::string> HandHistory::hand(const std::string& log, uint64_t number) const {
    const auto opened = openLog(directory_, log);
    if (!opened)
        return failed(opened.error());
    std::optional<std::string> found;
    uint64_t at = 0;
    const std::string enough = "found";
    const Status read = followHandLog(
        opened->game.rules.get(), opened->path, [&](const LoggedHand& hand, size_t) -> Status {
            if (at++ != number)
                return {};
            const auto own = std::ranges::find(hand.names, personName);
            std::optional<uint8_t> you;
            if (own != hand.names.end())
                you = static_cast<uint8_t>(own - hand.names.begin());
            Json answer = {{"log", log}, {"number", number}, {"game", opened->game.name}};
            answer["limit"] = opened->game.rules->bettingRule == limitRule;
            answer["bigBlind"] = bigBlind(*opened->game.rules);
            answer["hand"] = handAsJson(*opened->game.rules, hand.state, {hand.names, you, true});
            found = wireText(answer);
            return Error{enough};
        });
    if (found)
        return *found;
    return failed(read ? "the log has no such hand" : "the log cannot be read so far");
}

Result<std::string> HandHistory::curve(const std::string& log) const {
    const auto opened = openLog(directory_, log);
    if (!opened)
        return failed(opened.error());
    std::string player;
    std::vector<double> won;
    const Status read =
        readHandLog(opened->game.rules.get(), opened->path, [&](const LoggedHand& hand) {
            if (player.empty()) {
                const bool person = std::ranges::find(hand.names, personName) != hand.names.end();
                player = person ? personName : hand.names[0];
            }
            const auto seat = std::ranges::find(hand.names, player);
            if (seat != hand.names.end())
                won.push_back(hand.chips[static_cast<size_t>(seat - hand.names.begin())]);
        });
    if (!read)
        return failed("the log cannot be read to its end");
    const size_t step = won.size() / mostPoints + 1;
    Json hands = Json::array();
    Json chips = Json::array();
    Json low = Json::array();
    Json high = Json::array();
    RunningMoments moments;
    double total = 0;
    for (size_t i = 0; i < won.size(); ++i) {
        moments.add(won[i]);
        total += won[i];
        if ((i + 1) % step != 0 && i + 1 != won.size())
            continue;
        const double band = interval95(moments).halfWidth * static_cast<double>(i + 1);
        hands.push_back(i + 1);
        chips.push_back(total);
        low.push_back(std::isfinite(band) ? Json(total - band) : Json());
        high.push_back(std::isfinite(band) ? Json(total + band) : Json());
    }
    return wireText({{"log", log},
                     {"player", player},
                     {"hands", hands},
                     {"chips", chips},
                     {"low", low},
                     {"high", high}});
}

} // namespace tamarin
