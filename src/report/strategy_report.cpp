#include "report/strategy_report.h"

#include "directory/blueprints.h"
#include "directory/manifest.h"
#include "driver/played_blueprint.h"
#include "report/names_in.h"
#include "table_builder/table_plan.h"

#include <algorithm>
#include <filesystem>
#include <set>

namespace tamarin {

namespace {

namespace fs = std::filesystem;

// "strategy", or "strategy" and a seat's number.
bool isStrategy(const std::string& name) {
    constexpr const char* stem = "strategy";
    return name.starts_with(stem) &&
           std::all_of(name.begin() + 8, name.end(), [](char c) { return c >= '0' && c <= '9'; });
}

std::set<std::string> strategiesIn(const std::string& folder) {
    std::set<std::string> names = namesIn(folder);
    std::erase_if(
        names, [](const std::string& name) { return !isStrategy(name) && name != blueprintName; });
    return names;
}

// An error about a file, for a line that begins with its path.
std::string withoutPath(const std::string& error, const std::string& path) {
    if (!error.starts_with(path))
        return error;
    const size_t words = error.find_first_not_of(": ", path.size());
    return words == std::string::npos ? error : error.substr(words);
}

// What a manifest does not tell of a blueprint.
Result<std::string> soundness(const std::string& path, const std::string& directory) {
    const auto blueprint = openBlueprint(path, directory);
    if (!blueprint)
        return Error{blueprint.error()};
    return "sound, " + blueprint->describe();
}

} // namespace

size_t reportStrategies(const std::string& directory, std::string& text,
                        nlohmann::ordered_json& files) {
    size_t wrong = 0;
    const auto tell = [&](const std::string& file, bool good, std::string result, bool hashKnown) {
        if (fs::path(file).filename() == blueprintName && fs::exists(file)) {
            const auto sound = soundness(file, directory);
            good = good && sound;
            result = sound ? result + "; " + *sound : withoutPath(sound.error(), file);
        }
        wrong += !good;
        files.push_back({{"file", file}, {"good", good}, {"result", result}, {"hash", hashKnown}});
        text += file + ": " + result + '\n';
    };

    const std::string all = inDirectory(directory, "strategies");
    for (const std::string& game : namesIn(all)) {
        const std::string place = all + '/' + game;
        const std::set<std::string> strategies = strategiesIn(place);
        const auto compared = compareWithManifest(place);
        if (compared && compared->state == ManifestState::absent) {
            for (const std::string& name : strategies)
                tell(place + '/' + name, true,
                     name == blueprintName
                         ? "no manifest to compare with"
                         : "no manifest to compare with; what the player trains itself has none",
                     false);
            continue;
        }
        if (!compared || compared->state == ManifestState::nonsense) {
            tell(place + "/manifest.json", false,
                 compared ? "is no manifest: delete it" : "cannot be read: " + compared.error(),
                 false);
            if (strategies.contains(blueprintName)) // which tells by itself
                tell(place + '/' + blueprintName, true, "nothing to compare with", false);
            continue;
        }
        std::set<std::string> told;
        for (const auto& file : compared->good) {
            told.insert(file.name);
            tell(place + '/' + file.name, true, "good, as the manifest says", true);
        }
        for (const auto& difference : compared->differences) {
            told.insert(difference.name);
            tell(place + '/' + difference.name, false, difference.problem, false);
        }
        for (const std::string& name : strategies)
            if (!told.contains(name))
                tell(place + '/' + name, true, "not in the manifest", false);
    }
    return wrong;
}

} // namespace tamarin
