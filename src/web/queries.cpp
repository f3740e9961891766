#include "web/queries.h"

#include "web/hand_view.h"
#include "web/page_files.h"

#include <charconv>

namespace tamarin {

namespace {

using Json = nlohmann::ordered_json;

constexpr int notFound = 404;
constexpr int wrongQuestion = 400;

WebAnswer problem(int status, const std::string& what) {
    WebAnswer answer;
    answer.status = status;
    answer.text = wireText({{"problem", what}});
    return answer;
}

WebAnswer told(std::string text) {
    WebAnswer answer;
    answer.text = std::move(text);
    return answer;
}

WebAnswer told(Result<std::string> result) {
    return result ? told(std::move(*result)) : problem(notFound, result.error());
}

// 0..15, or nothing for what is no hexadecimal digit.
std::optional<int> digitOf(char c) {
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return std::nullopt;
}

std::optional<std::string> decoded(std::string_view text) {
    std::string result;
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%') {
            result += text[i];
            continue;
        }
        if (i + 2 >= text.size())
            return std::nullopt;
        const auto high = digitOf(text[i + 1]);
        const auto low = digitOf(text[i + 2]);
        if (!high || !low)
            return std::nullopt;
        result += static_cast<char>(*high * 16 + *low);
        i += 2;
    }
    return result;
}

std::string valueAt(const std::map<std::string, std::string>& values, const char* name) {
    const auto found = values.find(name);
    return found == values.end() ? "" : found->second;
}

std::optional<uint64_t> numberOf(const std::string& text) {
    uint64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc{} || end != text.data() + text.size())
        return std::nullopt;
    return number;
}

} // namespace

std::optional<std::map<std::string, std::string>> queryValues(std::string_view text) {
    std::map<std::string, std::string> values;
    while (!text.empty()) {
        const std::string_view pair = text.substr(0, text.find('&'));
        text.remove_prefix(std::min(pair.size() + 1, text.size()));
        const size_t equals = pair.find('=');
        if (equals == std::string_view::npos)
            return std::nullopt;
        const auto name = decoded(pair.substr(0, equals));
        const auto value = decoded(pair.substr(equals + 1));
        if (!name || !value || !values.emplace(*name, *value).second)
            return std::nullopt;
    }
    return values;
}

WebAnswer Queries::answer(std::string_view target) const {
    const size_t mark = target.find('?');
    const std::string_view path = target.substr(0, mark);
    const auto values = queryValues(mark == std::string_view::npos ? "" : target.substr(mark + 1));
    if (!values)
        return problem(wrongQuestion, "the question cannot be read");
    if (path.starts_with("/api/"))
        return ask(path.substr(std::string_view("/api/").size()), *values);
    for (const PageFile& file : pageFiles())
        if (path == file.path)
            return {200, file.type, "", file.contents};
    return problem(notFound, "there is nothing of that name");
}

WebAnswer Queries::ask(std::string_view path,
                       const std::map<std::string, std::string>& values) const {
    const std::string log = valueAt(values, "log");
    const std::string game = valueAt(values, "game");
    if (path == "games")
        return told(games());
    if (path == "tables")
        return told(tables_.summaries());
    if (path == "logs")
        return told(history_.logs());
    if (path == "curve")
        return told(history_.curve(log));
    if (path == "strategies")
        return told(strategies_.list());
    if (path == "tree")
        return told(strategies_.tree(game));
    if (path == "grid")
        return told(strategies_.grid(game, valueAt(values, "betting"), valueAt(values, "board")));
    if (path != "hands" && path != "hand")
        return problem(notFound, "there is no such question");
    const auto number = numberOf(valueAt(values, path == "hands" ? "first" : "number"));
    if (!number)
        return problem(wrongQuestion, "a hand has a number");
    return told(path == "hands" ? history_.hands(log, *number) : history_.hand(log, *number));
}

std::string Queries::games() const {
    Json list = Json::array();
    for (const std::string& name : gameNames(directory_)) {
        const auto game = openGameFile(name, directory_);
        if (!game || !checkDealable(game->rules.get()))
            continue;
        Json opponents = Json::array();
        for (const WebOpponent& opponent : opponentsFor(*game, directory_))
            opponents.push_back({{"name", opponent.name},
                                 {"description", opponent.description},
                                 {"missing", opponent.missing}});
        list.push_back({{"game", name},
                        {"seats", game->rules->numPlayers},
                        {"rounds", game->rules->numRounds},
                        {"limit", game->rules->bettingRule == limitRule},
                        {"bigBlind", bigBlind(*game->rules)},
                        {"opponents", opponents}});
    }
    return wireText({{"games", list}});
}

} // namespace tamarin
