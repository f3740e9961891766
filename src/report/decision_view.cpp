#include "report/decision_view.h"

#include "abstraction/round_indexers.h"
#include "game/text.h"
#include "report/holdem_chart.h"

#include <algorithm>

#include <fmt/format.h>

namespace tamarin {

namespace {

constexpr char gridRanks[] = "AKQJT98765432";
constexpr size_t numRanks = 13;
// Hands that come as seldom do not come: the file has probabilities of 1/255.
constexpr double never = 1e-12;

using ClassGrid = std::array<std::array<DecisionView::Total, numRanks>, numRanks>;

// The place of a starting hand in the grid: suited above the diagonal.
std::array<size_t, 2> placeOf(const HoleCards& cards) {
    const size_t low = numRanks - 1 - static_cast<size_t>(cards[0] / MAX_SUITS);
    const size_t high = numRanks - 1 - static_cast<size_t>(cards[1] / MAX_SUITS);
    const bool suited = cards[0] % MAX_SUITS == cards[1] % MAX_SUITS;
    return suited ? std::array{std::min(low, high), std::max(low, high)}
                  : std::array{std::max(low, high), std::min(low, high)};
}

ClassGrid classesOf(const DecisionView& view) {
    ClassGrid grid{};
    for (const DecisionView::Hand& hand : view.hands) {
        const auto [row, column] = placeOf(hand.cards);
        grid[row][column].add(hand);
    }
    for (auto& row : grid)
        for (DecisionView::Total& total : row)
            total.finish();
    return grid;
}

std::string cardsText(std::span<const uint8_t> cards) {
    char text[2 * (MAX_HOLE_CARDS + MAX_BOARD_CARDS) + 1] = {};
    printCards(static_cast<int>(cards.size()), cards.data(), sizeof text, text);
    return text;
}

// "r87", "c100", or a point where the class does not come here.
std::string gridCell(const DecisionView::Total& total) {
    if (total.reach <= never)
        return ".";
    const auto best =
        static_cast<size_t>(std::ranges::max_element(total.shares) - total.shares.begin());
    return fmt::format("{}{:.0f}", actionChars[best], 100.0 * total.shares[best]);
}

nlohmann::ordered_json sharesJson(const DecisionView& view, const ActionShares& shares) {
    nlohmann::ordered_json json;
    for (size_t a = 0; a < shares.size(); ++a)
        if (view.allowed[a])
            json[abstractedActionNames[a]] = shares[a];
    return json;
}

std::string roundText(const DecisionView& view) {
    return view.round == 0 ? "before the flop"
                           : std::string("on the ") + roundNames[static_cast<size_t>(view.round)] +
                                 " " + cardsText(view.board);
}

// The nodes on the way from the first one, each with the action that was taken there.
std::vector<std::pair<int32_t, size_t>> wayTo(const CompiledTree& tree, int32_t node) {
    std::vector<std::pair<int32_t, size_t>> way;
    for (int32_t edge = tree.nodes()[static_cast<size_t>(node)].parentEdge;
         edge != CompiledTree::noEdge;) {
        const int32_t from = edge / numAbstractedActions;
        way.emplace_back(from, static_cast<size_t>(edge % numAbstractedActions));
        edge = tree.nodes()[static_cast<size_t>(from)].parentEdge;
    }
    std::ranges::reverse(way);
    return way;
}

// The actions before a node, "/" where a round begins.
std::string actionsTo(const CompiledTree& tree, int32_t node) {
    std::string text;
    int round = 0;
    const auto roundAt = [&](int32_t at) {
        for (; round < tree.nodes()[static_cast<size_t>(at)].round; ++round)
            text += '/';
    };
    for (const auto& [from, action] : wayTo(tree, node)) {
        roundAt(from);
        text += actionChars[action];
    }
    roundAt(node);
    return text;
}

std::string whatFollows(const CompiledTree& tree, const CompiledTree::Node& node, int32_t child) {
    if (child < 0)
        return "the hand ends";
    const auto& next = tree.nodes()[static_cast<size_t>(child)];
    if (next.round != node.round)
        return std::string("the ") + roundNames[next.round];
    return fmt::format("seat {}", next.player);
}

Status isBoard(const PublicDeck& deck, const std::vector<uint8_t>& board, int round) {
    const auto wanted = static_cast<size_t>(roundBoardCards[static_cast<size_t>(round)]);
    if (board.size() != wanted)
        return Error{
            fmt::format("the decision is {}{}, where the board has {} cards, not {}",
                        round == 0 ? "" : "on the ",
                        round == 0 ? "before the flop" : roundNames[static_cast<size_t>(round)],
                        wanted, board.size())};
    for (size_t i = 0; i < board.size(); ++i) {
        const std::string card = cardsText(std::span(board).subspan(i, 1));
        if (std::ranges::find(deck.cards(), board[i]) == deck.cards().end())
            return Error{"the game's deck has no " + card};
        if (std::find(board.begin(), board.begin() + static_cast<std::ptrdiff_t>(i), board[i]) !=
            board.begin() + static_cast<std::ptrdiff_t>(i))
            return Error{"the board has " + card + " twice"};
    }
    return {};
}

} // namespace

void DecisionView::Total::add(const Hand& hand) {
    hands += 1;
    reach += hand.reach;
    for (size_t a = 0; a < shares.size(); ++a)
        shares[a] += hand.reach * hand.shares[a];
}

void DecisionView::Total::finish() {
    if (reach > never)
        for (double& share : shares)
            share /= reach;
}

DecisionView::Total DecisionView::total() const {
    Total total;
    for (const Hand& hand : hands)
        total.add(hand);
    total.finish();
    return total;
}

Result<int32_t> followActions(const CompiledTree& tree, const std::string& actions) {
    int32_t node = 0;
    std::string before;
    for (const char letter : actions) {
        if (letter == '/')
            continue;
        const ActionType type = charToAction[static_cast<unsigned char>(letter)];
        if (type == actionInvalid)
            return Error{fmt::format("'{}' is no action: they are f, c and r", letter)};
        const int32_t child = tree.nodes()[static_cast<size_t>(node)].child[type];
        before += letter;
        if (child == CompiledTree::noChild)
            return Error{fmt::format("the rules do not allow the last action of \"{}\"", before)};
        if (child < 0)
            return Error{fmt::format("after \"{}\" the hand is over", before)};
        node = child;
    }
    return node;
}

Result<DecisionView> viewDecision(const Game& game, const CompiledTree& tree,
                                  const HandStrategy& strategy, int32_t number,
                                  const std::vector<uint8_t>& board) {
    const PublicDeck deck(game);
    const auto& node = tree.nodes()[static_cast<size_t>(number)];
    if (Status good = isBoard(deck, board, node.round); !good)
        return Error{good.error()};
    DecisionView view;
    view.actions = actionsTo(tree, number);
    view.seat = node.player;
    view.round = node.round;
    view.board = board;
    for (size_t a = 0; a < view.allowed.size(); ++a) {
        view.allowed[a] = node.child[a] != CompiledTree::noChild;
        if (view.allowed[a])
            view.next[a] = whatFollows(tree, node, node.child[a]);
    }
    const auto way = wayTo(tree, number);
    for (size_t h = 0; h < deck.holdings().size(); ++h) {
        const HoleCards hole = deck.cardsOf(h);
        if (std::ranges::find_first_of(board, hole) != board.end())
            continue;
        std::vector<uint8_t> cards(hole.begin(), hole.end());
        cards.insert(cards.end(), board.begin(), board.end());
        std::array<uint16_t, holdemRounds> known{};
        for (int round = 0; round <= node.round; ++round)
            known[static_cast<size_t>(round)] = strategy.classOf(
                node.player, round,
                std::span(cards).first(
                    2 + static_cast<size_t>(roundBoardCards[static_cast<size_t>(round)])));
        double reach = 1;
        for (const auto& [at, action] : way) {
            const auto& before = tree.nodes()[static_cast<size_t>(at)];
            if (before.player == node.player)
                reach *= strategy.shares(at, known[before.round])[action];
        }
        view.hands.push_back(
            {hole, known[node.round], reach, strategy.shares(number, known[node.round])});
    }
    return view;
}

std::string decisionText(const DecisionView& view) {
    const DecisionView::Total total = view.total();
    std::string text = fmt::format("seat {} {}, {}\n", view.seat, roundText(view),
                                   view.actions.empty() ? "first to act" : "after " + view.actions);
    text += fmt::format("{:.1f}% of its hands come here\n", 100.0 * total.reach / total.hands);
    for (size_t a = 0; a < view.allowed.size(); ++a)
        if (view.allowed[a])
            text += fmt::format("  {:<6}{:>6.1f}%, then {}\n", abstractedActionNames[a],
                                100.0 * total.shares[a], view.next[a]);
    text += "\n  ";
    for (size_t column = 0; column < numRanks; ++column)
        text += fmt::format("{:>5}", gridRanks[column]);
    const ClassGrid grid = classesOf(view);
    for (size_t row = 0; row < numRanks; ++row) {
        text += fmt::format("\n{:>2}", gridRanks[row]);
        for (size_t column = 0; column < numRanks; ++column)
            text += fmt::format("{:>5}", gridCell(grid[row][column]));
    }
    return text + "\n";
}

nlohmann::ordered_json decisionJson(const DecisionView& view) {
    const DecisionView::Total total = view.total();
    const ClassGrid grid = classesOf(view);
    nlohmann::ordered_json classes;
    for (size_t row = 0; row < numRanks; ++row)
        for (size_t column = 0; column < numRanks; ++column)
            if (const auto& own = grid[row][column]; own.hands > 0) {
                auto& json = classes[startingHandAt(row, column)];
                json = {{"hands", own.hands}, {"reach", own.reach / own.hands}};
                if (own.reach > never)
                    json["strategy"] = sharesJson(view, own.shares);
            }
    nlohmann::ordered_json json{{"actions", view.actions},
                                {"seat", view.seat},
                                {"round", roundNames[static_cast<size_t>(view.round)]},
                                {"board", cardsText(view.board)},
                                {"reach", total.reach / total.hands},
                                {"strategy", sharesJson(view, total.shares)},
                                {"classes", classes}};
    if (view.round == 0)
        return json;
    auto hands = nlohmann::ordered_json::array();
    for (const DecisionView::Hand& hand : view.hands)
        hands.push_back({{"cards", cardsText(hand.cards)},
                         {"bucket", hand.known},
                         {"reach", hand.reach},
                         {"strategy", sharesJson(view, hand.shares)}});
    json["hands"] = hands;
    return json;
}

} // namespace tamarin
