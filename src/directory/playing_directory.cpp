#include "directory/playing_directory.h"

#include "directory/notice.h"
#include "support/file.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <set>
#include <vector>

namespace tamarin {

namespace {

namespace fs = std::filesystem;

constexpr size_t largestDefinition = size_t{1} << 20;

std::vector<fs::path> gamesDirectories() {
    std::vector<fs::path> directories;
    std::error_code error;
    const fs::path program = fs::read_symlink("/proc/self/exe", error);
    if (!error)
        directories.push_back(program.parent_path().parent_path() / "share/tamarin/games");
    directories.emplace_back(TAMARIN_GAMES_DIR);
    return directories;
}

bool isFile(const fs::path& path) {
    std::error_code error;
    return fs::is_regular_file(path, error);
}

} // namespace

Result<std::string> findGameFile(const std::string& name, const std::string& directory) {
    if (name.find('/') != std::string::npos) {
        if (isFile(name))
            return name;
        return Error{"no game definition at " + name};
    }
    std::vector<fs::path> places = gamesDirectories();
    places.insert(places.begin(), fs::path{directory});
    std::string tried;
    for (const fs::path& place : places) {
        if (isFile(place / name))
            return (place / name).string();
        std::error_code error;
        if (fs::is_directory(place, error))
            tried += (tried.empty() ? "" : ", ") + place.string();
    }
    return Error{"no game definition " + name + " in " + tried + "; give its path"};
}

std::vector<std::string> gameNames(const std::string& directory) {
    std::vector<fs::path> places = gamesDirectories();
    places.insert(places.begin(), fs::path{directory});
    std::set<std::string> names;
    for (const fs::path& place : places) {
        std::error_code error;
        for (fs::directory_iterator it(place, error), end; !error && it != end; it.increment(error))
            if (it->path().extension() == ".game" && isFile(it->path()))
                names.insert(it->path().filename().string());
    }
    return {names.begin(), names.end()};
}

Result<GamePtr> readGameFile(const std::string& path) {
    std::unique_ptr<FILE, int (*)(FILE*)> file(std::fopen(path.c_str(), "r"), std::fclose);
    if (!file)
        return Error{"could not open game " + path + ": " + std::strerror(errno)};
    GamePtr game(readGame(file.get()));
    if (!game)
        return Error{"could not read game " + path};
    return game;
}

Result<GameFile> openGameFile(const std::string& name, const std::string& directory) {
    auto path = findGameFile(name, directory);
    if (!path)
        return Error{path.error()};
    auto rules = readGameFile(*path);
    if (!rules)
        return Error{rules.error()};
    return GameFile{*path, bareName(*path), std::move(*rules)};
}

Result<std::string> placeGameFile(const std::string& path, const std::string& directory) {
    const std::string name = bareName(path);
    const fs::path target = fs::path{directory} / name;
    std::error_code error;
    if (fs::equivalent(path, target, error))
        return name;
    auto wanted = readWholeFile(path, largestDefinition);
    if (!wanted)
        return Error{wanted.error()};
    if (fs::exists(target, error)) {
        auto there = readWholeFile(target.string(), largestDefinition);
        if (!there)
            return Error{there.error()};
        if (*there == *wanted)
            return name;
        return Error{target.string() + " differs from " + path +
                     ": use another --dir, or the definition that is there"};
    }
    if (Status made = makeDirectories(directory); !made)
        return Error{made.error()};
    if (Status written = writeWholeFile(target.string(), *wanted); !written)
        return Error{written.error()};
    complain("copied {} to {}", path, target.string());
    return name;
}

std::string bareName(const std::string& path) {
    return fs::path{path}.filename().string();
}

} // namespace tamarin
