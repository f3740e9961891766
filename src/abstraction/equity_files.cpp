#include "abstraction/equity_files.h"

#include "abstraction/holding_index.h"
#include "support/file.h"
#include "support/parallel_errors.h"

#include <algorithm>
#include <array>
#include <vector>

namespace tamarin {

namespace {

constexpr size_t leastWindow = size_t{1} << 20;
constexpr size_t chunk = size_t{1} << 17; // equities converted and written at a time: a megabyte

// Wins over opponents + 1 opponents, and the deals that they are out of.
uint64_t winsOver(RiverWins wins, size_t opponents) {
    return opponents == 0 ? winsOverOne(wins) : winsOverTwo(wins);
}
uint64_t winsOver(const Wins& wins, size_t opponents) {
    return opponents == 0 ? wins.overOne : wins.overTwo;
}

constexpr std::array<uint32_t, 2> riverDeals{riverDeals2, riverDeals3};
constexpr std::array<uint32_t, holdemRounds> riversAfter{flopRivers, flopRivers, turnRivers, 1};

struct Output {
    size_t opponents; // less one
    AtomicFile file;
};

// body(i) for each output, side by side.
template <class Body>
Status onEach(std::vector<Output>& outputs, const Work& work, const Body& body) {
    std::array<Status, 2> results;
    ParallelErrors errors;
#pragma omp parallel for schedule(static, 1)                                                       \
    num_threads(std::min(work.threadCount(), static_cast <int>(outputs.size())))
    for (size_t i = 0; i < outputs.size(); ++i)
        errors.run([&] { results[i] = body(outputs[i]); });
    errors.rethrow();
    for (Status& result : results)
        if (!result)
            return std::move(result);
    return {};
}

template <class Count>
Status appendEquities(Output& output, const Count* wins, size_t count, double deals,
                      const Work& work) {
    std::vector<double> equities(std::min(count, chunk));
    for (size_t begin = 0; begin < count; begin += chunk) {
        if (work.shouldStop())
            return stopped();
        const size_t size = std::min(chunk, count - begin);
        for (size_t i = 0; i < size; ++i)
            equities[i] = static_cast<double>(winsOver(wins[begin + i], output.opponents)) / deals;
        if (Status written = output.file.write(equities.data(), size * sizeof(double)); !written)
            return written;
    }
    return {};
}

template <class Count>
Status writeRound(const BoardSet& boards, const std::function<const Count*(size_t)>& row, int round,
                  std::vector<Output>& outputs, size_t memory, const Work& work) {
    const auto r = static_cast<size_t>(round);
    const size_t size = roundSizes[r];
    const size_t window = std::min(size, std::max(leastWindow, memory) / sizeof(Count));
    auto gathered = LargeBuffer<Count>::take(window, "gathering equities");
    if (!gathered)
        return Error{gathered.error()};
    const RoundIndexer indexer(round);
    const HoldingIndexer holdings(round, *indexer.get());
    const size_t passes = (size + window - 1) / window;
    for (size_t pass = 0; pass < passes; ++pass) {
        const size_t begin = pass * window;
        const size_t count = std::min(window, size - begin);
        Work part = work;
        part.progress = [&](uint64_t done, uint64_t total) {
            work.report(pass * total + done, passes * total);
        };
        const bool scattered = forEach(part, boards.size(), [&](size_t b) {
            std::array<uint32_t, numHoldings(deckCards)> indices;
            holdings.indices(boards.board(b), indices.data());
            const Count* const wins = row(b);
            for (size_t h = 0; h < boards.holdings(); ++h)
                if (indices[h] - begin < count)
                    (*gathered)[indices[h] - begin] = wins[h];
        });
        if (!scattered)
            return stopped();
        const Status appended = onEach(outputs, work, [&](Output& output) {
            const double deals = double(riversAfter[r]) * double(riverDeals[output.opponents]);
            return appendEquities(output, gathered->data(), count, deals, work);
        });
        if (!appended)
            return appended;
    }
    return {};
}

Status writePreflop(const EquityCounts& counts, std::vector<Output>& outputs) {
    for (Output& output : outputs) {
        std::array<double, roundSizes[0]> equities;
        for (size_t i = 0; i < equities.size(); ++i) {
            const EquityCounts::PreflopWins& wins = counts.preflop()[i];
            const uint64_t deals = wins.flops * riversAfter[0] * riverDeals[output.opponents];
            equities[i] = static_cast<double>(output.opponents == 0 ? wins.overOne : wins.overTwo) /
                          static_cast<double>(deals);
        }
        if (Status written = output.file.write(equities.data(), sizeof equities); !written)
            return written;
    }
    return {};
}

} // namespace

Status writeEquityFiles(const EquityCounts& counts, int round, const std::string& pathOverOne,
                        const std::string& pathOverTwo, size_t memory, const Work& work) {
    std::vector<Output> outputs;
    for (size_t opponents = 0; opponents < 2; ++opponents) {
        const std::string& path = opponents == 0 ? pathOverOne : pathOverTwo;
        if (path.empty())
            continue;
        auto file = AtomicFile::create(path);
        if (!file)
            return Error{file.error()};
        outputs.push_back({opponents, std::move(*file)});
    }

    Status status;
    if (round == 0) {
        status = writePreflop(counts, outputs);
    } else {
        const BoardSet boards(roundBoardCards[static_cast<size_t>(round)]);
        if (round == 3)
            status = writeRound<RiverWins>(
                boards, [&](size_t b) { return counts.river(b); }, round, outputs, memory, work);
        else
            status = writeRound<Wins>(
                boards, [&](size_t b) { return round == 1 ? counts.flop(b) : counts.turn(b); },
                round, outputs, memory, work);
    }
    if (!status)
        return status;
    return onEach(outputs, work, [](Output& output) { return output.file.commit(); });
}

} // namespace tamarin
