// tamarin index: the number of a hand among those that are distinct up to suits, and back.
#include "abstraction/round_indexers.h"
#include "eval/hand_range.h"
#include "game/text.h"
#include "index/hand_indexer.h"
#include "toolbox/abstraction_place.h"
#include "toolbox/command.h"
#include "toolbox/round_argument.h"

#include <charconv>
#include <optional>

namespace tamarin {

namespace {

struct IndexArguments {
    std::vector<std::string> cards;
    std::vector<std::string> unindex; // ROUND INDEX
    std::string rounds;
    bool sizes = false;
    AbstractionPlace place; // no name: no bucket is wanted
    bool json = false;
};

// The tables' structures: all board cards of a round as one group.
std::vector<uint8_t> tableStructure(size_t round) {
    constexpr std::array<uint8_t, 4> boardCards = {0, 3, 4, 5};
    return round == 0 ? std::vector<uint8_t>{2} : std::vector<uint8_t>{2, boardCards[round]};
}

template <class Number>
std::optional<Number> readNumber(const std::string& text) {
    Number number{};
    const char* end = text.data() + text.size();
    const auto [stopped, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc{} || stopped != end)
        return std::nullopt;
    return number;
}

// "2,3,1,1".
std::vector<uint8_t> readRounds(const std::string& text) {
    std::vector<uint8_t> rounds;
    for (size_t from = 0; from <= text.size();) {
        const size_t comma = std::min(text.find(',', from), text.size());
        const auto cards = readNumber<uint8_t>(text.substr(from, comma - from));
        if (!cards)
            throw UsageError(fmt::format(
                "cannot read --rounds \"{}\"; it is the cards of each round, as in 2,3,1,1", text));
        rounds.push_back(*cards);
        from = comma + 1;
    }
    return rounds;
}

HandIndexer makeIndexer(const std::vector<uint8_t>& structure) {
    auto indexer = HandIndexer::make(structure);
    if (!indexer) {
        std::string cards;
        for (const uint8_t count : structure)
            cards += (cards.empty() ? "" : ",") + std::to_string(count);
        throw UsageError(fmt::format("rounds of {} cards cannot be indexed: at most 4 rounds, 52 "
                                     "cards and as many hands as 64 bits number",
                                     cards));
    }
    return std::move(*indexer);
}

// Rounds apart, so that the text can be read back: "AsKd Qs8h3d".
std::string showHand(const HandIndexer& indexer, const std::vector<uint8_t>& cards) {
    std::string text;
    for (unsigned round = 0, at = 0; at < cards.size(); ++round) {
        if (at > 0)
            text += ' ';
        for (unsigned i = 0; i < indexer.cardsIn(round) && at < cards.size(); ++i, ++at) {
            char card[3] = {};
            printCard(cards[at], sizeof card, card);
            text += card;
        }
    }
    return text;
}

int print(const IndexArguments& options, const HandIndexer& indexer, unsigned round,
          hand_index_t index, const std::vector<uint8_t>& cards, const std::string& answer) {
    std::optional<HandBucket> bucket;
    if (!options.place.name.empty()) {
        const auto found = bucketOf(options.place, cards);
        if (!found)
            return fail(found.error());
        bucket = *found;
    }
    if (!options.json) {
        fmt::print("{}\n", answer);
        if (bucket)
            fmt::print("{}\n", bucket->text());
        return exitDone;
    }
    std::vector<unsigned> rounds;
    for (unsigned r = 0; r < indexer.rounds(); ++r)
        rounds.push_back(indexer.cardsIn(r));
    const auto canonical = indexer.unindex(round, index);
    nlohmann::ordered_json json = {{"rounds", rounds},
                                   {"round", round},
                                   {"index", index},
                                   {"size", indexer.size(round)},
                                   {"cards", showHand(indexer, cards)},
                                   {"canonical", showHand(indexer, *canonical)}};
    if (bucket)
        json["abstraction"] = bucket->json();
    printJson(json);
    return exitDone;
}

int indexCards(const IndexArguments& options) {
    std::string text;
    for (const std::string& part : options.cards)
        text += part + " ";
    const auto cards = parseCards(text.substr(0, text.size() - 1));
    if (!cards)
        throw UsageError(cards.error());

    std::vector<uint8_t> structure;
    if (!options.rounds.empty())
        structure = readRounds(options.rounds);
    else if (cards->size() == 2)
        structure = tableStructure(0);
    else if (cards->size() >= 5 && cards->size() <= 7)
        structure = tableStructure(cards->size() - 4);
    else
        throw UsageError(fmt::format("{} cards are no hand of hold'em: give 2, 5, 6 or 7, or "
                                     "other --rounds",
                                     cards->size()));

    const HandIndexer indexer = makeIndexer(structure);
    for (unsigned round = 0; round < indexer.rounds(); ++round)
        if (indexer.cardsThrough(round) == cards->size()) {
            const hand_index_t index = indexer.index(round, cards->data());
            return print(options, indexer, round, index, *cards, std::to_string(index));
        }
    throw UsageError(
        fmt::format("{} cards do not end any of the rounds {}", cards->size(), options.rounds));
}

int unindexCards(const IndexArguments& options) {
    const std::string& roundText = options.unindex[0];
    const std::string& indexText = options.unindex[1];
    unsigned round = 0;
    const auto index = readNumber<hand_index_t>(indexText);
    if (!index)
        throw UsageError(
            fmt::format("cannot read the index \"{}\"; it is a number from 0", indexText));

    std::vector<uint8_t> structure;
    if (!options.rounds.empty()) {
        structure = readRounds(options.rounds);
        const auto number = readNumber<unsigned>(roundText);
        if (!number || *number >= structure.size())
            throw UsageError(fmt::format("there is no round \"{}\" in {}; they count from 0",
                                         roundText, options.rounds));
        round = *number;
    } else {
        const int dealt = readRound(roundText);
        structure = tableStructure(static_cast<size_t>(dealt));
        round = dealt == 0 ? 0 : 1;
    }

    const HandIndexer indexer = makeIndexer(structure);
    const auto cards = indexer.unindex(round, *index);
    if (!cards)
        throw UsageError(fmt::format("there is no index {}: round {} has {} hands, 0 to {}", *index,
                                     roundText, indexer.size(round), indexer.size(round) - 1));
    return print(options, indexer, round, *index, *cards, showHand(indexer, *cards));
}

int printSizes(const IndexArguments& options) {
    std::vector<uint64_t> sizes;
    if (options.rounds.empty()) {
        for (size_t round = 0; round < holdemRounds; ++round) {
            const HandIndexer indexer = makeIndexer(tableStructure(round));
            sizes.push_back(indexer.size(indexer.rounds() - 1));
        }
    } else {
        const HandIndexer indexer = makeIndexer(readRounds(options.rounds));
        for (unsigned round = 0; round < indexer.rounds(); ++round)
            sizes.push_back(indexer.size(round));
    }
    if (options.json)
        printJson(sizes);
    else
        for (const uint64_t size : sizes)
            fmt::print("{}\n", size);
    return exitDone;
}

int index(const IndexArguments& options) {
    const int asked = !options.cards.empty() + !options.unindex.empty() + options.sizes;
    if (asked != 1)
        throw UsageError("give either CARDS, or --unindex ROUND INDEX, or --sizes");
    if (options.sizes)
        return printSizes(options);
    return options.unindex.empty() ? indexCards(options) : unindexCards(options);
}

} // namespace

void addIndexCommand(CLI::App& app, int& status) {
    auto options = std::make_shared<IndexArguments>();
    CLI::App& command = addCommand(
        app, "index", "Print the number of a hand among those distinct up to suits, or the hand",
        "tamarin index AsKd Qs8h3d\n"
        "  tamarin index AsKd Qs8h3d --abstraction 169-200-200-200 --dir run\n"
        "  tamarin index --unindex flop 612345\n"
        "  tamarin index --rounds 2,3,1,1 AsKd Qs8h3d 7c\n\n"
        "Hands that a renaming of the suits turns into each other have one number. Without\n"
        "--rounds it is that of the tables in lookup/: two hole cards, then the board as one\n"
        "group of 3, 4 or 5. With --rounds the board comes as it is dealt, and the number is that\n"
        "of the last round whose cards are there.");
    command.add_option("CARDS", options->cards, "Hole cards, then board cards")->expected(0, -1);
    command.add_option("--unindex", options->unindex, "Print a hand with this number instead")
        ->expected(2)
        ->type_name("ROUND INDEX");
    CLI::Option* const rounds =
        command.add_option("--rounds", options->rounds, "Cards dealt in each round, as in 2,3,1,1")
            ->type_name("N,...");
    CLI::Option* const sizes = command.add_flag("--sizes", options->sizes,
                                                "Print how many numbers each round has instead");
    addAbstractionOption(command, options->place)->excludes(rounds)->excludes(sizes);
    addJsonOption(command, options->json);
    command.callback([options, &status] { status = index(*options); });
}

} // namespace tamarin
