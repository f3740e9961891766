#include "web/client_message.h"

#include "directory/json.h"

#include <optional>

namespace tamarin {

namespace {

using Json = nlohmann::ordered_json;

constexpr size_t longestName = 200;

// Each gives nothing where the member is missing or is something else.
std::optional<std::string> textAt(const Json& object, const char* name) {
    const auto found = object.find(name);
    if (found == object.end() || !found->is_string())
        return std::nullopt;
    auto text = found->get<std::string>();
    if (text.size() > longestName)
        return std::nullopt;
    return text;
}

std::optional<uint32_t> numberAt(const Json& object, const char* name, uint64_t most = UINT32_MAX) {
    const auto found = object.find(name);
    if (found == object.end() || !found->is_number_unsigned() || found->get<uint64_t>() > most)
        return std::nullopt;
    return static_cast<uint32_t>(found->get<uint64_t>());
}

Result<ClientMessage> readSit(const Json& object) {
    ClientMessage message;
    message.kind = ClientMessage::Kind::sit;
    const auto game = textAt(object, "game");
    const auto opponents = object.find("opponents");
    if (!game || opponents == object.end() || !opponents->is_array() ||
        opponents->size() >= MAX_PLAYERS)
        return Error{"\"sit\" needs a game and its opponents"};
    message.game = *game;
    for (const Json& opponent : *opponents) {
        if (!opponent.is_string() || opponent.get_ref<const std::string&>().size() > longestName)
            return Error{"an opponent is a name"};
        message.opponents.push_back(opponent.get<std::string>());
    }
    return message;
}

Result<ClientMessage> readAct(const Json& object) {
    ClientMessage message;
    message.kind = ClientMessage::Kind::act;
    const auto hand = numberAt(object, "hand");
    const auto actions = numberAt(object, "actions");
    const auto action = textAt(object, "action");
    if (!hand || !actions || !action)
        return Error{"\"act\" needs a hand, the actions before and an action"};
    message.hand = *hand;
    message.actions = *actions;
    if (*action == "f")
        message.action.type = actionFold;
    else if (*action == "c")
        message.action.type = actionCall;
    else if (*action == "r")
        message.action.type = actionRaise;
    else
        return Error{"an action is f, c or r"};
    if (!object.contains("size"))
        return message;
    const auto size = numberAt(object, "size", INT32_MAX);
    if (!size || message.action.type != actionRaise)
        return Error{"a size is a whole number of chips, and belongs to a raise"};
    message.action.size = static_cast<int32_t>(*size);
    return message;
}

} // namespace

Result<ClientMessage> readClientMessage(const std::string& text) {
    if (text.size() > longestMessage)
        return Error{"the message is too long"};
    const Json object = readJson(text);
    if (!object.is_object())
        return Error{"the message is no JSON object"};
    const auto type = textAt(object, "type");
    if (!type)
        return Error{"the message has no type"};
    if (*type == "sit")
        return readSit(object);
    if (*type == "act")
        return readAct(object);
    ClientMessage message;
    if (*type == "leave")
        return message;
    const bool back = *type == "back";
    if (!back && *type != "next")
        return Error{"there is no message of that type"};
    const auto number = numberAt(object, back ? "table" : "hand");
    if (!number)
        return Error{back ? "\"back\" needs a table" : "\"next\" needs a hand"};
    message.kind = back ? ClientMessage::Kind::back : ClientMessage::Kind::next;
    (back ? message.table : message.hand) = *number;
    return message;
}

} // namespace tamarin
