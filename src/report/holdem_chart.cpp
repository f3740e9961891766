#include "report/holdem_chart.h"

#include "report/page.h"
#include "solver/cfr.h"

#include <algorithm>
#include <cassert>

#include <fmt/format.h>

namespace tamarin {

namespace {

constexpr char ranks[] = "AKQJT98765432";
constexpr const char* actionWords[numAbstractedActions] = {"fold", "call", "raise"};

constexpr const char* chartStyle = R"(
.grid{border-spacing:2px;border-collapse:separate;margin:.5rem 0 1.5rem}
.grid td{width:3.1rem;height:2.1rem;padding:0;text-align:center;font-size:.78rem;
color:var(--on);border-radius:3px}
)";

using Grid = std::array<std::array<uint8_t, 13>, 13>;

Grid bucketGrid(const HoldemTables& tables, int acting, int seat) {
    const auto players = acting == 3 ? 3 : 2;
    Grid grid{};
    for (size_t row = 0; row < 13; ++row)
        for (size_t column = 0; column < 13; ++column) {
            const auto first = static_cast<uint8_t>(12 - std::min(row, column));
            const auto second = static_cast<uint8_t>(12 - std::max(row, column));
            const bool suited = row < column;
            const uint8_t cards[2] = {static_cast<uint8_t>(first * MAX_SUITS),
                                      static_cast<uint8_t>(second * MAX_SUITS + (suited ? 0 : 1))};
            grid[row][column] =
                tables.buckets().bucket(players, 0, players == 2 ? std::min(seat, 1) : seat, cards);
        }
    return grid;
}

// The hands' share of a bucket: 6 ways for a pair, 4 suited, 12 not.
int waysAt(size_t row, size_t column) {
    return row == column ? 6 : row < column ? 4 : 12;
}

std::array<double, 10> bucketShares(const Grid& grid) {
    std::array<double, 10> shares{};
    for (size_t row = 0; row < 13; ++row)
        for (size_t column = 0; column < 13; ++column) {
            assert(grid[row][column] < shares.size()); // the tables were looked into when opened
            shares[grid[row][column]] += waysAt(row, column) / 1326.0;
        }
    return shares;
}

class Collector {
public:
    Collector(const Game& game, const HoldemTables& tables, const NodeStore& strategy, size_t most)
        : game_(game), tables_(tables), strategy_(strategy), most_(most) {}

    Status collect(const State& state, const std::string& sequence) {
        if (state.finished || state.round != 0 || sequence.size() > most_)
            return {};
        const int seat = currentPlayer(&game_, &state);
        PreflopDecision decision{sequence, seat, numActingPlayers(&game_, &state), {}, {}, {}};
        for (size_t bucket = 0; bucket < decision.strategy.size(); ++bucket) {
            CFRNode node;
            const std::string key =
                std::to_string(seat) + ":0:" + std::to_string(bucket) + ":" + sequence;
            if (!strategy_.find(seat * game_.numRounds, key, node))
                return Error{"the strategy has no node " + key + ": is it this game's?"};
            double average[numAbstractedActions];
            node.getAverageStrategy(average);
            for (int a = 0; a < numAbstractedActions; ++a) {
                decision.valid[a] = node.isActionValid(a);
                decision.strategy[bucket][static_cast<size_t>(a)] =
                    decision.valid[a] ? average[a] : 0.0;
            }
        }
        decision.bucket = bucketGrid(tables_, decision.acting, seat);
        decisions.push_back(decision);
        for (int a = 0; a < numAbstractedActions; ++a) {
            if (!decision.valid[a])
                continue;
            State next = state;
            Action action{static_cast<ActionType>(a), 0};
            if (!isValidAction(&game_, &next, 0, &action))
                return Error{"the strategy allows seat " + std::to_string(seat) + " to " +
                             actionWords[a] + " after \"" + sequence +
                             "\", which the rules do not: is it this game's?"};
            doAction(&game_, &action, &next);
            if (Status below = collect(next, sequence + actionChars[a]); !below)
                return below;
        }
        return {};
    }

    std::vector<PreflopDecision> decisions;

private:
    const Game& game_;
    const HoldemTables& tables_;
    const NodeStore& strategy_;
    size_t most_;
};

// The likeliest action's letter and its percentage: "r87", "c100".
std::string cellText(const std::array<double, numAbstractedActions>& strategy) {
    const auto best =
        static_cast<size_t>(std::max_element(strategy.begin(), strategy.end()) - strategy.begin());
    return fmt::format("{}{:.0f}", actionChars[best], 100.0 * strategy[best]);
}

} // namespace

std::string startingHandAt(size_t row, size_t column) {
    const std::string both = {ranks[std::min(row, column)], ranks[std::max(row, column)]};
    return row == column ? both : both + (row < column ? "s" : "o");
}

Result<std::vector<PreflopDecision>> preflopDecisions(const Game& game, const HoldemTables& tables,
                                                      const NodeStore& strategy, size_t actions) {
    State state{};
    initState(&game, 0, &state);
    Collector collector(game, tables, strategy, actions);
    if (Status collected = collector.collect(state, ""); !collected)
        return Error{collected.error()};
    return std::move(collector.decisions);
}

std::string describeDecision(const PreflopDecision& decision) {
    if (decision.sequence.empty())
        return fmt::format("seat {} first to act", decision.seat);
    std::string before;
    for (const char c : decision.sequence)
        before +=
            (before.empty() ? "" : ", ") +
            std::string(actionWords[std::find(actionChars, actionChars + 3, c) - actionChars]);
    return fmt::format("seat {} after {}", decision.seat, before);
}

std::string chartAsText(const PreflopDecision& decision) {
    const auto shares = bucketShares(decision.bucket);
    std::string text = fmt::format("{}\n\nbucket  hands  ", describeDecision(decision));
    for (int a = 0; a < numAbstractedActions; ++a)
        if (decision.valid[a])
            text += fmt::format("{:>8}", actionWords[a]);
    for (size_t bucket = 0; bucket < decision.strategy.size(); ++bucket) {
        text += fmt::format("\n{:>6}{:>6.1f}%  ", bucket, 100.0 * shares[bucket]);
        for (size_t a = 0; a < numAbstractedActions; ++a)
            if (decision.valid[a])
                text += fmt::format("{:>7.1f}%", 100.0 * decision.strategy[bucket][a]);
    }
    text += "\n\n  ";
    for (size_t column = 0; column < 13; ++column)
        text += fmt::format("{:>5}", ranks[column]);
    for (size_t row = 0; row < 13; ++row) {
        text += fmt::format("\n{:>2}", ranks[row]);
        for (size_t column = 0; column < 13; ++column)
            text += fmt::format("{:>5}", cellText(decision.strategy[decision.bucket[row][column]]));
    }
    return text + "\n";
}

nlohmann::ordered_json chartAsJson(const PreflopDecision& decision) {
    const auto shares = bucketShares(decision.bucket);
    auto buckets = nlohmann::ordered_json::array();
    for (size_t bucket = 0; bucket < decision.strategy.size(); ++bucket) {
        nlohmann::ordered_json strategy;
        for (size_t a = 0; a < numAbstractedActions; ++a)
            if (decision.valid[a])
                strategy[actionWords[a]] = decision.strategy[bucket][a];
        buckets.push_back({{"bucket", bucket}, {"share", shares[bucket]}, {"strategy", strategy}});
    }
    nlohmann::ordered_json hands;
    for (size_t row = 0; row < 13; ++row)
        for (size_t column = 0; column < 13; ++column)
            hands[startingHandAt(row, column)] = decision.bucket[row][column];
    return {{"sequence", decision.sequence},
            {"seat", decision.seat},
            {"playersActing", decision.acting},
            {"buckets", buckets},
            {"bucketOfHand", hands}};
}

std::string chartPage(const HoldemGame& game, const std::vector<PreflopDecision>& decisions,
                      const std::string& source) {
    std::string page = fmt::format(
        "<p>First decisions before the flop, from {}. Ten buckets of alike hands; suited hands "
        "above the diagonal. A hand's colours are the shares of its actions.</p>\n"
        "<p class=legend><span><i class=fold></i>fold</span><span><i class=call></i>call or "
        "check</span><span><i class=raise></i>raise</span></p>\n",
        escapedForPage(source));
    for (const PreflopDecision& decision : decisions) {
        const auto shares = bucketShares(decision.bucket);
        page += fmt::format("<h2>{}</h2>\n<table class=sets>\n",
                            escapedForPage(describeDecision(decision)));
        for (size_t bucket = 0; bucket < decision.strategy.size(); ++bucket) {
            page += fmt::format("<tr><td>{}<td><div class=bar>", bucket);
            for (size_t a = 0; a < numAbstractedActions; ++a) {
                const double share = 100.0 * decision.strategy[bucket][a];
                if (decision.valid[a] && share >= 0.005)
                    page +=
                        fmt::format("<i class={} style=\"width:{:.2f}%\">{}</i>", actionWords[a],
                                    share, share >= 8 ? fmt::format("{:.0f}%", share) : "");
            }
            page += fmt::format("</div><td>{:.1f}% of hands\n", 100.0 * shares[bucket]);
        }
        page += "</table>\n<table class=grid>\n";
        for (size_t row = 0; row < 13; ++row) {
            page += "<tr>";
            for (size_t column = 0; column < 13; ++column) {
                const auto& strategy = decision.strategy[decision.bucket[row][column]];
                const double fold = 100.0 * strategy[actionFold];
                const double call = fold + 100.0 * strategy[actionCall];
                page += fmt::format(
                    "<td style=\"background:linear-gradient(90deg,var(--fold) {0:.1f}%,var(--call) "
                    "{0:.1f}% {1:.1f}%,var(--raise) {1:.1f}%)\" title=\"fold {0:.1f}%, call "
                    "{2:.1f}%, raise {3:.1f}%\">{4}",
                    fold, call, 100.0 * strategy[actionCall], 100.0 * strategy[actionRaise],
                    startingHandAt(row, column));
            }
            page += '\n';
        }
        page += "</table>\n";
    }
    return pageOf(game.name, std::string(actionStyle) + chartStyle, page);
}

} // namespace tamarin
