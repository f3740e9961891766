// JSON as the toolbox reads and writes it: whatever the bytes, a value or a text, never an
// exception and never a stack that runs out.
#pragma once

#include <string>

#include <nlohmann/json.hpp>

namespace tamarin {

// Deeper than anything that the toolbox writes. Values are copied, printed and destroyed by
// functions that call themselves, so a file of a million brackets must not become a value.
inline constexpr int deepestJson = 32; // arrays and objects around each other

// The value of a text; a discarded one (is_discarded()) when the text is not JSON or too deep.
nlohmann::ordered_json readJson(const std::string& text);

// Indented by two. Bytes that are not UTF-8, which names of files may hold, become U+FFFD.
std::string jsonText(const nlohmann::ordered_json& value);

// The text as it comes back after being written so.
std::string asJsonText(const std::string& text);

} // namespace tamarin
