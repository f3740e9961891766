#include "eval/equity_question.h"

#include "eval/exact_equity.h"
#include "eval/matchups.h"
#include "eval/range_sweep.h"
#include "eval/sampled_equity.h"
#include "support/parallel_errors.h"

#include <algorithm>
#include <atomic>
#include <bit>
#include <cassert>
#include <limits>
#include <omp.h>
#include <optional>

namespace tamarin {
namespace {

// What an exact answer may cost before the automatic choice samples instead: five seconds of two
// cores. The choice must not depend on the machine, or answers would.
constexpr double patience = 10; // seconds of one core

// Seconds of one core for one matchup, from measurements with some slack (EPYC Milan).
double secondsPerMatchup(size_t hands, CardSet board, int randomOpponents) {
    const int missing = 5 - std::popcount(board);
    if (missing == 5)
        return randomOpponents == 0 ? 0.003 * static_cast<double>(hands) : 0.15;
    double boards = 1;
    for (int i = 0; i < missing; ++i)
        boards *= (48.0 - i) / (i + 1);
    const double known = 10e-9 * static_cast<double>(hands);
    return boards * (randomOpponents == 0 ? 15e-9 + known : known + 4e-6);
}

// Of finding the matchups, for each combination of hands: two microseconds of one core while the
// other one of the two waits.
constexpr double secondsPerCombination = 4e-6;

double combinationsOf(const std::vector<HandRange>& players) {
    double combinations = 1;
    for (const HandRange& range : players)
        combinations *= static_cast<double>(range.hands.size());
    return combinations;
}

Status checkQuestion(const EquityQuestion& question) {
    const int cards = std::popcount(question.board);
    if (cards != 0 && (cards < 3 || cards > 5))
        return Error{"the board has " + std::to_string(cards) +
                     " cards; it must have 0, 3, 4 or 5"};
    const size_t players =
        question.players.size() + static_cast<size_t>(std::max(question.randomOpponents, 0));
    if (question.players.empty() || question.randomOpponents < 0 || players < 2 ||
        players > maxOpponents + 1)
        return Error{"a showdown has 2 to 10 players, not " + std::to_string(players)};
    for (const HandRange& range : question.players)
        if (std::all_of(range.hands.begin(), range.hands.end(),
                        [&](CardSet hand) { return (hand & question.board) != 0; }))
            return Error{"nobody can hold " + range.text + " on the board " +
                         printCardSet(question.board)};
    if (!canBeHeld(question.players, question.board)) {
        std::string text;
        for (const HandRange& range : question.players)
            text += (text.empty() ? "" : ", ") + range.text;
        return Error{"these hands cannot be held together, they share cards: " + text};
    }
    return {};
}

// Adds up count(i) for i from 0 to `parts`, in parallel.
template <class Count>
Result<DealCounts> addParts(size_t parts, const EquityOptions& options, const Count& count) {
    DealCounts total;
    std::atomic<uint64_t> done{0};
    ParallelErrors errors;
#pragma omp parallel num_threads(options.threads > 0 ? options.threads : omp_get_max_threads())
    {
        DealCounts counts;
        const auto addPart = [&](size_t part) {
            counts += count(part);
            ++done;
            if (options.progress && omp_get_thread_num() == 0)
                options.progress(done, parts);
        };
#pragma omp for schedule(dynamic)
        for (size_t part = 0; part < parts; ++part)
            errors.run([&] {
                if (!options.stop())
                    addPart(part);
            });
#pragma omp critical
        total += counts;
    }
    errors.rethrow();
    if (done != parts)
        return Error{"interrupted"};
    return total;
}

Result<DealCounts> countMatchups(const EquityQuestion& question, const EquityOptions& options,
                                 const std::vector<Matchup>& all) {
    return addParts(all.size(), options, [&](size_t i) {
        DealCounts one = exactEquity(all[i].hands, question.board, question.randomOpponents);
        return one *= all[i].times;
    });
}

Result<DealCounts> countBoards(RangeSweep& sweep, const EquityOptions& options) {
    constexpr size_t boardsOfPart = 128;
    const size_t boards = sweep.listBoards();
    auto counts = addParts((boards + boardsOfPart - 1) / boardsOfPart, options, [&](size_t part) {
        const size_t first = part * boardsOfPart;
        return DealCounts{sweep.count(first, std::min(first + boardsOfPart, boards)), 0};
    });
    if (counts)
        counts->deals = sweep.deals(); // known of all boards together
    return counts;
}

HandRange allHands() {
    const auto all = parseHandRange("random");
    assert(all);
    return *all;
}

// For two or three players: the sweep of all boards, a random opponent being a range of all hands.
std::optional<RangeSweep> sweepFor(const EquityQuestion& question) {
    std::vector<HandRange> ranges = question.players;
    if (ranges.size() + static_cast<size_t>(question.randomOpponents) > 3)
        return {};
    for (int i = 0; i < question.randomOpponents; ++i)
        ranges.push_back(allHands());
    return RangeSweep(ranges, question.board);
}

// How to count every deal: matchup by matchup or board by board, whichever is the sooner.
struct Plan {
    std::optional<RangeSweep> sweep;
    std::vector<Matchup> matchups;                            // used where they are not empty
    double seconds = std::numeric_limits<double>::infinity(); // of one core, roughly
    std::string refusal;                                      // why there is neither
};

// Matchups that would take longer than limit are not all looked for.
Plan planExactAnswer(const EquityQuestion& question, const EquityOptions& options, double limit) {
    Plan plan;
    if (question.randomOpponents > 2) {
        plan.refusal = "an exact answer takes at most two random opponents, not " +
                       std::to_string(question.randomOpponents) + "; sample with --deals N";
        return plan;
    }
    plan.sweep = sweepFor(question);
    if (plan.sweep)
        plan.seconds = plan.sweep->seconds();
    const double most = std::min(limit, plan.seconds);
    const double finding = secondsPerCombination * combinationsOf(question.players);
    if (finding > most)
        return plan;
    // Looking for matchups ends when they are clearly too many.
    const double each =
        secondsPerMatchup(question.players.size(), question.board, question.randomOpponents);
    auto found = matchups(question.players, question.board,
                          most < 1e6 ? static_cast<size_t>((most - finding) / each) + 1 : SIZE_MAX,
                          options.stop);
    if (!found) {
        plan.refusal = found.error();
        return plan;
    }
    const double seconds = finding + static_cast<double>(found->size()) * each;
    if (seconds < plan.seconds) {
        plan.seconds = seconds;
        plan.matchups = std::move(*found);
    }
    return plan;
}

Result<EquityAnswer> answerExactly(const EquityQuestion& question, const EquityOptions& options,
                                   Plan& plan) {
    const auto counts = plan.matchups.empty() ? countBoards(*plan.sweep, options)
                                              : countMatchups(question, options, plan.matchups);
    if (!counts)
        return Error{counts.error()};
    return EquityAnswer{*counts, true, plan.seconds};
}

Result<EquityAnswer> answerBySample(const EquityQuestion& question, const EquityOptions& options) {
    EquityAnswer answer;
    answer.counts = sampledEquity(
        question.players, question.board, question.randomOpponents, options.deals, options.seed,
        options.threads,
        [&](uint64_t done) {
            if (options.progress)
                options.progress(done, options.deals);
        },
        options.stop);
    if (answer.counts.deals < options.deals)
        return Error{"interrupted"};
    return answer;
}

} // namespace

Result<EquityAnswer> answerEquity(const EquityQuestion& question, const EquityOptions& options) {
    if (Status status = checkQuestion(question); !status)
        return Error{status.error()};
    if (options.method == EquityMethod::sampled)
        return answerBySample(question, options);
    const bool insists = options.method == EquityMethod::exact;
    Plan plan = planExactAnswer(question, options,
                                insists ? std::numeric_limits<double>::infinity() : patience);
    if (options.stop())
        return Error{"interrupted"};
    const bool possible = plan.sweep || !plan.matchups.empty();
    if (possible && (insists || plan.seconds <= patience))
        return answerExactly(question, options, plan);
    if (insists)
        return Error{plan.refusal};
    auto answer = answerBySample(question, options);
    if (answer)
        answer->exactSeconds = plan.seconds;
    return answer;
}

} // namespace tamarin
