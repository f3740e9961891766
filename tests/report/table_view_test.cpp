#include "report/table_view.h"

#include "abstraction/sparse_tables.h"
#include "toolbox/run_toolbox.h"

#include <set>

namespace tamarin::test {
namespace {

using View = PlayingDirectory;

void writePreflop() {
    std::vector<double> equities(roundSizes[0]);
    for (size_t i = 0; i < equities.size(); ++i)
        equities[i] = 0.3 + 0.5 * static_cast<double>(i) / 168;
    writeSparse(equityPath(2, 0), roundSizes[0], equities);
    writeSparse<uint8_t>(holdemPath(2, 0, 0), roundSizes[0], {9, 7, 2});
}

TEST_F(View, TextHasSizeRangeHistogramAndSquare) {
    writePreflop();
    const ToolboxRun run = callTamarin({"show", "lookup/preflop_2p"});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_TRUE(run.out.starts_with("lookup/preflop_2p: equity against one opponent, pre-flop\n"
                                    "169 hands that are distinct up to suits, 1,352 bytes\n"
                                    "least 0.300000 (" +
                                    startingHands()[0].name + "), greatest 0.800000 (" +
                                    startingHands()[168].name + "), mean 0.550000\n"))
        << run.out;
    EXPECT_NE(run.out.find("   0.3000 ..  0.3250            9   5.3 % ####"), std::string::npos);
    for (const StartingHand& hand : startingHands())
        EXPECT_NE(run.out.find(hand.name + " 0."), std::string::npos) << hand.name;
}

TEST_F(View, CountsTheHandsOfEachBucket) {
    writePreflop();
    const ToolboxRun run =
        callTamarin({"show", "holdem_preflop_2p_0", "--dir", "lookup", "--json"});
    EXPECT_EQ(run.status, 0) << run.err;
    const auto json = run.json();
    EXPECT_EQ(json["entries"], 169);
    ASSERT_EQ(json["histogram"].size(), 10U);
    EXPECT_EQ(json["histogram"][0]["entries"], 166);
    EXPECT_EQ(json["histogram"][7]["entries"], 1);
    EXPECT_EQ(json["seat"], 0);
    EXPECT_EQ(json["greatest"]["value"], 9);
    EXPECT_EQ(json["greatest"]["index"], 0);
    EXPECT_EQ(json["greatest"]["hand"], handAt(0, 0));
    EXPECT_EQ(json["hands"][startingHands()[2].name], 2);
    EXPECT_EQ(json["hands"].size(), 169U);
}

TEST_F(View, SaysWhatIsWrong) {
    ToolboxRun run = callTamarin({"show", "lookup/flop_2p"});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, "tamarin: lookup/flop_2p: could not open: No such file or directory; "
                       "'tamarin tables --only equity' makes it\n");
    writeSparse<uint8_t>("lookup/turn_3p_c", 7);
    run = callTamarin({"show", "lookup/turn_3p_c", "--json"});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, "tamarin: lookup/turn_3p_c has 7 bytes, not 13960050; 'tamarin tables "
                       "--only clusters' makes it\n");
    EXPECT_EQ(run.out, "");
}

TEST(TableTitle, NamesEveryTable) {
    std::set<std::string> titles;
    for (const TableFile& file : allTables())
        titles.insert(titleOf(file));
    EXPECT_EQ(titles.size(), allTables().size());
}

} // namespace
} // namespace tamarin::test
