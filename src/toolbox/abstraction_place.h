// The card abstraction that a person means, and the bucket of a hand in it.
#pragma once

#include "clustering/abstraction_name.h"
#include "support/result.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

namespace tamarin {

// Where its folder lies: DIRECTORY/lookup/NAME.
struct AbstractionPlace {
    std::string directory;
    std::string name;
};

// The folder that is meant by its path, by its path below the playing directory, or by its name;
// nothing where none of these is a folder in a folder lookup.
std::optional<AbstractionPlace> findAbstraction(const std::string& what,
                                                const std::string& directory);

// --abstraction NAME and --dir DIR, of commands that take a hand; what was typed, not yet found.
CLI::Option* addAbstractionOption(CLI::App& command, AbstractionPlace& place);

struct HandBucket {
    std::string name; // of the abstraction
    int round;
    uint16_t bucket;
    size_t buckets; // of the round

    // "bucket 17 of 200 on the flop (169-200-200-200)"
    std::string text() const;
    nlohmann::ordered_json json() const;
};

// asked: as a person typed it, for findAbstraction. cards: two hole cards and 0, 3, 4 or 5 board
// cards, all different. Refuses an abstraction that is missing or damaged, wherever the damage is.
Result<HandBucket> bucketOf(const AbstractionPlace& asked, const std::vector<uint8_t>& cards);

} // namespace tamarin
