#include "report/table_view.h"

#include "abstraction/round_indexers.h"
#include "support/progress.h"

#include <cmath>
#include <filesystem>

#include <fmt/format.h>

namespace tamarin {

namespace {

constexpr size_t barLength = 40;

bool isQuantised(const TableSummary& summary) {
    const EntryKind kind = kindOf(*summary.file);
    return kind == EntryKind::cluster || kind == EntryKind::bucket;
}

bool isOfHands(const TableSummary& summary) {
    return kindOf(*summary.file) != EntryKind::value;
}

std::string entryText(const TableSummary& summary, double value) {
    return kindOf(*summary.file) == EntryKind::number ? fmt::format("{:.6f}", value)
                                                      : fmt::format("{:.0f}", value);
}

std::string extremeText(const TableSummary& summary, const TableSummary::Extreme& extreme) {
    std::string text = entryText(summary, extreme.value);
    if (isOfHands(summary))
        text +=
            fmt::format(" ({})", summary.all.empty() ? handAt(summary.file->round, extreme.index)
                                                     : startingHands()[extreme.index].name);
    return text;
}

std::string binText(const TableSummary& summary, const TableSummary::Bin& bin) {
    if (isQuantised(summary) || bin.from == bin.to)
        return fmt::format("{:>10}", entryText(summary, bin.from));
    if (kindOf(*summary.file) == EntryKind::value)
        return fmt::format("{:>10.0f} ..{:>10.0f}", bin.from, bin.to);
    return fmt::format("{:>9.4f} ..{:>8.4f}", bin.from, bin.to);
}

// Thirteen rows, aces first; suited hands above the diagonal.
std::string gridText(const TableSummary& summary) {
    std::vector<std::vector<std::string>> rows(13, std::vector<std::string>(13));
    for (size_t i = 0; i < summary.all.size(); ++i) {
        const StartingHand& hand = startingHands()[i];
        const bool number = kindOf(*summary.file) == EntryKind::number;
        rows[size_t(hand.row)][size_t(hand.column)] = fmt::format(
            "{:>4}{:>6}", hand.name,
            number ? fmt::format("{:.3f}", summary.all[i]) : fmt::format("{:.0f}", summary.all[i]));
    }
    std::string text;
    for (const auto& row : rows) {
        for (const std::string& field : row)
            text += field;
        text += '\n';
    }
    return text;
}

} // namespace

std::string titleOf(const TableFile& file) {
    if (file.group == TableGroup::sevenCards)
        return file.path.ends_with(".indexes") ? "ranks of the hand values" : "seven-card table";
    const std::string round = roundNames[static_cast<size_t>(file.round)];
    const char* const opponents = file.players == 2 ? "one opponent" : "two opponents";
    switch (file.group) {
    case TableGroup::equities:
        return fmt::format("equity against {}, {}", opponents, round);
    case TableGroup::clusters:
        return fmt::format("clusters of equity against {}, {}", opponents, round);
    case TableGroup::utilities:
        return fmt::format("utility of seat {} of {} in the auxiliary game, {}", file.seat,
                           file.players, round);
    default:
        return fmt::format("hold'em buckets of seat {} of {}, {}", file.seat, file.players, round);
    }
}

Result<TableView> viewTable(const TableFile& file, const std::string& path) {
    auto summary = summarise(file, path);
    if (!summary) {
        const std::string make =
            fmt::format("; 'tamarin tables --only {}' makes it", nameOf(file.group));
        return Error{summary.error() + make};
    }
    TableView view{path, std::move(*summary), {}};
    if (view.summary.all.empty())
        return view;
    for (const TableFile& other : allTables()) {
        const bool together = other.group == TableGroup::utilities
                                  ? file.players == 2 || file.group == TableGroup::utilities
                                  : other.players == file.players;
        if (&other == &file || other.group == TableGroup::sevenCards || other.round != 0 ||
            !together)
            continue;
        const auto place = std::filesystem::path(path).parent_path() /
                           std::filesystem::path(other.path).filename();
        if (auto found = summarise(other, place.string()); found)
            view.beside.push_back(std::move(*found));
    }
    return view;
}

std::string tableText(const TableView& view) {
    const TableSummary& summary = view.summary;
    std::string text =
        fmt::format("{}: {}\n{} {}, {} bytes\n", view.path, titleOf(*summary.file),
                    describeCount(summary.entries),
                    isOfHands(summary) ? "hands that are distinct up to suits" : "entries",
                    describeCount(summary.file->bytes));
    if (summary.notNumbers > 0)
        text += fmt::format("{} entries are no numbers\n", describeCount(summary.notNumbers));
    if (summary.notNumbers == summary.entries)
        return text;
    text +=
        fmt::format("least {}, greatest {}, mean {:.6f}\n\n", extremeText(summary, summary.least),
                    extremeText(summary, summary.greatest), summary.mean);
    uint64_t most = 1;
    for (const TableSummary::Bin& bin : summary.histogram)
        most = std::max(most, bin.entries);
    for (const TableSummary::Bin& bin : summary.histogram) {
        const double share = static_cast<double>(bin.entries) / static_cast<double>(most);
        const auto length = static_cast<size_t>(std::lround(share * barLength));
        text += fmt::format(
            "{} {:>12} {:5.1f} % {}\n", binText(summary, bin), describeCount(bin.entries),
            100.0 * static_cast<double>(bin.entries) / static_cast<double>(summary.entries),
            std::string(bin.entries > 0 ? std::max<size_t>(length, 1) : 0, '#'));
    }
    if (!summary.all.empty())
        text += '\n' + gridText(summary);
    return text;
}

nlohmann::ordered_json tableJson(const TableView& view) {
    const TableSummary& summary = view.summary;
    const TableFile& file = *summary.file;
    nlohmann::ordered_json json = {
        {"file", view.path},          {"table", titleOf(file)}, {"group", nameOf(file.group)},
        {"entries", summary.entries}, {"bytes", file.bytes},    {"notNumbers", summary.notNumbers}};
    if (isOfHands(summary)) {
        json["players"] = file.players;
        json["round"] = roundNames[static_cast<size_t>(file.round)];
        if (file.group == TableGroup::utilities || file.group == TableGroup::holdem)
            json["seat"] = file.seat;
    }
    if (summary.notNumbers == summary.entries)
        return json;
    const auto extreme = [&](const TableSummary::Extreme& of) {
        nlohmann::ordered_json one = {{"value", of.value}, {"index", of.index}};
        if (isOfHands(summary))
            one["hand"] = handAt(file.round, of.index);
        return one;
    };
    json["least"] = extreme(summary.least);
    json["greatest"] = extreme(summary.greatest);
    json["mean"] = summary.mean;
    json["histogram"] = nlohmann::ordered_json::array();
    for (const TableSummary::Bin& bin : summary.histogram)
        json["histogram"].push_back({{"from", bin.from}, {"to", bin.to}, {"entries", bin.entries}});
    for (size_t i = 0; i < summary.all.size(); ++i)
        json["hands"][startingHands()[i].name] = summary.all[i];
    return json;
}

} // namespace tamarin
