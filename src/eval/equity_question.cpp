#include "eval/equity_question.h"

#include "eval/exact_equity.h"
#include "eval/matchups.h"
#include "eval/sampled_equity.h"
#include "support/interrupt.h"
#include "support/parallel_errors.h"

#include <algorithm>
#include <atomic>
#include <bit>
#include <omp.h>

namespace tamarin {
namespace {

// What an exact answer may cost before the automatic choice samples instead.
constexpr double patience = 6; // seconds of one core

// Seconds of one core for one matchup, from measurements with some slack (EPYC Milan).
double secondsPerMatchup(size_t hands, CardSet board, int randomOpponents) {
    const int missing = 5 - std::popcount(board);
    if (missing == 5)
        return randomOpponents == 0 ? 0.003 * static_cast<double>(hands) : 0.15;
    double boards = 1;
    for (int i = 0; i < missing; ++i)
        boards *= (48.0 - i) / (i + 1);
    const double rankings = static_cast<double>(hands) + (randomOpponents == 0 ? 0 : 990);
    return boards * rankings * 8e-9;
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

Result<EquityAnswer> answerExactly(const EquityQuestion& question, const EquityOptions& options,
                                   const std::vector<Matchup>& all) {
    EquityAnswer answer{{}, true};
    std::atomic<uint64_t> done{0};
    const auto count = static_cast<int64_t>(all.size());
    ParallelErrors errors;
#pragma omp parallel num_threads(options.threads > 0 ? options.threads : omp_get_max_threads())
    {
        DealCounts counts;
        const auto countMatchup = [&](const Matchup& matchup) {
            DealCounts one = exactEquity(matchup.hands, question.board, question.randomOpponents);
            counts += one *= matchup.times;
            ++done;
            if (options.progress && omp_get_thread_num() == 0)
                options.progress(done, all.size());
        };
#pragma omp for schedule(dynamic)
        for (int64_t i = 0; i < count; ++i) {
            if (interrupted())
                continue;
            errors.run([&] { countMatchup(all[static_cast<size_t>(i)]); });
        }
#pragma omp critical
        answer.counts += counts;
    }
    errors.rethrow();
    if (done != all.size())
        return Error{"interrupted"};
    return answer;
}

} // namespace

Result<EquityAnswer> answerEquity(const EquityQuestion& question, const EquityOptions& options) {
    if (Status status = checkQuestion(question); !status)
        return Error{status.error()};
    if (options.method != EquityMethod::sampled) {
        const bool possible = question.randomOpponents <= 2;
        if (!possible && options.method == EquityMethod::exact)
            return Error{"an exact answer takes at most two random opponents, not " +
                         std::to_string(question.randomOpponents) + "; sample with --deals N"};
        if (possible) {
            // Where nobody insists, looking for match-ups ends when they are clearly too many.
            const double each = secondsPerMatchup(question.players.size(), question.board,
                                                  question.randomOpponents);
            const size_t most = options.method == EquityMethod::exact
                                    ? SIZE_MAX
                                    : static_cast<size_t>(patience / each) + 1;
            const Result<std::vector<Matchup>> all =
                matchups(question.players, question.board, most);
            if (!all && options.method == EquityMethod::exact)
                return Error{all.error()};
            if (all && (options.method == EquityMethod::exact ||
                        static_cast<double>(all->size()) * each <= patience))
                return answerExactly(question, options, *all);
        }
    }
    EquityAnswer answer;
    answer.counts = sampledEquity(
        question.players, question.board, question.randomOpponents, options.deals, options.seed,
        options.threads,
        [&](uint64_t done) {
            if (options.progress)
                options.progress(done, options.deals);
        },
        [] { return interrupted(); });
    if (interrupted() && answer.counts.deals < options.deals)
        return Error{"interrupted"};
    return answer;
}

} // namespace tamarin
