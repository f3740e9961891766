#include "toolbox/abstraction_place.h"

#include "abstraction/round_indexers.h"
#include "abstraction/table_names.h"
#include "clustering/card_abstraction.h"
#include "toolbox/command.h"

#include <algorithm>
#include <cassert>
#include <filesystem>

namespace tamarin {

namespace {

namespace fs = std::filesystem;

std::optional<AbstractionPlace> placeOf(const std::string& path) {
    std::error_code ignored;
    if (!fs::is_directory(path, ignored))
        return std::nullopt;
    // As it was typed, so that it is shown like that; "mine" and "." tell where they lie only when
    // the working directory stands before them.
    for (const fs::path& named : {fs::path(path), fs::absolute(path, ignored)}) {
        fs::path folder = named.lexically_normal();
        if (!folder.has_filename()) // "lookup/NAME/"
            folder = folder.parent_path();
        const fs::path lookup = folder.parent_path();
        if (lookup.filename() == lookupDirectory)
            return AbstractionPlace{lookup.parent_path().string(), folder.filename().string()};
    }
    return std::nullopt;
}

int roundOf(size_t cards) {
    const auto* const found =
        std::find(roundBoardCards.begin(), roundBoardCards.end(), static_cast<int>(cards) - 2);
    assert(found != roundBoardCards.end());
    return static_cast<int>(found - roundBoardCards.begin());
}

} // namespace

std::optional<AbstractionPlace> findAbstraction(const std::string& what,
                                                const std::string& directory) {
    const std::string folder = inDirectory(directory, lookupDirectory);
    for (const std::string& path : {what, inDirectory(directory, what), folder + "/" + what})
        if (auto place = placeOf(path))
            return place;
    return std::nullopt;
}

CLI::Option* addAbstractionOption(CLI::App& command, AbstractionPlace& place) {
    CLI::Option* const option =
        command
            .add_option("--abstraction", place.name,
                        "Name the hand's bucket in this card abstraction, too; its name or folder")
            ->type_name("NAME");
    addDirectoryOption(command, place.directory)->needs(option);
    return option;
}

std::string HandBucket::text() const {
    return fmt::format("bucket {} of {} {} ({})", bucket, buckets,
                       round == 0 ? "before the flop"
                                  : std::string("on the ") + roundNames[static_cast<size_t>(round)],
                       name);
}

nlohmann::ordered_json HandBucket::json() const {
    return {{"name", name},
            {"round", roundNames[static_cast<size_t>(round)]},
            {"bucket", bucket},
            {"buckets", buckets}};
}

Result<HandBucket> bucketOf(const AbstractionPlace& asked, const std::vector<uint8_t>& cards) {
    const int round = roundOf(cards.size());
    const AbstractionPlace place = findAbstraction(asked.name, asked.directory).value_or(asked);
    const auto abstraction = CardAbstraction::open(place.directory, place.name);
    if (!abstraction)
        return Error{abstraction.error()};
    const RoundIndexer indexer(round);
    const auto hand = static_cast<size_t>(hand_index_last(indexer.get(), cards.data()));
    return HandBucket{place.name, round, abstraction->bucket(round, hand),
                      abstraction->buckets(round)};
}

} // namespace tamarin
