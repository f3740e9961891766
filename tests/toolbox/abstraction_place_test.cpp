#include "toolbox/abstraction_place.h"

#include "clustering/sparse_abstraction.h"
#include "toolbox/run_toolbox.h"

#include <algorithm>

namespace tamarin::test {
namespace {

class AbstractionPlaces : public PlayingDirectory {
protected:
    void SetUp() override {
        PlayingDirectory::SetUp();
        writeSparseAbstraction("mine");
    }
};

std::string found(const std::string& what, const std::string& directory) {
    const auto place = findAbstraction(what, directory);
    return place ? place->directory + "|" + place->name : "(none)";
}

TEST_F(AbstractionPlaces, AreFoundByPathAndByName) {
    EXPECT_EQ(found("lookup/mine", "."), "|mine");
    EXPECT_EQ(found("lookup/mine/", "elsewhere"), "|mine");
    EXPECT_EQ(found("mine", "."), "|mine");
    std::filesystem::create_directory("other");
    std::filesystem::rename("lookup", "other/lookup");
    EXPECT_EQ(found("mine", "."), "(none)");
    EXPECT_EQ(found("mine", "other"), "other|mine");
    EXPECT_EQ(found("lookup/mine", "other/"), "other|mine");
    EXPECT_EQ(found("other/lookup/mine", "."), "other|mine");
    std::filesystem::current_path("other/lookup");
    EXPECT_TRUE(found("mine", ".").ends_with("/other|mine")) << found("mine", ".");
    const std::string absolute = found("mine", ".");
    std::filesystem::current_path("mine");
    for (const char* here : {".", "./", "../mine", "../mine/."})
        EXPECT_EQ(found(here, "."), absolute) << here;
    std::filesystem::create_directory("inner");
    std::filesystem::current_path("inner");
    EXPECT_EQ(found("..", "."), absolute);
    EXPECT_EQ(found(".", "."), "(none)");
    std::filesystem::current_path("../../../..");
}

// A folder of strategies is none, and neither is the folder of all tables.
TEST_F(AbstractionPlaces, AreFoldersBelowLookupAlone) {
    std::filesystem::create_directories("strategies/kuhn");
    EXPECT_EQ(found("strategies/kuhn", "."), "(none)");
    EXPECT_EQ(found("lookup", "."), "(none)");
    EXPECT_EQ(found("lookup/absent", "."), "(none)");
    EXPECT_EQ(found("lookup/mine/flop", "."), "(none)");
}

// Hand 0 of each round is in another bucket than the others, and so is each of 20 starting hands.
TEST_F(AbstractionPlaces, TheIndexCommandNamesTheBucket) {
    const auto answer = [](std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), "index");
        arguments.insert(arguments.end(), {"--abstraction", "mine", "--dir", "."});
        const ToolboxRun run = callTamarin(arguments);
        EXPECT_EQ(run.status, 0) << run.err;
        return run.out;
    };
    EXPECT_EQ(answer({"KsAs"}), "168\nbucket 8 of 20 before the flop (mine)\n");
    const std::pair<const char*, std::string> rounds[] = {
        {"flop", "bucket 4 of 7 on the flop (mine)\n"},
        {"turn", "bucket 3 of 8 on the turn (mine)\n"},
        {"river", "bucket 8 of 9 on the river (mine)\n"}};
    for (const auto& [round, text] : rounds) {
        const std::string hand = answer({"--unindex", round, "0"});
        EXPECT_TRUE(hand.ends_with(")\n") && hand.find('\n') + 1 == hand.size() - text.size());
        EXPECT_TRUE(hand.ends_with(text)) << hand;
        // The same hand in other suits.
        std::string other = hand.substr(0, hand.find('\n'));
        for (size_t i = 0; i < other.size(); ++i)
            if (const size_t suit = std::string("cdhs").find(other[i]); suit != std::string::npos)
                other[i] = "hscd"[suit];
        EXPECT_EQ(answer({other}), "0\n" + text);
        EXPECT_EQ(answer({"--unindex", round, "9"}).find("bucket 0 of"),
                  answer({"--unindex", round, "9"}).find('\n') + 1);
    }
    const ToolboxRun json =
        callTamarin({"index", "--unindex", "flop", "2", "--abstraction", "mine", "--json"});
    EXPECT_EQ(json.json()["abstraction"],
              nlohmann::json({{"name", "mine"}, {"round", "flop"}, {"bucket", 6}, {"buckets", 7}}));
}

TEST_F(AbstractionPlaces, TheEquityCommandNamesTheBucket) {
    const ToolboxRun hand = callTamarin({"index", "--unindex", "flop", "5"});
    const std::string cards = hand.out.substr(0, hand.out.size() - 1);
    const std::vector<std::string> arguments{"equity", cards.substr(0, 4), cards.substr(5),
                                             "--abstraction", "mine"};
    const ToolboxRun run = callTamarin(arguments);
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_TRUE(run.out.ends_with("deals counted\n  bucket 5 of 7 on the flop (mine)\n"))
        << run.out;
    auto asJson = arguments;
    asJson.push_back("--json");
    EXPECT_EQ(callTamarin(asJson).json()["abstraction"]["bucket"], 5);
    EXPECT_FALSE(callTamarin({"equity", "AsKd", "--json"}).json().contains("abstraction"));
}

TEST_F(AbstractionPlaces, ArePathsToTheCommandsThatTakeAHand) {
    std::filesystem::create_directory("other");
    std::filesystem::create_directory("elsewhere");
    std::filesystem::rename("lookup", "other/lookup");
    const std::vector<std::vector<std::string>> places{{"other/lookup/mine"},
                                                       {"other/lookup/mine/", "--dir", "elsewhere"},
                                                       {"lookup/mine", "--dir", "other"},
                                                       {"mine", "--dir", "other"}};
    for (const auto& place : places)
        for (const char* command : {"index", "equity"}) {
            std::vector<std::string> arguments{command, "KsAs", "--abstraction"};
            arguments.insert(arguments.end(), place.begin(), place.end());
            const ToolboxRun run = callTamarin(arguments);
            EXPECT_EQ(run.status, 0) << run.err;
            EXPECT_TRUE(run.out.ends_with("bucket 8 of 20 before the flop (mine)\n")) << run.out;
        }
}

TEST_F(AbstractionPlaces, BothCommandsSayWhatIsWrong) {
    const auto refusal = [](const std::vector<std::string>& arguments, int status) {
        const ToolboxRun run = callTamarin(arguments);
        EXPECT_EQ(run.status, status) << run.err;
        EXPECT_EQ(run.out, "");
        EXPECT_EQ(std::count(run.err.begin(), run.err.end(), '\n'), 1) << run.err;
        return run.err;
    };
    for (const char* command : {"index", "equity"}) {
        EXPECT_NE(refusal({command, "AsKd", "--abstraction", "yours"}, 1)
                      .find("lookup/yours/abstraction: "),
                  std::string::npos);
        EXPECT_NE(refusal({command, "AsKd", "--abstraction", "../mine"}, 1).find("../mine"),
                  std::string::npos);
        EXPECT_NE(refusal({command, "AsKd", "--dir", "."}, 2).find("--abstraction"),
                  std::string::npos);
    }
    EXPECT_NE(refusal({"equity", "TT+", "--abstraction", "mine"}, 2).find("two hole cards"),
              std::string::npos);
    EXPECT_NE(refusal({"equity", "AsKd", "Qs8h", "--abstraction", "mine"}, 1).find("2 cards"),
              std::string::npos);
    EXPECT_NE(
        refusal({"index", "--rounds", "2", "AsKd", "--abstraction", "mine"}, 2).find("--rounds"),
        std::string::npos);
    EXPECT_NE(refusal({"index", "--sizes", "--abstraction", "mine"}, 2).find("--sizes"),
              std::string::npos);
    // The damage is in another round than the hand.
    writeSparse<uint16_t>("lookup/mine/river", roundSizes[3], {7});
    for (const char* command : {"index", "equity"})
        EXPECT_NE(refusal({command, "AsKd", "--abstraction", "mine"}, 1)
                      .find("lookup/mine/river: damaged"),
                  std::string::npos);
}

} // namespace
} // namespace tamarin::test
