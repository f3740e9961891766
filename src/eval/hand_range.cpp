#include "eval/hand_range.h"

#include "game/text.h"

#include <algorithm>
#include <cassert>
#include <cctype>
#include <cstring>
#include <optional>

namespace tamarin {
namespace {

enum class Suits { any, same, different };

// Two ranks, high >= low, and which suits they may have.
struct HandClass {
    int high;
    int low;
    Suits suits = Suits::any;
    bool isPair() const { return high == low; }
};

CardSet hand(int highRank, int highSuit, int lowRank, int lowSuit) {
    return CardSet{1} << (16 * highSuit + highRank) | CardSet{1} << (16 * lowSuit + lowRank);
}

void addHands(const HandClass& ofClass, std::vector<CardSet>& hands) {
    for (int a = 0; a < 4; ++a)
        for (int b = 0; b < 4; ++b) {
            if (ofClass.isPair()
                    ? a >= b
                    : (a == b ? ofClass.suits == Suits::different : ofClass.suits == Suits::same))
                continue;
            hands.push_back(hand(ofClass.high, a, ofClass.low, b));
        }
}

std::optional<int> rankOf(char letter) {
    const char* found = std::strchr(rankChars, std::toupper(static_cast<unsigned char>(letter)));
    if (letter == '\0' || found == nullptr)
        return std::nullopt;
    return static_cast<int>(found - rankChars);
}

Error unreadable(const std::string& part, const std::string& why) {
    return Error{"cannot read the hand \"" + part + "\": " + why};
}

constexpr char noRank[] = " is no rank; ranks are 2-9, T, J, Q, K, A";

// Reads "AK", "AKs", "AKo", "TT" at the start of text and moves position past it.
Result<HandClass> readClass(const std::string& part, size_t& position) {
    int ranks[2];
    for (int& rank : ranks) {
        if (position >= part.size())
            return unreadable(part, "it ends too early; write it like AsKd, AKs, AKo, AK or TT");
        const std::optional<int> read = rankOf(part[position]);
        if (!read)
            return unreadable(part, std::string("\"") + part[position] + "\"" + noRank);
        rank = *read;
        ++position;
    }
    HandClass read{std::max(ranks[0], ranks[1]), std::min(ranks[0], ranks[1])};
    if (position < part.size()) {
        const int suffix = std::tolower(static_cast<unsigned char>(part[position]));
        if (suffix == 's' || suffix == 'o') {
            if (read.isPair())
                return unreadable(part, "a pair is neither suited nor offsuit");
            read.suits = suffix == 's' ? Suits::same : Suits::different;
            ++position;
        }
    }
    return read;
}

// Reads "random", two cards, or a class with "+" or "-" and another class after it.
Status readPart(const std::string& part, std::vector<CardSet>& hands) {
    std::string lower = part;
    for (char& c : lower)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    if (lower == "random" || lower == "any") {
        for (int high = 0; high < 13; ++high)
            for (int low = 0; low <= high; ++low)
                addHands({high, low}, hands);
        return {};
    }

    uint8_t cards[2];
    int consumed = 0;
    const int read = readCards(part.c_str(), 2, cards, &consumed);
    if (read > 0) {
        if (read < 2 || static_cast<size_t>(consumed) != part.size())
            return unreadable(part, "a hand is two cards, such as AsKd");
        if (cards[0] == cards[1])
            return unreadable(part, "it has the same card twice");
        hands.push_back(cardBit(cards[0]) | cardBit(cards[1]));
        return {};
    }

    size_t position = 0;
    const Result<HandClass> first = readClass(part, position);
    if (!first)
        return Error{first.error()};
    if (position == part.size()) {
        addHands(*first, hands);
        return {};
    }
    if (part[position] == '+' && position + 1 == part.size()) {
        HandClass next = *first;
        if (next.isPair())
            for (; next.high < 13; next.low = ++next.high)
                addHands(next, hands);
        else
            for (; next.low < next.high; ++next.low)
                addHands(next, hands);
        return {};
    }
    if (part[position] != '-')
        return unreadable(part, std::string("\"") + part[position] +
                                    "\" is not expected here; write it like AKs, TT+ or A5s-A2s");
    ++position;
    const Result<HandClass> second = readClass(part, position);
    if (!second)
        return Error{second.error()};
    if (position != part.size())
        return unreadable(part, "there is more after the second hand");
    const bool ascending = first->low < second->low || first->high < second->high;
    HandClass next = ascending ? *first : *second;
    const HandClass last = ascending ? *second : *first;
    const bool sameHigh = next.high == last.high && next.isPair() == last.isPair();
    const bool sameGap = next.high - next.low == last.high - last.low;
    if (next.suits != last.suits || (!sameHigh && !sameGap))
        return unreadable(part, "its ends must be alike: two pairs, or both suited or both "
                                "offsuit with the same high card or the same gap");
    for (;; ++next.low) {
        addHands(next, hands);
        if (next.low == last.low)
            return {};
        if (!sameHigh)
            ++next.high;
    }
}

std::string trimmed(const std::string& text) {
    const size_t first = text.find_first_not_of(" \t");
    if (first == std::string::npos)
        return {};
    return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

} // namespace

Result<HandRange> parseHandRange(const std::string& text) {
    HandRange range{text, {}};
    size_t start = 0;
    while (true) {
        const size_t comma = std::min(text.find(',', start), text.size());
        const std::string part = trimmed(text.substr(start, comma - start));
        if (part.empty())
            return Error{"cannot read the hands \"" + text +
                         "\": nothing stands where a hand should"};
        if (Status status = readPart(part, range.hands); !status)
            return Error{status.error()};
        if (comma == text.size())
            break;
        start = comma + 1;
    }
    std::sort(range.hands.begin(), range.hands.end());
    range.hands.erase(std::unique(range.hands.begin(), range.hands.end()), range.hands.end());
    return range;
}

Result<std::vector<uint8_t>> parseCards(const std::string& text) {
    std::vector<uint8_t> cards;
    CardSet seen = 0;
    for (size_t i = 0; i < text.size();) {
        if (text[i] == ' ' || text[i] == '\t' || text[i] == ',') {
            ++i;
            continue;
        }
        uint8_t card = 0;
        const std::string two = text.substr(i, 2);
        if (readCard(two.c_str(), &card) != 2)
            return Error{"cannot read the card \"" + two + "\" in \"" + text +
                         "\"; cards are a rank 2-9, T, J, Q, K, A and a suit c, d, h, s"};
        if ((seen & cardBit(card)) != 0)
            return Error{"the card " + two + " stands twice in \"" + text + "\""};
        seen |= cardBit(card);
        cards.push_back(card);
        i += 2;
    }
    return cards;
}

CardSet cardSetOf(const std::vector<uint8_t>& cards) {
    CardSet set = 0;
    for (const uint8_t card : cards) {
        assert((set & cardBit(card)) == 0);
        set |= cardBit(card);
    }
    return set;
}

std::string printCardSet(CardSet cards) {
    std::string text;
    for (int card = 51; card >= 0; --card)
        if ((cards & cardBit(static_cast<uint8_t>(card))) != 0) {
            text += rankChars[card / 4];
            text += suitChars[card % 4];
        }
    return text;
}

} // namespace tamarin
