#include "toolbox/prepare_blueprint.h"

#include "directory/blueprints.h"
#include "support/tree_paths.h"
#include "toolbox/small_blueprint.h"
#include "toolbox/tamarin_process.h"

#include <csignal>
#include <thread>
#include <tuple>

namespace tamarin::test {
namespace {

namespace fs = std::filesystem;

// A small game, and card abstractions of all qualities that are there already: sparse ones.
class PrepareBlueprint : public PlayingDirectory {
protected:
    void SetUp() override {
        PlayingDirectory::SetUp();
        std::ofstream("small.game") << shortGame(4, 13, "1 1 0 0", "10 10 20 20", "0 3 1 1");
        for (const BucketCounts& counts :
             {BucketCounts{169, 200, 200, 200}, BucketCounts{169, 1000, 1000, 1000}})
            putAbstraction(counts);
    }
    static void putAbstraction(const BucketCounts& counts) {
        const std::string name = abstractionName(counts, AbstractionMethod::emd);
        writeSparseAbstraction(name);
        const std::string path = abstractionFolder(".", name) + "/" + descriptionFileName;
        auto description = readDescription(path);
        ASSERT_TRUE(description.ok());
        description->options = {};
        for (size_t round = 0; round < counts.size(); ++round)
            description->rounds[round].buckets = counts[round];
        ASSERT_TRUE(writeDescription(path, *description).ok());
    }
    static ToolboxRun prepare(const std::string& quality, std::vector<std::string> more = {}) {
        more.insert(more.begin(), {"prepare", "small.game", "--quality", quality, "--quiet"});
        return callTamarin(more);
    }
    static ToolboxRun prepareShortly(const std::string& quality,
                                     std::vector<std::string> more = {}) {
        more.insert(more.end(), {"--seconds", "0.2"});
        return prepare(quality, more);
    }
    static std::string manifest() { return contentsOf("strategies/small/manifest.json"); }

    const std::string blueprint = "strategies/small/blueprint";
};

TEST_F(PrepareBlueprint, MakesABlueprintOnce) {
    const ToolboxRun ran = prepareShortly("quick");
    ASSERT_EQ(ran.status, 0) << ran.err;
    EXPECT_NE(ran.out.find("iterations over 169-200-200-200"), std::string::npos) << ran.out;
    EXPECT_NE(ran.out.find("'player small.game' in . plays it\n"), std::string::npos) << ran.out;
    EXPECT_NE(manifest().find("tamarin prepare --quality quick --cards 169-200-200-200"),
              std::string::npos)
        << manifest();
    EXPECT_FALSE(fs::exists("lookup/holdem_preflop_2p_0")) << "no tables are needed";
    const std::string made = contentsOf(blueprint);
    const ToolboxRun again = prepareShortly("quick");
    EXPECT_EQ(again.status, 0);
    EXPECT_EQ(again.out, blueprint + " is there and whole; --force trains it anew\n");
    EXPECT_EQ(contentsOf(blueprint), made);
    const ToolboxRun forced = prepareShortly("quick", {"--force"});
    EXPECT_EQ(forced.status, 0);
    EXPECT_NE(forced.out.find("iterations over"), std::string::npos) << forced.out;
    EXPECT_EQ(std::distance(fs::directory_iterator("strategies/small"), {}), 5)
        << "blueprint, checkpoint, log, manifest, lock: nothing was put aside";
}

TEST_F(PrepareBlueprint, AHigherQualityReplacesALowerOne) {
    ASSERT_EQ(prepareShortly("quick").status, 0);
    const ToolboxRun good = prepareShortly("good");
    ASSERT_EQ(good.status, 0) << good.err;
    EXPECT_NE(good.out.find("iterations over 169-1000-1000-1000"), std::string::npos);
    EXPECT_NE(good.err.find("blueprint.checkpoint.bad"), std::string::npos)
        << "that of quick is kept: " << good.err;
    EXPECT_FALSE(fs::exists(blueprint + ".bad"));
    const std::string made = contentsOf(blueprint);
    const ToolboxRun quick = prepareShortly("quick");
    EXPECT_EQ(quick.status, 0);
    EXPECT_EQ(quick.out, blueprint +
                             " is there and whole, and of a higher quality; --force trains it "
                             "anew\n");
    EXPECT_EQ(contentsOf(blueprint), made);
}

TEST_F(PrepareBlueprint, KeepsWhatSomebodyElseMade) {
    writeSparseAbstraction("few");
    ASSERT_EQ(callTamarin({"train", "small.game", "--cards", "few", "--iterations", "3", "--quiet"})
                  .status,
              0);
    const std::string before = contentsOf(blueprint);
    ASSERT_EQ(prepareShortly("quick").status, 0);
    EXPECT_EQ(contentsOf(blueprint + ".bad"), before);
    // And what is damaged.
    fs::resize_file(blueprint, 1000);
    const ToolboxRun anew = prepareShortly("quick");
    ASSERT_EQ(anew.status, 0) << anew.err;
    EXPECT_NE(
        anew.err.find(blueprint + ": damaged or cut short, it has 1000 bytes: making it anew"),
        std::string::npos)
        << anew.err;
    EXPECT_EQ(fs::file_size(blueprint + ".bad.2"), 1000U);
    EXPECT_GT(fs::file_size(blueprint), 1000U);
    // And one of the same cards whose training cannot be gone on with.
    fs::remove("strategies/small/manifest.json");
    fs::remove(blueprint + ".checkpoint");
    const std::string last = contentsOf(blueprint);
    ASSERT_EQ(prepareShortly("quick").status, 0);
    EXPECT_EQ(contentsOf(blueprint + ".bad.3"), last);
}

// The first stop leaves a blueprint of what was trained so far, and the same command goes on.
TEST_F(PrepareBlueprint, AStopKeepsWhatStands) {
    const std::string here = fs::current_path().string();
    const auto stopped = [&](const std::string& quality) {
        Process process(tamarinCommand({"prepare", "small.game", "--quality", quality}), here);
        EXPECT_TRUE(process.says(" information sets; up to "));
        std::this_thread::sleep_for(std::chrono::milliseconds(300));
        kill(process.pid(), SIGINT);
        const int status = process.wait();
        return Ended{status, process.out(), process.err()};
    };
    const Ended first = stopped("quick");
    EXPECT_EQ(first.status, 128 + SIGINT) << first.err;
    EXPECT_NE(first.err.find("stopped; the same command goes on from"), std::string::npos)
        << first.err;
    ASSERT_TRUE(fs::exists(blueprint)) << first.err;
    EXPECT_EQ(manifest().find(", quality quick"), std::string::npos) << "it is not finished";
    const Ended second = stopped("quick");
    EXPECT_NE(second.err.find("going on after iteration"), std::string::npos) << second.err;
    // Little of a higher quality is not worth more than what is there.
    const std::string before = contentsOf(blueprint);
    const Ended third = stopped("good");
    EXPECT_EQ(third.status, 128 + SIGINT);
    EXPECT_NE(third.err.find("as it was"), std::string::npos) << third.err;
    EXPECT_EQ(contentsOf(blueprint), before);
    ASSERT_EQ(prepareShortly("quick").status, 0);
    EXPECT_NE(manifest().find(", quality quick"), std::string::npos);
}

// What earlier runs took counts: with all of the time behind it, a training is as good as finished.
TEST_F(PrepareBlueprint, TrainsForTheTimeThatIsLeft) {
    const auto train = [] {
        ASSERT_EQ(callTamarin({"train", "small.game", "--cards", "169-200-200-200", "--seconds",
                               "0.3", "--quiet"})
                      .status,
                  0);
    };
    const auto iterations = [] {
        const std::string log = contentsOf("strategies/small/convergence.jsonl");
        const size_t last = log.rfind('\n', log.size() - 2);
        return nlohmann::json::parse(log.substr(last == std::string::npos ? 0 : last + 1))
            .at("iteration")
            .get<uint64_t>();
    };
    train();
    const uint64_t before = iterations();
    ASSERT_EQ(prepare("quick", {"--seconds", "0.3"}).status, 0);
    EXPECT_EQ(iterations(), before);
    EXPECT_NE(manifest().find(", quality quick"), std::string::npos);
    fs::remove_all("strategies");
    train();
    const uint64_t again = iterations();
    ASSERT_EQ(prepare("quick", {"--seconds", "0.6"}).status, 0);
    EXPECT_GT(iterations(), again);
    EXPECT_FALSE(fs::exists(blueprint + ".bad"));
}

TEST_F(PrepareBlueprint, MakesOneOfNoLimitAndOfThreeSeats) {
    putAbstraction({169, 200, 100, 20});
    std::ofstream("three.game")
        << "GAMEDEF\nlimit\nnumPlayers = 3\nnumRounds = 4\nblind = 5 10 0\n"
           "raiseSize = 10 10 20 20\nfirstPlayer = 3 1 1 1\nmaxRaises = 1 1 0 0\n"
           "numSuits = 4\nnumRanks = 13\nnumHoleCards = 2\nnumBoardCards = 0 3 1 1\n"
           "END GAMEDEF\n";
    const std::string noLimit = "holdem.nolimit.2p.reverse_blinds.game";
    for (const auto& [game, folder, cards] : {std::tuple<std::string, std::string, std::string>{
                                                  noLimit, "holdem.nolimit.2p", "169-200-200-200"},
                                              {"three.game", "three", "169-200-100-20"}}) {
        const auto make = [&] {
            return callTamarin(
                {"prepare", game, "--quality", "quick", "--quiet", "--seconds", "0.2"});
        };
        const ToolboxRun made = make();
        ASSERT_EQ(made.status, 0) << made.err;
        EXPECT_NE(made.out.find("iterations over " + cards), std::string::npos) << made.out;
        const std::string path = "strategies/" + folder + "/blueprint";
        const auto opened = openBlueprint(path, ".");
        ASSERT_TRUE(opened.ok()) << opened.error();
        EXPECT_EQ(opened->menu(), game == noLimit ? "bets = 1/2 1 2 A, 1 A, 1 A, A\n" : "");
        EXPECT_NE(contentsOf("strategies/" + folder + "/manifest.json").find(", quality quick"),
                  std::string::npos);
        EXPECT_EQ(make().out, path + " is there and whole; --force trains it anew\n");
    }
    // One with another menu is somebody's.
    std::ofstream("other.menu") << "bets = 1 A, A\n";
    ASSERT_EQ(callTamarin({"train", noLimit, "--cards", "169-200-200-200", "--menu", "other.menu",
                           "--iterations", "64", "--fresh", "--quiet"})
                  .status,
              0);
    const std::string other = contentsOf("strategies/holdem.nolimit.2p/blueprint");
    ASSERT_EQ(callTamarin({"prepare", noLimit, "--quality", "quick", "--quiet", "--seconds", "0.2"})
                  .status,
              0);
    EXPECT_EQ(contentsOf("strategies/holdem.nolimit.2p/blueprint.bad"), other);
}

// The menu that is trained is the one beside the others.
TEST_F(PrepareBlueprint, NoLimitHasTheMiddleMenu) {
    EXPECT_EQ(BettingMenu::read(inTree("menus/middle.menu"))->text(),
              "bets = 1/2 1 2 A, 1 A, 1 A, A\n");
}

TEST_F(PrepareBlueprint, DryRunSaysWhatItTakes) {
    fs::remove_all("lookup/169-200-200-200");
    const ToolboxRun first = prepare("quick", {"--dry-run"});
    ASSERT_EQ(first.status, 0) << first.err;
    EXPECT_TRUE(first.out.starts_with("card abstraction 169-200-200-200: ")) << first.out;
    EXPECT_NE(first.out.find("\ntraining of the blueprint for 5 min"), std::string::npos)
        << first.out;
    EXPECT_FALSE(fs::exists("lookup/169-200-200-200"));
    const ToolboxRun best = prepare("best", {"--dry-run"});
    EXPECT_NE(best.out.find("card abstraction 169-5000-5000-5000: "), std::string::npos);
    EXPECT_NE(best.out.find("until it is stopped\n"), std::string::npos) << best.out;
    const ToolboxRun good = prepare("good", {"--dry-run"});
    EXPECT_NE(good.out.find(" boards/s with "), std::string::npos) << good.out;
    EXPECT_FALSE(fs::exists("strategies"));
}

TEST_F(PrepareBlueprint, RefusesOtherGames) {
    EXPECT_EQ(qualityNames(), (std::vector<std::string>{"quick", "good", "best"}));
    EXPECT_EQ(prepare("great").status, 2);
    EXPECT_EQ(callTamarin({"prepare", "kuhn.limit.3p.game", "--quality", "quick"}).status, 2);
    std::ofstream("three.game")
        << "GAMEDEF\nnolimit\nnumPlayers = 3\nnumRounds = 4\nstack = 900 900 900\n"
           "blind = 5 10 0\nfirstPlayer = 3 1 1 1\nnumSuits = 4\nnumRanks = 13\n"
           "numHoleCards = 2\nnumBoardCards = 0 3 1 1\nEND GAMEDEF\n";
    const ToolboxRun refused = callTamarin({"prepare", "three.game", "--quality", "quick"});
    EXPECT_EQ(refused.status, 1);
    EXPECT_NE(refused.err.find("--quality: three.game: no-limit for more than two seats has no "
                               "menu"),
              std::string::npos)
        << refused.err;
    EXPECT_FALSE(fs::exists("strategies")) << "nothing was begun";
}

} // namespace
} // namespace tamarin::test
