#include "report/strategy_report.h"

#include "directory/manifest.h"
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
    std::erase_if(names, [](const std::string& name) { return !isStrategy(name); });
    return names;
}

} // namespace

size_t reportStrategies(const std::string& directory, std::string& text,
                        nlohmann::ordered_json& files) {
    size_t wrong = 0;
    const auto tell = [&](const std::string& file, bool good, const std::string& result,
                          bool hashKnown) {
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
                     "no manifest to compare with; what the player trains itself has none", false);
            continue;
        }
        if (!compared || compared->state == ManifestState::nonsense) {
            tell(place + "/manifest.json", false,
                 compared ? "is no manifest: delete it" : "cannot be read: " + compared.error(),
                 false);
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
