#include "table_builder/table_check.h"

#include "abstraction/boards.h"
#include "abstraction/quantise.h"
#include "abstraction/river_sweep.h"
#include "abstraction/round_indexers.h"
#include "abstraction/table_contents.h"
#include "abstraction/table_names.h"
#include "abstraction/work.h"
#include "eval/seven_card_files.h"
#include "eval/seven_card_table.h"
#include "support/file.h"
#include "support/parallel_errors.h"
#include "table_builder/build_steps.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <memory>
#include <optional>
#include <random>

namespace tamarin {

namespace {

// Means of up to 47 equities are compared with one division of exact counts.
constexpr double tolerance = 1e-12;
// Nobody can win or lose more than the ante and one raise.
constexpr EntryLimits fairUtilities{"utility", -2, 2, "-2..2"};

class Checker {
public:
    explicit Checker(const CheckOptions& options) : options_(options), random_(options.seed) {}

    std::string problemOf(const TableFile& file) {
        switch (file.group) {
        case TableGroup::sevenCards:
            return sevenCards(file);
        case TableGroup::equities:
            return equities(file);
        case TableGroup::clusters:
            return clusters(file);
        case TableGroup::utilities:
            return problemOfTable(doubles(file.path, file.bytes), fairUtilities);
        case TableGroup::holdem:
            return holdem(file);
        }
        return "";
    }

private:
    // The file's bytes; none when it cannot be mapped.
    std::span<const std::byte> bytes(const std::string& path, uint64_t size) {
        auto at = files_.find(path);
        if (at == files_.end()) {
            auto file = MappedFile::open(inDirectory(options_.directory, path), size);
            if (!file)
                return {};
            at = files_.emplace(path, std::move(*file)).first;
        }
        return at->second.bytes();
    }
    std::span<const double> doubles(const std::string& path, uint64_t size) {
        const auto all = bytes(path, size);
        return {reinterpret_cast<const double*>(all.data()), all.size() / sizeof(double)};
    }
    std::span<const uint8_t> quantised(const TableFile& file) {
        const auto all = bytes(file.path, file.bytes);
        return {reinterpret_cast<const uint8_t*>(all.data()), all.size()};
    }
    std::span<const double> equitiesOf(int players, int round) {
        return doubles(equityPath(players, round),
                       roundSizes[static_cast<size_t>(round)] * sizeof(double));
    }
    template <class Entry>
    std::string problemOfTable(std::span<const Entry> entries, const EntryLimits& limits) {
        return entries.empty() ? "cannot be read"
                               : problemOfEntries(entries, limits, options_.threads);
    }
    TableRange range(const std::string& path, std::span<const double> entries) {
        auto at = ranges_.find(path);
        if (at == ranges_.end())
            at = ranges_.emplace(path, rangeOf(entries, options_.threads)).first;
        return at->second;
    }

    std::string sevenCards(const TableFile& file) {
        const std::string path = inDirectory(options_.directory, file.path);
        const auto check = file.path == sevenCardTablePath
                               ? compareSevenCardFile(path, sevenCardTable())
                               : checkDenseRankFile(path);
        if (!check)
            return check.error();
        // Whoever prints it names the file.
        return check->state == TableFileState::bad ? check->problem.substr(path.size() + 1) : "";
    }

    // Generated, once: no file is trusted.
    const SevenCardTable& sevenCardTable() {
        if (!sevenCardTable_)
            sevenCardTable_ =
                std::make_unique<SevenCardTable>(SevenCardTable::generate(options_.threads));
        return *sevenCardTable_;
    }

    std::string equities(const TableFile& file) {
        const auto entries = equitiesOf(file.players, file.round);
        if (std::string damage = problemOfTable(entries, equityEntries); !damage.empty())
            return damage;
        if (file.round == 0)
            return preflop(file, entries);
        const RoundIndexer indexer(file.round);
        // A turn or flop hand stands on 46 or 47 others; a river hand costs a sweep.
        for (int i = 0; i < options_.hands; ++i) {
            const size_t index = random_() % entries.size();
            uint8_t hand[7];
            if (!hand_unindex(indexer.get(), 1, index, hand))
                return "does not fit the hand index";
            const std::optional<double> fresh = file.round == 3
                                                    ? riverEquity(hand, file.players)
                                                    : meanOfNext(hand, file.round, file.players);
            if (fresh && !(std::abs(*fresh - entries[index]) <= tolerance))
                return "is wrong at hand " + std::to_string(index) + ": " +
                       std::to_string(entries[index]) + ", not " + std::to_string(*fresh);
        }
        return "";
    }

    double riverEquity(const uint8_t* hand, int players) {
        std::array<RiverWins, riverHoldings> wins;
        sweepRiver(hand + 2, wins.data());
        uint8_t left[deckCards];
        const size_t count = cardsWithout(hand + 2, 5, left);
        const auto position = [&](uint8_t card) {
            return static_cast<size_t>(std::lower_bound(left, left + count, card) - left);
        };
        const RiverWins own = wins[holdingNumber(position(std::min(hand[0], hand[1])),
                                                 position(std::max(hand[0], hand[1])))];
        return players == 2 ? double(winsOverOne(own)) / riverDeals2
                            : double(winsOverTwo(own)) / riverDeals3;
    }

    // Nothing when the next round's table is not there.
    std::optional<double> meanOfNext(uint8_t* hand, int round, int players) {
        const auto next = equitiesOf(players, round + 1);
        if (next.empty())
            return std::nullopt;
        const RoundIndexer indexer(round + 1);
        const int cards = 2 + roundBoardCards[static_cast<size_t>(round)];
        uint8_t left[deckCards];
        const size_t count = cardsWithout(hand, cards, left);
        double sum = 0;
        for (size_t i = 0; i < count; ++i) {
            hand[cards] = left[i];
            sum += next[hand_index_last(indexer.get(), hand)];
        }
        return sum / static_cast<double>(count);
    }

    // Every starting hand: the mean over all flops.
    std::string preflop(const TableFile& file, std::span<const double> entries) {
        const auto flop = equitiesOf(file.players, 1);
        if (flop.empty())
            return "";
        const RoundIndexer preflopIndexer(0);
        const RoundIndexer flopIndexer(1);
        const BoardSet flops(3);
        std::array<double, roundSizes[0]> sum{};
        std::array<double, roundSizes[0]> weight{};
        uint8_t hand[5];
        for (size_t b = 0; b < flops.size(); ++b) {
            std::copy_n(flops.board(b), 3, hand + 2);
            uint8_t left[deckCards];
            const size_t count = cardsWithout(flops.board(b), 3, left);
            for (size_t high = 1; high < count; ++high)
                for (size_t low = 0; low < high; ++low) {
                    hand[0] = left[low];
                    hand[1] = left[high];
                    const size_t index = hand_index_last(preflopIndexer.get(), hand);
                    sum[index] +=
                        flops.multiplicity(b) * flop[hand_index_last(flopIndexer.get(), hand)];
                    weight[index] += flops.multiplicity(b);
                }
        }
        for (size_t i = 0; i < sum.size(); ++i)
            if (!(std::abs(sum[i] / weight[i] - entries[i]) <= 1e-10))
                return "is wrong at hand " + std::to_string(i);
        return "";
    }

    std::string clusters(const TableFile& file) {
        const auto entries = quantised(file);
        if (std::string damage = problemOfTable(entries, clusterEntries); !damage.empty())
            return damage;
        const auto equity = equitiesOf(file.players, file.round);
        if (equity.empty())
            return "";
        const TableRange reach = range(equityPath(file.players, file.round), equity);
        return firstWrong(
            entries, [&](size_t index) { return levelOf(equity[index], reach, clusterLevels); });
    }

    std::string holdem(const TableFile& file) {
        const auto entries = quantised(file);
        if (std::string damage = problemOfTable(entries, bucketEntries); !damage.empty())
            return damage;
        const auto equity = equitiesOf(file.players, file.round);
        const std::string utilityFile = utilityPath(2, file.round, utilitySeatOf(file.seat));
        const auto utility = doubles(utilityFile, file.bytes * sizeof(double));
        if (equity.empty() || utility.empty())
            return "";
        const TableRange equityRange = range(equityPath(file.players, file.round), equity);
        const TableRange utilityRange = range(utilityFile, utility);
        return firstWrong(entries, [&](size_t index) {
            return 5 * levelOf(utility[index], utilityRange, holdemUtilityLevels) +
                   levelOf(equity[index], equityRange, holdemEquityLevels);
        });
    }

    // What is wrong with a byte table whose entries are cheap to make again: all of them are.
    template <class Remake>
    std::string firstWrong(std::span<const uint8_t> entries, const Remake& remake) const {
        constexpr size_t block = size_t{1} << 16U;
        size_t wrong = entries.size();
        Work work;
        work.threads = options_.threads;
        ParallelErrors errors;
#pragma omp parallel for reduction(min : wrong) num_threads(work.threadCount())
        for (size_t begin = 0; begin < entries.size(); begin += block)
            errors.run([&] {
                for (size_t i = begin; i < std::min(begin + block, entries.size()); ++i)
                    if (int{entries[i]} != int{remake(i)})
                        wrong = std::min(wrong, i);
            });
        errors.rethrow();
        return wrong == entries.size() ? "" : "is wrong at hand " + std::to_string(wrong);
    }

    const CheckOptions& options_;
    std::mt19937_64 random_;
    std::unique_ptr<SevenCardTable> sevenCardTable_;
    std::map<std::string, MappedFile> files_;
    std::map<std::string, TableRange> ranges_;
};

} // namespace

std::string damageOf(const TableFile& file, const std::string& path, int threads) {
    if (file.group == TableGroup::sevenCards) {
        const auto check =
            file.path == sevenCardTablePath ? checkSevenCardFile(path) : checkDenseRankFile(path);
        return check && check->state == TableFileState::bad ? check->problem.substr(path.size() + 1)
                                                            : "";
    }
    const auto mapped = MappedFile::open(path, file.bytes);
    if (!mapped)
        return "";
    const auto look = [&](const auto entries, const EntryLimits& limits) {
        return problemOfEntries(entries, limits, threads, [&] { mapped->forgetPages(); });
    };
    switch (file.group) {
    case TableGroup::equities:
        return look(mapped->as<double>(), equityEntries);
    case TableGroup::utilities:
        return look(mapped->as<double>(), utilityEntries);
    case TableGroup::clusters:
        return look(mapped->as<uint8_t>(), clusterEntries);
    default:
        return look(mapped->as<uint8_t>(), bucketEntries);
    }
}

std::vector<CheckedTable> checkTables(const CheckOptions& options) {
    std::vector<CheckedTable> checked;
    Checker checker(options);
    const auto& groups = options.groups;
    for (const PlannedTable& table : planTables(options.directory, groups, false).tables) {
        // A plan has what missing ones are made from, too.
        if (!groups.empty() &&
            std::find(groups.begin(), groups.end(), table.file->group) == groups.end())
            continue;
        CheckedTable result{table.file, table.state, ""};
        if (options.progress)
            options.progress(table.file->path);
        if (!table.problem.empty())
            result.problem =
                table.problem.substr(inDirectory(options.directory, table.file->path).size() + 1);
        else if (table.state == TableState::good)
            result.problem = checker.problemOf(*table.file);
        checked.push_back(std::move(result));
    }
    return checked;
}

} // namespace tamarin
