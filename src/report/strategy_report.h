// What the manifests say of the strategies in a playing directory; for `verify`.
#pragma once

#include <cstddef>
#include <string>

#include <nlohmann/json.hpp>

namespace tamarin {

// Compares the strategies below DIR/strategies with the manifests beside them, and checks every
// byte of blueprints and of the card abstractions that they name. A line a file goes to text, an
// entry
// {"file", "good", "result", "hash"} to files. Returns how many are wrong. A strategy that is in no
// manifest is not wrong: the player writes none for what it trains.
size_t reportStrategies(const std::string& directory, std::string& text,
                        nlohmann::ordered_json& files);

} // namespace tamarin
