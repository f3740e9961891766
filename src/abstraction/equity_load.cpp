// EquityTables::load: equity files in, or equities sampled the plain way.

#include "abstraction/EquityTables.h"
#include "eval/hand_table.h"
#include "eval/seven_card_table.h"
#include "support/file.h"
#include "support/fixed_assert.h"
#include "support/util.h"

#include <array>
#include <ostream>

namespace {

using tamarin::equityPath;
using tamarin::holdemRounds;

using Evaluate = double (*)(unsigned char* cards, unsigned int players, int* table);
constexpr std::array<Evaluate, holdemRounds> evaluators{evaluateHand2, evaluateHand5, evaluateHand6,
                                                        evaluateHand7};

void printPercent(std::ostream& messages, size_t index, size_t size) {
    messages << static_cast<double>(index) / static_cast<double>(size) * 100 << "% done"
             << std::endl;
}

void unindexHand(EquityTables& tables, int round, size_t index, unsigned char* hand) {
    static constexpr std::array<const char*, holdemRounds> texts{
        "hand_unindex(&preflop_indexer,0,index,hand)", "hand_unindex(&flop_indexer,1,index,hand)",
        "hand_unindex(&turn_indexer,1,index,hand)", "hand_unindex(&river_indexer,1,index,hand)"};
    TAMARIN_FIXED_ASSERT(
        hand_unindex(tables.indexer(round), tamarin::lastIndexRound(round), index, hand),
        texts[static_cast<size_t>(round)], "src/abstraction/EquityTables.cpp",
        "void EquityTables::load()");
}

} // namespace

void EquityTables::printSizes() {
    for (int round = 0; round < holdemRounds; ++round)
        messages << tamarin::roundNames[static_cast<size_t>(round)]
                 << " size: " << getRoundSize(round) << std::endl;
}

void EquityTables::load() {
    printSizes();
    // Asked once: a file of the wrong size that could not be moved away is still there.
    bool usable[2][holdemRounds];
    bool allThere = true;
    for (int players = 2; players <= 3; ++players)
        for (int round = 0; round < holdemRounds; ++round) {
            const size_t bytes = getRoundSize(round) * sizeof(double);
            usable[players - 2][round] =
                tamarin::usableFile(pathOf(equityPath(players, round)), bytes);
            allThere = allThere && usable[players - 2][round];
        }
    free();
    for (auto& ofPlayers : ranges)
        for (auto& range : ofPlayers)
            range.reset();
    if (!allThere) {
        generateEquities(usable);
        return;
    }
    for (int round = 0; round < holdemRounds; ++round)
        for (int players = 2; players <= 3; ++players)
            take(equity(players, round), pathOf(equityPath(players, round)), round);
    messages << "Equity tables loaded from file!" << std::endl;
    // Said here, as it has always been, but found when somebody asks for them: a scan reads every
    // page of two gigabytes, and a player that only plays asks for none.
    messages << "Calculating max and min equities" << std::endl;
}

void EquityTables::generateEquities(const bool (&usable)[2][holdemRounds]) {
    for (int players = 2; players <= 3; ++players)
        for (int round = 0; round < holdemRounds; ++round)
            equity(players, round) = {new double[getRoundSize(round)], false};
    messages << "Generating equity lookup tables..." << std::endl;
    messages << "Loading twoplustwo table... " << std::flush;
    const tamarin::SevenCardTable sevenCards =
        tamarin::SevenCardTable::openOrGenerate(pathOf(tamarin::sevenCardTablePath));
    messages << "done!" << std::endl;
    int* const table = const_cast<int*>(sevenCards.data()); // rankHand reads only

    for (int round = 0; round < holdemRounds; ++round) {
        if (!usable[0][round] || !usable[1][round]) {
            sampleRound(round, table);
        } else if (round <= 1) {
            // The turn's and the river's are deliberately left without contents here.
            for (int players = 2; players <= 3; ++players) {
                store.release(equity(players, round).table);
                take(equity(players, round), pathOf(equityPath(players, round)), round);
            }
        }
    }
}

void EquityTables::sampleRound(int round, int* sevenCardTable) {
    const auto r = static_cast<size_t>(round);
    const size_t size = getRoundSize(round);
    messages << "Indexing " << tamarin::roundNames[r] << " hands..." << std::endl;
    for (size_t index = 0; index < size; ++index) {
        if (index % (round == 0 ? 10 : 1000) == 0)
            printPercent(messages, index, size);
        unsigned char hand[7];
        unindexHand(*this, round, index, hand);
        equity(2, round).table[index] = evaluators[r](hand, 2, sevenCardTable);
        equity(3, round).table[index] = evaluators[r](hand, 3, sevenCardTable);
    }
    for (int times = round == 0 ? 1 : 2; times > 0; --times)
        messages << "100% done!" << std::endl;
    messages << "Saving tables to files..." << std::endl;
    for (int players = 2; players <= 3; ++players) {
        EquityTable& sampled = equity(players, round);
        sampled.hasContents = true;
        saveDoubleTable(pathOf(equityPath(players, round)).c_str(), sampled.table, size);
    }
    messages << "done!" << std::endl;
}
