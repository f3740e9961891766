// tamarin match: deals a match between players over TCP and reports the result.
#include "bots/bot.h"
#include "dealer/hand_log.h"
#include "dealer/match.h"
#include "dealer/seat.h"
#include "dealer/seating.h"
#include "directory/playing_directory.h"
#include "report/match_report.h"
#include "support/interrupt.h"
#include "support/progress.h"
#include "toolbox/command.h"
#include "toolbox/known_strategies.h"
#include "toolbox/numbers.h"
#include "toolbox/token_option.h"

#include <cmath>
#include <filesystem>
#include <set>

namespace tamarin {

namespace {

struct MatchArguments {
    std::string game;
    std::vector<std::string> seats;
    TokenOption token;
    uint64_t hands = 1000;
    uint64_t seed = 1;
    bool luckFree = false;
    bool duplicate = false;
    bool fixedSeats = false;
    std::string directory = ".";
    std::string log;
    double actionLimit = 60;
    double handLimit = 300;
    double startLimit = 600;
    std::string onFault = "fold";
    bool json = false;
    bool quiet = false;
    bool verbose = false;
};

Duration fromSeconds(double value) {
    return Duration(static_cast<int64_t>(std::llround(value * 1e9)));
}

std::vector<Seat> readSeats(const MatchArguments& options, const Game& game) {
    std::vector<Seat> seats;
    std::set<std::string> names;
    for (const std::string& text : options.seats) {
        const auto seat = parseSeat(text);
        if (!seat)
            throw UsageError(seat.error());
        if (!names.insert(seat->name).second)
            throw UsageError(fmt::format("two seats are named '{}'", seat->name));
        if (seat->kind == SeatKind::bot) {
            const auto& kinds = botKinds();
            if (std::none_of(kinds.begin(), kinds.end(),
                             [&](const BotKind& kind) { return seat->bot == kind.name; }))
                throw UsageError(fmt::format("seat '{}': there is no bot '{}', only {}", text,
                                             seat->bot, botNames()));
        }
        seats.push_back(*seat);
    }
    if (seats.size() != game.numPlayers)
        throw UsageError(fmt::format("{} has {} seats, but --seat is given {} times",
                                     bareName(options.game), unsigned{game.numPlayers},
                                     seats.size()));
    return seats;
}

// Numbers for the bots' own draws, one a seat, other than those of the cards.
uint64_t botSeed(uint64_t seed, size_t seat) {
    return seed * 1000003 + seat + 1;
}

// How each player is started. Players that run here find `player` beside this program.
Result<std::vector<SeatPlan>> planSeats(const MatchArguments& options,
                                        const std::vector<Seat>& seats,
                                        const std::string& gameFile) {
    std::error_code error;
    const auto program = std::filesystem::read_symlink("/proc/self/exe", error);
    std::vector<SeatPlan> plans;
    for (size_t i = 0; i < seats.size(); ++i) {
        const Seat& seat = seats[i];
        SeatPlan plan;
        plan.name = seat.name;
        if (seat.kind == SeatKind::listen) {
            plan.address = seat.address;
            plan.port = seat.port;
        }
        if (seat.kind != SeatKind::listen) {
            Child::Command command;
            if (options.verbose)
                command.mirror = fmt::format("[{}] ", seat.name);
            if (seat.kind == SeatKind::bot) {
                // The link and not its target: it leads to this program even when a newer one has
                // taken its place meanwhile.
                command.file = "/proc/self/exe";
                command.arguments = {"tamarin",
                                     "bot",
                                     seat.bot,
                                     "--seed",
                                     std::to_string(botSeed(options.seed, i)),
                                     "--",
                                     std::filesystem::absolute(gameFile).string()};
            } else {
                auto name = placeGameFile(gameFile, options.directory);
                if (!name)
                    return Error{name.error()};
                command.file = "/bin/sh";
                command.arguments = {"/bin/sh", "-c", seat.command + " \"$@\"", "sh", *name};
                command.directory = options.directory;
                command.firstPath = program.parent_path().string();
            }
            plan.command = std::move(command);
        }
        plans.push_back(std::move(plan));
    }
    return plans;
}

// Says what goes wrong with a player, but not ten thousand times.
class FaultReporter {
public:
    explicit FaultReporter(const std::vector<Seat>& seats) : seats_(seats), told_(seats.size()) {}

    void report(size_t player, Fault fault, uint32_t hand, const std::string& detail) {
        constexpr int told = 5;
        int& count = told_[player][static_cast<size_t>(fault)];
        if (++count > told)
            return;
        complain("{}: {} in hand {}{}{}{}", seats_[player].name, faultName(fault), hand,
                 detail.empty() ? "" : ": ", printable(detail),
                 count == told ? " (further ones of this kind are only counted)" : "");
    }

private:
    const std::vector<Seat>& seats_;
    std::vector<std::array<int, numFaults>> told_;
};

MatchOptions rulesOf(const MatchArguments& options, size_t seats) {
    MatchOptions rules;
    rules.hands = options.hands;
    rules.seed = options.seed;
    rules.duplicate = options.duplicate;
    rules.fixedSeats = options.fixedSeats;
    rules.actionLimit = fromSeconds(options.actionLimit);
    rules.handLimit = fromSeconds(options.handLimit);
    rules.stopOnFault = options.onFault == "stop";
    if (options.duplicate && options.hands % seats != 0) {
        rules.hands = (options.hands / seats + 1) * seats;
        complain("playing {} hands, to make whole duplicate blocks of {}", rules.hands, seats);
    }
    return rules;
}

SeatingOptions seatingOf(const MatchArguments& options, const std::vector<Seat>& seats) {
    SeatingOptions seating;
    seating.token = readToken(options.token);
    if (!seating.token.empty() &&
        std::ranges::none_of(seats, [](const Seat& seat) { return seat.kind == SeatKind::listen; }))
        throw UsageError("a token is for seats NAME=listen:PORT, and there is none");
    seating.startLimit = fromSeconds(options.startLimit);
    seating.notice = [](const std::string& text) { complain(text); };
    seating.keepWaiting = [] { return !interrupted(); };
    return seating;
}

// What is kept and shown of a match while it runs.
class Recorder {
public:
    Recorder(const Game& game, const std::vector<Seat>& seats)
        : game_(game), seats_(seats), faults_(seats) {}

    // Before the players are seated: they may train for hours, and the log must have its place.
    Status createLog(const std::string& path) {
        auto created = HandLog::create(path, [] { return !interrupted(); });
        if (!created)
            return Error{created.error()};
        log_ = std::move(*created);
        return {};
    }
    Status begin(const std::string& title, uint64_t hands, bool quiet) {
        if (!quiet)
            progress_.emplace("Playing hands", "hands", hands);
        return log_ ? log_->begin(title) : Status();
    }
    MatchEvents events() {
        MatchEvents events;
        events.keepPlaying = [] { return !interrupted(); };
        events.faulty = [this](size_t player, Fault fault, uint32_t hand,
                               const std::string& detail) {
            faults_.report(player, fault, hand, detail);
        };
        events.handFinished = [this](const FinishedHand& hand) { return finish(hand); };
        return events;
    }
    void endProgress() {
        if (progress_)
            progress_->finish(finished_);
    }
    // Every hand is kept, for what is worked out when the match is over.
    void keepHands() { keeping_ = true; }
    const std::vector<SeatedHand>& kept() const { return kept_; }
    Status closeLog() { return log_ ? log_->close() : Status(); }

private:
    Status finish(const FinishedHand& hand) {
        ++finished_;
        if (progress_)
            progress_->update(finished_);
        if (keeping_)
            kept_.push_back({playedHand(game_, *hand.state),
                             {hand.players[0], hand.players[1]},
                             hand.state->handId});
        if (!log_)
            return {};
        logged_.state = *hand.state;
        logged_.chips.assign(hand.chips.begin(), hand.chips.end());
        logged_.names.clear();
        for (const size_t player : hand.players)
            logged_.names.push_back(seats_[player].name);
        return log_->add(&game_, logged_);
    }

    const Game& game_;
    const std::vector<Seat>& seats_;
    FaultReporter faults_;
    std::optional<HandLog> log_;
    std::optional<Progress> progress_;
    uint64_t finished_ = 0;
    LoggedHand logged_;
    bool keeping_ = false;
    std::vector<SeatedHand> kept_;
};

std::string titleOf(const MatchArguments& options, const std::string& game) {
    return fmt::format("{} seed {} {}", game, options.seed,
                       options.duplicate ? "duplicate"
                                         : (options.fixedSeats ? "fixed seats" : "rotated"));
}

// The means over the match's units, by player.
std::vector<FreedFigures> figuresOf(const std::vector<FreedHand>& freed,
                                    const std::vector<SeatedHand>& hands, const Scoreboard& board) {
    std::array<RunningMoments, 2> luckFree;
    std::array<RunningMoments, 2> expected;
    const uint64_t unit = board.unitHands();
    for (uint64_t u = 0; u < board.units(); ++u)
        for (size_t player = 0; player < 2; ++player) {
            double free = 0;
            double worth = 0;
            for (uint64_t h = u * unit; h < (u + 1) * unit; ++h) {
                const double sign = hands[h].players[0] == player ? 1 : -1;
                free += sign * freed[h].luckFree.value_or(0);
                worth += sign * freed[h].expected.value_or(0);
            }
            luckFree[player].add(free / static_cast<double>(unit));
            if (freed[u * unit].expected)
                expected[player].add(worth / static_cast<double>(unit));
        }
    std::vector<FreedFigures> figures(2);
    for (size_t player = 0; player < 2; ++player) {
        figures[player].luckFree = interval95(luckFree[player]);
        if (expected[player].count() > 0)
            figures[player].expected = interval95(expected[player]);
    }
    return figures;
}

// After the match: a player may have trained its strategy only then. Nothing, with a word about it,
// where that cannot be said.
std::vector<FreedFigures> freeOfLuck(const GameFile& game, const MatchArguments& options,
                                     const std::vector<Seat>& seats, const Recorder& recorder,
                                     const MatchResult& result) {
    const auto none = [](const std::string& why) {
        complain("--luck-free: {}", why);
        return std::vector<FreedFigures>{};
    };
    if (interrupted())
        return none("the match was stopped; 'tamarin analyse' does it from a log");
    const auto named = knownOfSeats(seats);
    const auto known = KnownStrategies::open(game, options.directory, named);
    if (!known)
        return none(known.error());
    for (size_t player = 0; player < seats.size(); ++player) {
        const PlayerResult& faulty = result.players[player];
        if ((*known)->tell(seats[player].name, player) &&
            std::ranges::any_of(faulty.faults, [](uint64_t count) { return count > 0; }))
            complain("--luck-free: the dealer has played for {}; those decisions are not its "
                     "strategy's",
                     faulty.name);
    }
    Work work;
    work.stop = interrupted;
    if (!options.quiet)
        remark("freeing {} hands of luck", describeCount(recorder.kept().size()));
    if (Status ready = (*known)->results().prepare(work); !ready)
        return none(ready.error());
    const auto freed = (*known)->results().of(recorder.kept(), work);
    if (!freed)
        return none(freed.error());
    return figuresOf(*freed, recorder.kept(), result.board);
}

// Before anything is started: what can be said of the strategies from the command line alone.
void checkLuckFree(const MatchArguments& options, const Game& game,
                   const std::vector<Seat>& seats) {
    if (!options.luckFree)
        return;
    if (Status fits = FreedResults::check(game); !fits)
        throw UsageError("--luck-free: " + fits.error());
    if (knownOfSeats(seats).empty())
        throw UsageError("--luck-free: of no seat it is known what it plays by; that is known of "
                         "bot:KIND and of 'player'");
}

int match(const MatchArguments& options) {
    const auto game = openGameFile(options.game, options.directory);
    if (!game)
        return fail(game.error());
    const Game& definition = *game->rules;
    if (const Status dealable = checkDealable(&definition); !dealable)
        return fail(fmt::format("cannot deal {}: {}", game->path, dealable.error()));
    const std::vector<Seat> seats = readSeats(options, definition);
    const MatchOptions rules = rulesOf(options, seats.size());
    const SeatingOptions seating = seatingOf(options, seats);
    checkLuckFree(options, definition, seats);
    Recorder recorder(definition, seats);
    if (options.luckFree)
        recorder.keepHands();
    if (!options.log.empty())
        if (Status created = recorder.createLog(options.log); !created)
            return fail(created.error());

    const auto plans = planSeats(options, seats, game->path);
    if (!plans)
        return fail(plans.error());
    auto players = seatPlayers(*plans, seating);
    if (!players) {
        complain(players.error());
        return interrupted() ? interruptStatus() : exitFailed;
    }
    if (Status begun = recorder.begin(titleOf(options, game->name), rules.hands, options.quiet);
        !begun)
        return fail(begun.error());
    MatchResult result = playMatch(&definition, *players, rules, recorder.events());
    recorder.endProgress();
    dismissPlayers(*players, result.stopped);
    if (Status closed = recorder.closeLog(); !closed && result.failure.empty())
        result.failure = closed.error();

    MatchReport report{game->name, &definition, rules, &result};
    if (options.luckFree && result.board.units() > 0)
        report.freed = freeOfLuck(*game, options, seats, recorder, result);
    if (options.json)
        printJson(reportAsJson(report));
    else
        fmt::print("{}", reportAsTable(report));
    if (!result.failure.empty())
        return fail(result.failure);
    return result.stopped ? interruptStatus() : exitDone;
}

} // namespace

void addMatchCommand(CLI::App& app, int& status) {
    auto options = std::make_shared<MatchArguments>();
    CLI::App& command = addCommand(
        app, "match", "Deal a match between players over TCP and report who won how much",
        "tamarin match kuhn.limit.3p.game --hands 3000 --seat me=player \\\n"
        "      --seat rule=bot:rule --seat random=bot:random\n\n"
        "A seat is NAME=COMMAND (a shell command, run in --dir with the game, host and port\n"
        "appended; programs beside tamarin are found first), NAME=bot:KIND (" +
            botNames() +
            ")\nor NAME=listen:[ADDRESS:]PORT (a player that somebody else starts; on this machine "
            "alone\n"
            "unless an address is given, 0.0.0.0 for all).\n"
            "Players move on by one seat every hand unless --fixed-seats is given. Chips per hand\n"
            "and milli-big-blinds per hand (mbb, of the largest blind) come with 95 % intervals.\n"
            "After Ctrl-C the result so far is reported.");
    command
        .add_option("GAME", options->game, "Game definition: a path, or a name in --dir or games/")
        ->required();
    command.add_option("--seat", options->seats, "A player, once for each seat: NAME=PLAYER")
        ->take_all()
        ->expected(1, MAX_PLAYERS)
        ->type_name("NAME=PLAYER")
        ->default_str("")
        ->required();
    addTokenOptions(command, options->token,
                    "What players must say on the ports of NAME=listen seats");
    addWholeNumber(command, "--hands", options->hands, 1, UINT32_MAX, "Hands to play");
    addSeedOption(command, options->seed)
        ->description("Seed of the cards and of the bots: the same seed gives the same deals");
    command.add_flag("--duplicate", options->duplicate,
                     "Play each deal once for every rotation of the players");
    command.add_flag("--luck-free", options->luckFree,
                     "Results freed of luck, too, where it is known what a seat plays by: bot:KIND "
                     "and 'player', in limit games for two");
    command.add_flag("--fixed-seats", options->fixedSeats, "Players keep their seats")
        ->excludes("--duplicate");
    addDirectoryOption(command, options->directory);
    command.add_option("--log", options->log, "Write a line for every finished hand")
        ->type_name("FILE");
    addSeconds(command, "--action-limit", options->actionLimit, "Time for one answer");
    addSeconds(command, "--hand-limit", options->handLimit,
               "Time for all answers of a player in one hand");
    addSeconds(command, "--start-limit", options->startLimit,
               "Time for the players to connect; a player may train first");
    command
        .add_option("--on-fault", options->onFault,
                    "A player that is late, gone or answers nonsense folds (or calls when nothing "
                    "is owed), or stops the match")
        ->check(CLI::IsMember({"fold", "stop"}));
    addJsonOption(command, options->json);
    addQuietOption(command, options->quiet);
    command.add_flag("--verbose", options->verbose,
                     "Show what the players print, on standard error");
    command.callback([options, &status] { status = match(*options); });
}

} // namespace tamarin
