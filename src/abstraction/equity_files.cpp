#include "abstraction/equity_files.h"

#include "abstraction/holding_index.h"
#include "abstraction/table_output.h"

#include <algorithm>
#include <array>
#include <vector>

namespace tamarin {

namespace {

constexpr size_t leastWindow = size_t{1} << 20;

// Wins over opponents + 1 opponents, and the deals that they are out of.
uint64_t winsOver(RiverWins wins, size_t opponents) {
    return opponents == 0 ? winsOverOne(wins) : winsOverTwo(wins);
}
uint64_t winsOver(const Wins& wins, size_t opponents) {
    return opponents == 0 ? wins.overOne : wins.overTwo;
}

constexpr std::array<uint32_t, 2> riverDeals{riverDeals2, riverDeals3};
constexpr std::array<uint32_t, holdemRounds> riversAfter{flopRivers, flopRivers, turnRivers, 1};

template <class Count>
Status writeRound(const BoardSet& boards, const std::function<const Count*(size_t)>& row, int round,
                  std::vector<TableOutput>& outputs, size_t memory, const Work& work) {
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
        const Status appended = onEachOutput(outputs, work, [&](TableOutput& output) {
            const double deals = double(riversAfter[r]) * double(riverDeals[output.which]);
            return appendEntries(output.file, count, work, [&](size_t i) {
                return static_cast<double>(winsOver((*gathered)[i], output.which)) / deals;
            });
        });
        if (!appended)
            return appended;
    }
    return {};
}

Status writePreflop(const EquityCounts& counts, std::vector<TableOutput>& outputs) {
    for (TableOutput& output : outputs) {
        std::array<double, roundSizes[0]> equities;
        for (size_t i = 0; i < equities.size(); ++i) {
            const EquityCounts::PreflopWins& wins = counts.preflop()[i];
            const uint64_t deals = wins.flops * riversAfter[0] * riverDeals[output.which];
            equities[i] = static_cast<double>(output.which == 0 ? wins.overOne : wins.overTwo) /
                          static_cast<double>(deals);
        }
        if (Status written = output.file.write(equities.data(), sizeof equities); !written)
            return written;
    }
    return {};
}

} // namespace

Status writeEquityFiles(const EquityCounts& counts, int round, const std::string& pathOverOne,
                        const std::string& pathOverTwo, size_t memory, const Work& work,
                        BackgroundCommits& commits) {
    std::vector<TableOutput> outputs;
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
    for (TableOutput& output : outputs)
        commits.add(std::move(output.file));
    return {};
}

} // namespace tamarin
