// tamarin rank: names a hand of five to seven cards, and its place among all hands.
#include "eval/hand_range.h"
#include "eval/hand_value.h"
#include "toolbox/command.h"

#include <memory>

namespace tamarin {

namespace {

struct RankArguments {
    std::vector<std::string> hands;
    bool json = false;
};

// Arguments that are single cards make one hand together; otherwise each argument is a hand.
std::vector<std::string> handsOf(const std::vector<std::string>& arguments) {
    std::string together;
    for (const std::string& argument : arguments) {
        if (argument.size() != 2)
            return arguments;
        together += argument;
    }
    return {together};
}

int rank(const RankArguments& options) {
    auto list = nlohmann::ordered_json::array();
    std::string text;
    for (const std::string& hand : handsOf(options.hands)) {
        const auto cards = parseCards(hand);
        if (!cards)
            throw UsageError(cards.error());
        if (cards->size() < 5 || cards->size() > 7)
            throw UsageError(
                fmt::format("a hand has 5 to 7 cards, but \"{}\" has {}", hand, cards->size()));
        const CardSet set = cardSetOf(*cards);
        const uint32_t value = handValueOf(set);
        const uint32_t category = value >> 12;
        list.push_back({{"cards", hand},
                        {"words", describeHand(set)},
                        {"category", category},
                        {"categoryName", categoryNames[category - 1]},
                        {"value", value},
                        {"rank", denseRankOfValue(value)},
                        {"ranks", handClasses}});
        text +=
            fmt::format("{}: {}; category {}, value {}, rank {} of {}\n", hand, describeHand(set),
                        category, value, denseRankOfValue(value), handClasses);
    }
    if (options.json)
        printJson(list);
    else
        fmt::print("{}", text);
    return exitDone;
}

} // namespace

void addRankCommand(CLI::App& app, int& status) {
    auto options = std::make_shared<RankArguments>();
    CLI::App& command = addCommand(
        app, "rank", "Name hands of five to seven cards and say how good they are",
        "tamarin rank AsKsQsJsTs2c3d\n"
        "  tamarin rank Kh Kd Kc 3s 3c\n"
        "  tamarin rank AhKh9h5h2h 9c9d9h2s2c --json\n\n"
        "Single cards make one hand together, otherwise every argument is a hand. The value is\n"
        "category * 4096 + place within the category, the rank that among the 7,462 different\n"
        "hands of five cards, 7462 being a royal flush.");
    command.add_option("CARDS", options->hands, "Cards, such as AsKsQsJsTs")->required();
    addJsonOption(command, options->json);
    command.callback([options, &status] { status = rank(*options); });
}

} // namespace tamarin
