#include "architecture/tree.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <fstream>
#include <regex>
#include <set>

namespace tamarin {

namespace fs = std::filesystem;

namespace {

// Libraries that only the toolbox and its three rooms may use; the rooms below them need the
// standard library alone.
const std::regex
    toolboxLibrary("^(CLI|nlohmann|fmt|boost)/.*|^xxhash\\.h$|^(gtest|gmock|rapidcheck)/.*");

const std::set<std::string> toolboxRooms = {"directory", "report", "web", "toolbox"};

bool isSource(const fs::path& path) {
    return path.extension() == ".h" || path.extension() == ".cpp";
}

// In order of their names.
std::vector<fs::path> sourcesBelow(const fs::path& folder) {
    std::vector<fs::path> files;
    for (const auto& entry : fs::recursive_directory_iterator(folder))
        if (entry.is_regular_file() && isSource(entry.path()))
            files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    return files;
}

std::string roomOf(const std::string& file) { // src/ROOM/...
    const size_t begin = file.find('/') + 1;
    return file.substr(begin, file.find('/', begin) - begin);
}

} // namespace

// Lowest first. A room may use the rooms named beside it and nothing else; what is not named here
// is no room.
const RoomUses& allowedUses() {
    static const RoomUses uses = {
        {"support", {}},
        {"index", {}},
        {"game", {"support"}},
        {"eval", {"support", "game"}},
        {"abstraction", {"support", "index", "game", "eval"}},
        {"clustering", {"support", "index", "game", "eval", "abstraction"}},
        {"tree", {"support", "game"}},
        {"menu", {"support", "game", "tree"}},
        {"strategy", {"support", "game", "tree"}},
        {"holdem", {"support", "index", "game", "abstraction", "tree", "strategy"}},
        {"response", {"support", "game", "abstraction", "tree", "strategy", "holdem"}},
        {"showdown", {"support", "game", "eval", "abstraction", "response"}},
        {"local_response",
         {"support", "game", "eval", "abstraction", "tree", "holdem", "response", "showdown"}},
        {"solver", {"support", "index", "game", "abstraction", "tree", "strategy", "holdem"}},
        {"training", {"support", "game", "abstraction", "tree", "strategy", "holdem", "solver"}},
        {"blueprint",
         {"support", "index", "game", "eval", "abstraction", "clustering", "tree", "strategy",
          "holdem", "response", "training"}},
        {"sampling",
         {"support", "index", "game", "abstraction", "clustering", "tree", "menu", "training",
          "blueprint"}},
        {"table_builder",
         {"support", "index", "game", "eval", "abstraction", "tree", "strategy", "holdem",
          "solver"}},
        {"driver",
         {"support", "index", "game", "eval", "abstraction", "clustering", "tree", "menu",
          "strategy", "holdem", "response", "solver", "training", "blueprint", "sampling",
          "table_builder"}},
        {"bots", {"support", "game", "driver"}},
        {"dealer", {"support", "game"}},
        {"analysis",
         {"support", "game", "eval", "abstraction", "tree", "strategy", "holdem", "response",
          "showdown", "bots", "dealer"}},
        {"signature",
         {"support", "index", "game", "eval", "abstraction", "clustering", "tree", "strategy",
          "holdem", "solver", "training", "table_builder", "bots", "dealer"}},
        {"directory",
         {"support", "game", "abstraction", "tree", "menu", "strategy", "holdem", "solver",
          "training", "blueprint", "sampling", "table_builder", "driver"}},
        {"report",
         {"support", "game", "abstraction", "clustering", "tree", "menu", "strategy", "holdem",
          "response", "solver", "training", "blueprint", "sampling", "table_builder", "driver",
          "dealer", "analysis", "directory"}},
        {"web",
         {"support", "game", "eval", "abstraction", "tree", "strategy", "holdem", "solver",
          "training", "driver", "bots", "dealer", "directory", "report"}},
        {"toolbox",
         {"support",        "index",  "game",     "eval",     "abstraction", "clustering",
          "tree",           "menu",   "sampling", "strategy", "response",    "showdown",
          "local_response", "holdem", "solver",   "training", "blueprint",   "table_builder",
          "driver",         "bots",   "dealer",   "analysis", "signature",   "directory",
          "report",         "web"}},
    };
    return uses;
}

std::vector<Include> includesBelow(const fs::path& root, const std::string& folder) {
    static const std::regex line(R"re(^\s*#\s*include\s*(["<])([^">]+)[">].*)re");
    std::vector<Include> includes;
    for (const fs::path& path : sourcesBelow(root / folder)) {
        std::ifstream file(path);
        std::string text;
        for (int number = 1; std::getline(file, text); ++number) {
            std::smatch match;
            if (std::regex_match(text, match, line))
                includes.push_back(
                    {fs::relative(path, root).string(), number, match[2], match[1] == "\""});
        }
    }
    return includes;
}

std::vector<std::string> backwardArrows(const fs::path& root) {
    std::vector<std::string> wrong;
    const RoomUses& rooms = allowedUses();
    for (const Include& include : includesBelow(root, "src")) {
        const std::string where = include.file + ":" + std::to_string(include.line) + ": ";
        const std::string room = roomOf(include.file);
        if (!rooms.contains(room)) {
            wrong.push_back(where + room + " is no room");
        } else if (!include.quoted) {
            if (!toolboxRooms.contains(room) && std::regex_match(include.name, toolboxLibrary))
                wrong.push_back(where + "<" + include.name + "> belongs to the toolbox");
        } else if (!fs::exists(root / "src" / include.name)) {
            wrong.push_back(where + "\"" + include.name + "\" is no src/ROOM/FILE");
        } else {
            const std::string target = include.name.substr(0, include.name.find('/'));
            if (target != room && !rooms.at(room).contains(target))
                wrong.push_back(where + room + " may not include " + target);
        }
    }
    return wrong;
}

std::vector<std::string> typesDefinedTwice(const fs::path& root) {
    // The formatting begins all that is no member of a type at the start of its line.
    static const std::regex definition(
        R"(^(?:struct|class|enum|enum class|union) (\w+)(?: final)?(?: :[^;]*| \{.*))");
    std::vector<std::string> wrong;
    std::map<std::string, std::string> places;
    for (const fs::path& path : sourcesBelow(root / "src")) {
        std::ifstream file(path);
        std::string text;
        bool named = true;
        for (int number = 1; std::getline(file, text); ++number) {
            if (text == "namespace {")
                named = false;
            if (text == "} // namespace")
                named = true;
            std::smatch match;
            if (!named || !std::regex_match(text, match, definition))
                continue;
            const std::string where =
                fs::relative(path, root).string() + ":" + std::to_string(number);
            const auto [first, isNew] = places.emplace(match[1], where);
            if (!isNew)
                wrong.push_back(where + ": " + first->first + " is a type of " + first->second);
        }
    }
    return wrong;
}

std::vector<std::string> treeFiles(const fs::path& root) {
    std::vector<std::string> files;
    const std::string command = "git -C '" + root.string() + "' ls-files -z 2>/dev/null";
    if (FILE* pipe = popen(command.c_str(), "r")) {
        std::string name;
        for (int c = std::fgetc(pipe); c != EOF; c = std::fgetc(pipe)) {
            if (c != '\0') {
                name.push_back(static_cast<char>(c));
                continue;
            }
            files.push_back(name);
            name.clear();
        }
        pclose(pipe);
    }
    if (!files.empty())
        return files;

    for (auto it = fs::recursive_directory_iterator(root); it != fs::end(it); ++it) {
        const std::string name = it->path().filename().string();
        const bool top = it.depth() == 0;
        if (name.starts_with('.') || (top && (name == "build" || name == "run"))) {
            if (it->is_directory())
                it.disable_recursion_pending();
        } else if (it->is_regular_file()) {
            files.push_back(fs::relative(it->path(), root).string());
        }
    }
    return files;
}

} // namespace tamarin
