// JSON as the toolbox reads and writes it: whatever the bytes, a value or a text, never an
// exception and never a stack that runs out.
#pragma once

#include <string>

#include <nlohmann/json.hpp>

namespace tamarin {

// Nothing that the toolbox writes is nested as deeply. Values are copied, printed and destroyed by
// functions that call themselves, so a file of a million brackets may not become one.
inline constexpr int deepestJson = 32; // arrays and objects around each other

// The value of a text; a discarded one (is_discarded()) when it is no JSON or too deep.
nlohmann::ordered_json readJson(const std::string& text);

// Indented by two. Bytes that are no UTF-8, which names of files may hold, become U+FFFD.
std::string jsonText(const nlohmann::ordered_json& value);

// The text as it comes back after being written so.
std::string asJsonText(const std::string& text);

} // namespace tamarin
