#include "directory/json.h"

namespace tamarin {

nlohmann::ordered_json readJson(const std::string& text) {
    using Json = nlohmann::ordered_json;
    using Event = Json::parse_event_t;
    bool tooDeep = false;
    const auto shallow = [&](int around, Event event, const Json&) {
        tooDeep |=
            around >= deepestJson && (event == Event::object_start || event == Event::array_start);
        return !tooDeep; // what is refused here is never made
    };
    Json value = Json::parse(text, shallow, false);
    return tooDeep ? Json(Json::value_t::discarded) : value;
}

std::string jsonText(const nlohmann::ordered_json& value) {
    return value.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
}

std::string asJsonText(const std::string& text) {
    return readJson(jsonText(text)).get<std::string>();
}

} // namespace tamarin
