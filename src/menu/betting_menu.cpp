#include "menu/betting_menu.h"

#include "support/file.h"
#include "support/fnv.h"

#include <algorithm>
#include <optional>
#include <string_view>

namespace tamarin {

namespace {

constexpr std::array<const char*, MAX_ROUNDS> menuRounds{"preflop", "flop", "turn", "river"};

bool isBlank(char c) {
    return c == ' ' || c == '\t' || c == '\r';
}

std::string_view trimmed(std::string_view text) {
    while (!text.empty() && isBlank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back()))
        text.remove_suffix(1);
    return text;
}

// What is before the first separator, which is taken away with it.
std::string_view takeUntil(std::string_view& text, char separator) {
    const size_t end = std::min(text.find(separator), text.size());
    const std::string_view part = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return part;
}

std::string_view takeWord(std::string_view& text) {
    text = trimmed(text);
    size_t end = 0;
    while (end < text.size() && !isBlank(text[end]))
        ++end;
    const std::string_view word = text.substr(0, end);
    text.remove_prefix(end);
    return word;
}

// For a message: what may be any bytes, and long.
std::string quoted(std::string_view text) {
    std::string shown;
    for (const char c : text.substr(0, 40))
        shown += c >= ' ' && c <= '~' ? c : '?';
    return '"' + shown + (text.size() > 40 ? "...\"" : "\"");
}

std::string listsAsText(const std::vector<std::vector<BetSize>>& lists) {
    std::string text;
    for (const auto& list : lists) {
        text += text.empty() ? "" : ",";
        for (const BetSize& size : list)
            text += ' ' + textOf(size);
        if (list.empty())
            text += " none";
    }
    return text;
}

} // namespace

// One text, line by line.
class MenuReader {
public:
    MenuReader(std::string_view text, const std::string& name) : text_(text), name_(name) {}

    Result<BettingMenu> read() {
        if (text_.size() > BettingMenu::mostBytes)
            return Error{name_ + ": " + std::to_string(text_.size()) +
                         " bytes are no bet menu; it has a few lines"};
        while (!text_.empty() && !error_) {
            ++line_;
            std::string_view line = takeUntil(text_, '\n');
            line = trimmed(takeUntil(line, '#'));
            if (!line.empty())
                readLine(line);
        }
        if (!error_ && lines_[0] == Lines{})
            return Error{name_ + ": no bets; a line such as \"bets = 1 A\" says which there are"};
        if (error_)
            return Error{*error_};
        fill(menu_.bets_, lines_[0]);
        fill(menu_.besides_, lines_[1]);
        menu_.normalise();
        return std::move(menu_);
    }

private:
    using Lines = std::array<std::optional<BettingMenu::RoundLists>, MAX_ROUNDS>;

    void fail(const std::string& what) {
        error_ = name_ + ':' + std::to_string(line_) + ": " + what;
    }

    void readLine(std::string_view line) {
        if (line.find('=') == std::string_view::npos)
            return fail(quoted(line) + " has no \"=\"; a line is such as \"bets = 1 A\"");
        std::string_view head = takeUntil(line, '=');
        const std::string_view key = takeWord(head);
        const std::string_view round = takeWord(head);
        if (key != "bets" && key != "opponents")
            return fail(quoted(key) + " is unknown; lines begin with bets or opponents");
        size_t number = 0;
        if (!round.empty()) {
            number = static_cast<size_t>(std::ranges::find(menuRounds, round) - menuRounds.begin());
            if (number == menuRounds.size() || !trimmed(head).empty())
                return fail("there is no round " + quoted(round) +
                            "; it is preflop, flop, turn or river");
        }
        auto& lists = lines_[key == "bets" ? 0 : 1][number];
        if (lists)
            return fail("a second line for " + std::string(key) + " of " + menuRounds[number] +
                        "; put all lists into one");
        lists = readLists(line, key == "bets" ? BettingMenu::mostSizes : BettingMenu::mostBesides);
    }

    BettingMenu::RoundLists readLists(std::string_view text, size_t mostSizes) {
        BettingMenu::RoundLists lists;
        while (!error_) {
            const bool last = text.find(',') == std::string_view::npos;
            std::string_view part = takeUntil(text, ',');
            if (lists.size() == BettingMenu::mostLists)
                fail("more than " + std::to_string(BettingMenu::mostLists) +
                     " lists; the last one goes on for all raises after it");
            else
                lists.push_back(readSizes(part, mostSizes));
            if (last)
                break;
        }
        return lists;
    }

    BettingMenu::SizeList readSizes(std::string_view text, size_t most) {
        BettingMenu::SizeList sizes;
        if (trimmed(text).empty())
            fail("a list is empty; write its sizes, or none");
        if (trimmed(text) == "none")
            return sizes;
        for (std::string_view word = takeWord(text); !word.empty() && !error_;
             word = takeWord(text)) {
            const auto size = parseBetSize(word);
            if (!size)
                fail("there is no size " + quoted(word) +
                     "; sizes are pots (1/2, 0.75, 2; at most " +
                     std::to_string(BetSize::mostUnits) + "), big blinds (3b), min and A");
            else if (std::ranges::find(sizes, *size) != sizes.end())
                fail("the size " + std::string(word) + " stands twice in a list; leave one out");
            else if (sizes.size() == most)
                fail("more than " + std::to_string(most) + " sizes in a list; leave some out");
            else
                sizes.push_back(*size);
        }
        return sizes;
    }

    static void fill(std::array<BettingMenu::RoundLists, MAX_ROUNDS>& lists, const Lines& lines) {
        for (size_t round = 0; round < MAX_ROUNDS; ++round) {
            if (lines[round])
                lists[round] = *lines[round];
            else
                lists[round] = round == 0 ? BettingMenu::RoundLists{{}} : lists[round - 1];
        }
    }

    std::string_view text_;
    const std::string& name_;
    int line_ = 0;
    std::array<Lines, 2> lines_; // of bets and of opponents
    std::optional<std::string> error_;
    BettingMenu menu_;
};

Result<BettingMenu> BettingMenu::parse(const std::string& text, const std::string& name) {
    return MenuReader(text, name).read();
}

Result<BettingMenu> BettingMenu::read(const std::string& path) {
    const Result<std::string> text = readWholeFile(path, mostBytes);
    return text ? parse(*text, path) : Error{text.error()};
}

// A list that says what the one before it says already is left out at the end of a line.
void BettingMenu::normalise() {
    for (auto* rounds : {&bets_, &besides_})
        for (RoundLists& lists : *rounds)
            while (lists.size() > 1 && lists.back() == lists[lists.size() - 2])
                lists.pop_back();
}

std::string BettingMenu::text() const {
    std::string text;
    const RoundLists nothing{{}};
    const auto write = [&](const char* key, const std::array<RoundLists, MAX_ROUNDS>& rounds,
                           bool always) {
        for (size_t round = 0; round < rounds.size(); ++round) {
            if (round == 0 ? !always && rounds[0] == nothing : rounds[round] == rounds[round - 1])
                continue;
            text += key;
            if (round > 0)
                text += std::string(" ") + menuRounds[round];
            text += " =" + listsAsText(rounds[round]) + '\n';
        }
    };
    write("bets", bets_, true);
    write("opponents", besides_, false);
    return text;
}

uint64_t BettingMenu::hash() const {
    Fnv1a hash;
    hash.add(text());
    return hash.value();
}

bool BettingMenu::hasBesides() const {
    return std::ranges::any_of(besides_, [](const RoundLists& lists) {
        return std::ranges::any_of(lists, [](const SizeList& list) { return !list.empty(); });
    });
}

std::vector<int32_t> BettingMenu::raises(const Game& game, const State& state, bool besides) const {
    std::vector<int32_t> totals;
    const auto add = [&](const RoundLists& lists) {
        for (const BetSize& size : lists[std::min<size_t>(numRaises(&state), lists.size() - 1)])
            if (const auto total = legalRaise(raiseOfSize(size, game, state), game, state))
                totals.push_back(*total);
    };
    int32_t least = 0;
    int32_t most = 0;
    if (!mayRaise(game, state, least, most))
        return totals;
    add(bets_[state.round]);
    if (besides)
        add(besides_[state.round]);
    std::ranges::sort(totals);
    totals.erase(std::unique(totals.begin(), totals.end()), totals.end());
    return totals;
}

} // namespace tamarin
