#include "toolbox/command.h"

#include "abstraction/work.h"
#include "directory/json.h"
#include "support/exception_text.h"
#include "support/interrupt.h"
#include "toolbox/numbers.h"

#include <cstdio>
#include <iostream>

namespace tamarin {

namespace {

// The name of the subcommand that the arguments reached, with a space before it, or nothing.
std::string reachedCommand(const CLI::App& app) {
    const auto reached = app.get_subcommands();
    return reached.empty() ? std::string{} : " " + reached.front()->get_name();
}

// The parser's own messages may have several lines; a person gets one.
std::string oneLine(std::string text) {
    for (char& c : text)
        if (c == '\n')
            c = ' ';
    while (!text.empty() && text.back() == ' ')
        text.pop_back();
    return text;
}

// Whether all that was printed has left the program.
bool outputWritten() {
    std::cout.flush();
    return std::fflush(stdout) == 0 && std::ferror(stdout) == 0 && std::cout.good();
}

int parseAndRun(int argc, const char* const* argv, const std::vector<AddCommand>& commands) {
    CLI::App app{"A poker player's toolbox: matches, training, tables and measurement."};
    app.name(programName);
    app.set_version_flag("--version", std::string{programName} + " " + TAMARIN_VERSION);
    app.require_subcommand(0, 1);
    app.footer("Every command has --help with an example.\n"
               "Exit status: 0 done, 1 failed, 2 wrong usage, 128 + N after signal N.");

    int status = exitDone;
    for (AddCommand add : commands)
        add(app, status);

    try {
        app.parse(argc, argv);
        if (app.get_subcommands().empty())
            throw UsageError("a command is needed");
    } catch (const CLI::Success& wanted) { // --help and --version
        return app.exit(wanted) == 0 ? exitDone : exitFailed;
    } catch (const CLI::ExtrasError& error) {
        const auto unknown = app.remaining(true);
        if (!app.get_subcommands().empty() || unknown.empty() || unknown.front().starts_with("-"))
            complain("{}; try '{}{} --help'", oneLine(error.what()), programName,
                     reachedCommand(app));
        else
            complain("there is no command '{}'; try '{} --help'", unknown.front(), programName);
        return exitUsage;
    } catch (const CLI::ParseError& error) {
        complain("{}; try '{}{} --help'", oneLine(error.what()), programName, reachedCommand(app));
        return exitUsage;
    } catch (...) {
        // fmt throws what standard output refuses; that is told below.
        return std::ferror(stdout) != 0 ? exitFailed : fail(describeException());
    }
    return status;
}

} // namespace

int runToolbox(int argc, const char* const* argv, const std::vector<AddCommand>& commands) {
    const int status = parseAndRun(argc, argv, commands);
    // A result that could not be written is no result, even that of work that a signal ended.
    return outputWritten() ? status : fail("could not write the result to standard output");
}

CLI::App& addCommand(CLI::App& app, const std::string& name, const std::string& description,
                     const std::string& example) {
    CLI::App* command = app.add_subcommand(name, description);
    command->footer("Example:\n  " + example);
    command->option_defaults()->always_capture_default();
    return *command;
}

int fail(const std::string& message) {
    complain(message);
    return exitFailed;
}

bool stoppedBySignal(const std::string& error) {
    return interrupted() && error == stopped().message;
}

int stoppedOrFailed(const std::string& error) {
    return stoppedBySignal(error) ? interruptStatus() : fail(error);
}

void printJson(const nlohmann::ordered_json& value) {
    fmt::print("{}\n", jsonText(value));
}

CLI::Option* addJsonOption(CLI::App& command, bool& json) {
    return command.add_flag("--json", json, "Print the result as JSON");
}

CLI::Option* addSeedOption(CLI::App& command, uint64_t& seed) {
    return addWholeNumber(command, "--seed", seed, 0, UINT64_MAX,
                          "Seed of everything drawn at random");
}

CLI::Option* addThreadsOption(CLI::App& command, int& threads) {
    return addWholeNumber(command, "--threads", threads, 0, mostThreads,
                          "Threads to use; 0 for all cores");
}

CLI::Option* addDirectoryOption(CLI::App& command, std::string& directory) {
    return command
        .add_option("--dir", directory,
                    "Playing directory: game definitions, and strategies/ and lookup/ below it")
        ->check(CLI::ExistingDirectory)
        ->type_name("DIR");
}

CLI::Option* addQuietOption(CLI::App& command, bool& quiet) {
    return command.add_flag("--quiet", quiet, "No progress on standard error");
}

} // namespace tamarin
