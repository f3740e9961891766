#include "driver/player.h"

#include "driver/KuhnAgent.h"
#include "driver/LimitHoldemAgent.h"
#include "driver/PokerAgent.h"
#include "driver/played_blueprint.h"
#include "driver/played_menu_blueprint.h"
#include "driver/strategy_agent.h"
#include "game/definition_file.h"
#include "holdem/buckets.h"
#include "solver/cfr.h"
#include "support/exception_text.h"
#include "support/interrupt.h"
#include "support/rng.h"
#include "support/scan.h"
#include "support/util.h"

#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace tamarin {

namespace {

// In the format that blueprints of the game have.
Result<std::unique_ptr<PlayedStrategy>> openAsPlayed(const std::string& path, const Game& game) {
    if (PlayedMenuBlueprint::fits(game)) {
        if (auto blueprint = PlayedMenuBlueprint::open(path, ".", game))
            return std::unique_ptr<PlayedStrategy>(std::move(*blueprint));
        else
            return Error{blueprint.error()};
    }
    auto blueprint = PlayedBlueprint::open(path, ".", game);
    if (!blueprint)
        return Error{blueprint.error()};
    return std::unique_ptr<PlayedStrategy>(std::move(*blueprint));
}

// A blueprint beside the game's strategy is played in its stead; null where there is none. One that
// cannot be played stays where it is, and a line says why.
std::unique_ptr<PokerAgent> makeBlueprintAgent(const std::string& gameFile, const Game& game) {
    if (!isHoldem(game)) // the agent that is made then says so
        return nullptr;
    const std::string strategy = holdemStrategyFile(game);
    const std::string path = blueprintBeside(strategy);
    if (!file_exist(path))
        return nullptr;
    auto blueprint = openAsPlayed(path, game);
    if (!blueprint) {
        std::fprintf(stderr, "WARNING: %s: playing %s instead\n", blueprint.error().c_str(),
                     strategy.c_str());
        return nullptr;
    }
    std::cout << "Playing " << (*blueprint)->describe() << std::endl;
    return std::make_unique<StrategyAgent>(gameFile.c_str(), std::move(*blueprint));
}

// The agent for a game, or null when the name is none that this program plays. The whole argument
// is compared: the strategies and tables lie beside the game in the working directory.
std::unique_ptr<PokerAgent> makeAgent(const std::string& gameFile, const Game& game) {
    if (playsAsHoldem(gameFile)) {
        if (auto agent = makeBlueprintAgent(gameFile, game))
            return agent;
        return std::make_unique<LimitHoldemAgent>(gameFile.c_str());
    }
    if (gameFile == "kuhn.limit.3p.game")
        return std::make_unique<KuhnAgent>(gameFile.c_str());
    return nullptr;
}

int play(int argc, char** argv) {
    randomize();
    ignoreBrokenPipes();
    const std::vector<std::string> arguments(argv, argv + argc);
    for (const std::string& argument : arguments)
        std::cout << argument << std::endl;
    if (argc < 4) {
        std::fprintf(stderr, "usage: player game server port\n");
        return 1;
    }
    const GamePtr game = readDefinitionFile(argv[1]);
    if (!game)
        return 1;
    CFR::logProgress = true;
    const std::unique_ptr<PokerAgent> agent = makeAgent(arguments[1], *game);
    if (!agent) {
        std::fprintf(stderr, "ERROR: unknown game %s\n", argv[1]);
        return 1;
    }
    uint16_t port = 0;
    if (scanUnsigned16(argv[3], port) < 0) {
        std::fprintf(stderr, "ERROR: invalid port %s\n", argv[3]);
        return 1;
    }
    return playMatch(*agent, argv[2], port);
}

} // namespace

bool playsAsHoldem(const std::string& gameFile) {
    // The no-limit game is played by the same agent.
    return gameFile == "holdem.limit.2p.reverse_blinds.game" ||
           gameFile == "holdem.limit.3p.game" ||
           gameFile == "holdem.nolimit.2p.reverse_blinds.game";
}

int playMatch(PokerAgent& agent, const char* host, uint16_t port) {
    if (!agent.connect(host, port))
        return 1;
    if (!agent.play())
        std::exit(1); // at once: the agent and all it holds stay as they are
    return 0;
}

int runPlayer(int argc, char** argv) {
    try {
        return play(argc, argv);
    } catch (...) {
        std::fprintf(stderr, "ERROR: %s: %s\n", argc > 1 ? argv[1] : "player",
                     describeException().c_str());
        return 1;
    }
}

} // namespace tamarin
