// tamarin serve: a table in the browser, for a person.
#include "support/interrupt.h"
#include "toolbox/command.h"
#include "toolbox/numbers.h"
#include "web/web_server.h"

namespace tamarin {

namespace {

struct ServeArguments {
    std::string directory = ".";
    std::string game;
    uint16_t port = 0;
};

// Behind the '#', where the browser keeps it to itself: it is in no request and in no log.
std::string addressOf(uint16_t port, const std::string& token, const std::string& game) {
    return fmt::format("http://127.0.0.1:{}/#token={}{}", port, token,
                       game.empty() ? "" : "&game=" + game);
}

int serve(const ServeArguments& options) {
    std::string game;
    if (!options.game.empty()) {
        const auto opened = openListedGame(options.game, options.directory);
        if (!opened)
            return fail(options.game + ": " + opened.error());
        game = opened->name;
    }
    const auto token = makeToken();
    if (!token)
        return fail(token.error());
    const auto server = WebServer::open(options.directory, options.port, *token, ownPrograms());
    if (!server)
        return fail(server.error());
    fmt::print("{}\n", addressOf((*server)->port(), *token, game));
    std::fflush(stdout);
    remark("Open this address in a browser on this machine; it is for you alone. Ctrl-C ends it.");
    (*server)->run([] { return !interrupted(); });
    return interruptStatus();
}

} // namespace

void addServeCommand(CLI::App& app, int& status) {
    auto options = std::make_shared<ServeArguments>();
    CLI::App& command = addCommand(
        app, "serve", "Play, look at hands and strategies in a browser on this machine",
        "tamarin serve --dir run\n\n"
        "Prints the address of the page, with a token that opens it, and serves until Ctrl-C. "
        "Nothing\nbut this machine can reach it. The hands that are played go into DIR/logs.");
    command.add_option("--game", options->game, "The game that the page offers first")
        ->type_name("GAME");
    addDirectoryOption(command, options->directory);
    addWholeNumber(command, "--port", options->port, 0, 65535, "Port; 0 picks a free one");
    command.callback([options, &status] { status = serve(*options); });
}

} // namespace tamarin
