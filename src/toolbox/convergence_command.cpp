// tamarin convergence: the logs of trainings, as a table, as JSON and as curves on a page.
#include "report/convergence_page.h"
#include "support/file.h"
#include "toolbox/command.h"
#include "toolbox/output_place.h"

#include <filesystem>

namespace tamarin {

namespace {

struct ConvergenceArguments {
    std::vector<std::string> logs;
    std::string page;
    bool json = false;
};

constexpr size_t largestLog = size_t{64} << 20U;

int convergence(const ConvergenceArguments& options) {
    if (!options.page.empty())
        if (Status place = checkOutputPlace(options.page, "<!doctype html>", "a page", "--html");
            !place)
            return fail(place.error());
    std::vector<ConvergenceCurve> curves;
    for (const std::string& named : options.logs) {
        std::error_code error;
        const std::string path = std::filesystem::is_directory(named, error)
                                     ? (std::filesystem::path(named) / "convergence.jsonl").string()
                                     : named;
        const auto text = readWholeFile(path, largestLog);
        if (!text)
            return fail(text.error());
        auto read = readConvergence(path, *text);
        if (!read)
            return fail(read.error());
        std::ranges::move(*read, std::back_inserter(curves));
    }
    if (!options.page.empty())
        if (Status written = writeWholeFile(options.page, convergencePage(curves)); !written)
            return fail(written.error());
    if (options.json)
        printJson(convergenceAsJson(curves));
    else if (options.page.empty())
        fmt::print("{}", convergenceAsTable(curves));
    else
        fmt::print("wrote {}\n", options.page);
    return exitDone;
}

} // namespace

void addConvergenceCommand(CLI::App& app, int& status) {
    auto options = std::make_shared<ConvergenceArguments>();
    CLI::App& command =
        addCommand(app, "convergence", "Show how trainings came closer to an equilibrium",
                   "tamarin convergence strategies/kuhn.limit.3p other/ --html convergence.html\n\n"
                   "Every training writes a log, convergence.jsonl, beside its results. Several "
                   "logs are drawn\n"
                   "into one picture.");
    command
        .add_option("LOG", options->logs,
                    "Logs of trainings, or the folders of their results (strategies/GAME)")
        ->required();
    command.add_option("--html", options->page, "Write a self-contained page")->type_name("FILE");
    addJsonOption(command, options->json);
    command.callback([options, &status] { status = convergence(*options); });
}

} // namespace tamarin
