// tamarin bot: plays a match as a simple opponent, against any dealer of the protocol.
#include "bots/bot.h"
#include "bots/token_greeting.h"
#include "directory/playing_directory.h"
#include "toolbox/command.h"
#include "toolbox/numbers.h"
#include "toolbox/token_option.h"

#include <csignal>
#include <random>

namespace tamarin {

namespace {

struct BotArguments {
    std::string kind;
    std::string game;
    std::string host;
    uint16_t port = 0;
    uint64_t seed = 0;
    TokenOption token;
};

int play(const BotArguments& options, bool seeded) {
    // A bot has nothing to save, so a signal may simply end it.
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
        std::signal(signal, SIG_DFL);
    const auto gameFile = findGameFile(options.game, ".");
    if (!gameFile)
        return fail(gameFile.error());
    const uint64_t seed = seeded ? options.seed : std::random_device{}();
    TokenGreeting calls(readToken(options.token));
    const auto bot = makeBot(options.kind, gameFile->c_str(), seed, calls);
    if (!bot)
        throw UsageError(fmt::format("there is no bot '{}', only {}", options.kind, botNames()));
    if (!bot->connect(options.host.c_str(), options.port))
        return exitFailed;
    return bot->play() ? exitDone : exitFailed;
}

} // namespace

void addBotCommand(CLI::App& app, int& status) {
    auto options = std::make_shared<BotArguments>();
    std::string kinds;
    for (const BotKind& kind : botKinds())
        kinds += fmt::format("\n  {:<8}{}", kind.name, kind.description);
    CLI::App& command =
        addCommand(app, "bot", "Play a match as a simple opponent",
                   "tamarin bot rule kuhn.limit.3p.game localhost 16177\n\nKinds:" + kinds);
    command.add_option("KIND", options->kind, "Which opponent: " + botNames())->required();
    command
        .add_option("GAME", options->game, "Game definition: a path, or a name here or in games/")
        ->required();
    command.add_option("HOST", options->host, "The dealer's host")->required();
    addWholeNumber(command, "PORT", options->port, 1, 65535, "The dealer's port")->required();
    CLI::Option* seed = addSeedOption(command, options->seed)
                            ->description("Seed of the bot's draws; from the system when not given")
                            ->default_str("");
    addTokenOptions(command, options->token, "What to say to a dealer that asks for a token");
    command.callback([options, seed, &status] { status = play(*options, seed->count() > 0); });
}

} // namespace tamarin
