#include "report/decision_view.h"

#include "abstraction/round_indexers.h"
#include "game/text.h"
#include "report/holdem_chart.h"

#include <algorithm>
#include <array>

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
std::string gridCell(const DecisionView& view, const DecisionView::Total& total) {
    if (total.reach <= never)
        return ".";
    std::array<double, 3> kinds{};
    for (size_t e = 0; e < view.edges.size(); ++e)
        kinds[static_cast<size_t>(view.edges[e].type)] += total.shares[e];
    const auto best = static_cast<size_t>(std::ranges::max_element(kinds) - kinds.begin());
    return fmt::format("{}{:.0f}", actionChars[best], 100.0 * kinds[best]);
}

nlohmann::ordered_json sharesJson(const DecisionView& view, const std::vector<double>& shares) {
    nlohmann::ordered_json json;
    for (size_t e = 0; e < view.edges.size(); ++e)
        json[view.edges[e].name] = shares[e];
    return json;
}

// Of no-limit raises.
nlohmann::ordered_json sizesJson(const DecisionView& view) {
    nlohmann::ordered_json json = nlohmann::ordered_json::object();
    for (const DecisionEdge& edge : view.edges)
        if (edge.raiseTo)
            json[edge.name] = {{"to", *edge.raiseTo}, {"pots", edge.pots}, {"allIn", edge.allIn}};
    return json;
}

// "raise 300, 1 pot"
std::string edgeText(const DecisionEdge& edge) {
    if (!edge.raiseTo)
        return edge.name;
    if (edge.allIn)
        return edge.name + ", all-in";
    return fmt::format("{}, {:.3g} pot{}", edge.name, edge.pots, edge.pots == 1 ? "" : "s");
}

std::string roundText(const DecisionView& view) {
    return view.round == 0 ? "before the flop"
                           : std::string("on the ") + roundNames[static_cast<size_t>(view.round)] +
                                 " " + cardsText(view.board);
}

std::string whatFollows(const DecisionTree& tree, int round, int32_t child) {
    if (child < 0)
        return "the hand ends";
    const DecisionTree::Place next = tree.place(child);
    if (next.round != round)
        return std::string("the ") + roundNames[next.round];
    return fmt::format("seat {}", next.seat);
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
    shares.resize(hand.shares.size());
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
    total.shares.resize(edges.size());
    for (const Hand& hand : hands)
        total.add(hand);
    total.finish();
    return total;
}

Result<DecisionView> viewDecision(const Game& game, const DecisionTree& tree,
                                  const DecisionWay& way, const std::vector<uint8_t>& board) {
    const PublicDeck deck(game);
    const auto [seat, round] = tree.place(way.node);
    if (Status good = isBoard(deck, board, round); !good)
        return Error{good.error()};
    DecisionView view;
    view.actions = actionsOf(tree, way);
    view.seat = seat;
    view.round = round;
    view.board = board;
    view.edges = tree.edges(way);
    for (const DecisionEdge& edge : view.edges)
        view.next.push_back(whatFollows(tree, round, edge.child));
    for (size_t h = 0; h < deck.holdings().size(); ++h) {
        const HoleCards hole = deck.cardsOf(h);
        if (std::ranges::find_first_of(board, hole) != board.end())
            continue;
        std::vector<uint8_t> cards(hole.begin(), hole.end());
        cards.insert(cards.end(), board.begin(), board.end());
        std::array<uint16_t, holdemRounds> known{};
        for (size_t r = 0; r <= round; ++r)
            known[r] =
                tree.classOf(seat, static_cast<int>(r),
                             std::span(cards).first(2 + static_cast<size_t>(roundBoardCards[r])));
        double reach = 1;
        for (const auto& [at, edge] : way.taken) {
            const DecisionTree::Place before = tree.place(at);
            if (before.seat == seat)
                reach *= tree.shares(at, known[before.round])[edge];
        }
        view.hands.push_back({hole, known[round], reach, tree.shares(way.node, known[round])});
    }
    return view;
}

std::string decisionText(const DecisionView& view) {
    const DecisionView::Total total = view.total();
    std::string text = fmt::format("seat {} {}, {}\n", view.seat, roundText(view),
                                   view.actions.empty() ? "first to act" : "after " + view.actions);
    text += fmt::format("{:.1f}% of its hands come here\n", 100.0 * total.reach / total.hands);
    size_t width = 6;
    for (const DecisionEdge& edge : view.edges)
        width = std::max(width, edgeText(edge).size());
    for (size_t e = 0; e < view.edges.size(); ++e)
        text += fmt::format("  {:<{}}{:>6.1f}%, then {}\n", edgeText(view.edges[e]), width,
                            100.0 * total.shares[e], view.next[e]);
    text += "\n  ";
    for (size_t column = 0; column < numRanks; ++column)
        text += fmt::format("{:>5}", gridRanks[column]);
    const ClassGrid grid = classesOf(view);
    for (size_t row = 0; row < numRanks; ++row) {
        text += fmt::format("\n{:>2}", gridRanks[row]);
        for (size_t column = 0; column < numRanks; ++column)
            text += fmt::format("{:>5}", gridCell(view, grid[row][column]));
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
    if (const auto sizes = sizesJson(view); !sizes.empty())
        json["sizes"] = sizes;
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
