#include "abstraction/round_indexers.h"
#include "clustering/deck_samples.h"
#include "clustering/fake_abstraction.h"
#include "clustering/sparse_abstraction.h"
#include "clustering/unfinished.h"
#include "support/split_mix.h"
#include "support/temp_directory.h"
#include "toolbox/run_toolbox.h"
#include "toolbox/tamarin_process.h"

#include <algorithm>
#include <csignal>
#include <fstream>

#include <gtest/gtest.h>

namespace tamarin::test {

namespace {

std::string usageError(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "abstract");
    const ToolboxRun ran = callTamarin(arguments);
    EXPECT_EQ(ran.status, exitUsage);
    EXPECT_EQ(ran.out, "");
    EXPECT_EQ(std::count(ran.err.begin(), ran.err.end(), '\n'), 1) << ran.err;
    return ran.err;
}

using Arguments = std::vector<std::string>;
Arguments operator+(Arguments all, const Arguments& more) {
    all.insert(all.end(), more.begin(), more.end());
    return all;
}

void writeEntry(const std::string& path, size_t hand, uint16_t bucket) {
    std::fstream file(path, std::ios::binary | std::ios::in | std::ios::out);
    file.seekp(static_cast<std::streamoff>(hand * sizeof bucket));
    file.write(reinterpret_cast<const char*>(&bucket), sizeof bucket);
}

// By percentile, with limits so high that every hand belongs in bucket 0, where it is, but one of
// the turn that is in bucket 1.
void writeOneWrong(const std::string& name, size_t wrongTurnHand) {
    const std::string folder = abstractionFolder(".", name);
    std::filesystem::create_directories(folder);
    AbstractionDescription description;
    description.options.method = AbstractionMethod::percentile;
    for (size_t round = 0; round < holdemRounds; ++round) {
        const std::string path = folder + "/" + bucketFileNames[round];
        writeSparse<uint16_t>(path, roundSizes[round]);
        if (round == 2)
            writeEntry(path, wrongTurnHand, 1);
        RoundDescription& own = description.rounds[round];
        own.buckets = round == 2 ? 2 : 1;
        own.hands = roundSizes[round];
        own.checksum = bucketChecksum(MappedFile::open(path)->as<uint16_t>());
        own.centres.assign(own.buckets * sizeof(uint64_t), 0x7f);
    }
    ASSERT_TRUE(writeDescription(folder + "/" + descriptionFileName, description).ok());
}

// The command that made sparse_abstraction.h's.
const Arguments asSparse{"abstract", "20-7-8-9", "--seed", "77",     "--sample",
                         "20000",    "--name",   "x",      "--quiet"};

class AbstractInDirectory : public PlayingDirectory {};

} // namespace

TEST_F(AbstractInDirectory, WhatIsThereIsGoodAlready) {
    writeSparseAbstraction("x");
    ToolboxRun ran = callTamarin(asSparse);
    EXPECT_EQ(ran.status, exitDone) << ran.err;
    EXPECT_NE(ran.out.find("turn: 8 buckets of 13,960,050 hands"), std::string::npos) << ran.out;
    EXPECT_NE(ran.out.find("lookup/x: good already\n"), std::string::npos) << ran.out;
    ran = callTamarin(asSparse + Arguments{"--json"});
    EXPECT_EQ(ran.status, exitDone) << ran.err;
    EXPECT_EQ(ran.json()["made"], false);
    EXPECT_EQ(ran.json()["rounds"][3]["buckets"], 9);
    EXPECT_EQ(ran.json()["rounds"][3]["hands"], 123156254);

    ran = callTamarin(asSparse + Arguments{"--dry-run"});
    EXPECT_EQ(ran.status, exitDone) << ran.err;
    EXPECT_EQ(ran.out, "x: nothing to do\n");
    ran = callTamarin(asSparse + Arguments{"--dry-run", "--json"});
    EXPECT_EQ(ran.json()["state"], "whole");
    EXPECT_EQ(ran.json()["diskBytes"], 0);
    ran = callTamarin(asSparse + Arguments{"--dry-run", "--restarts", "4"});
    EXPECT_NE(ran.out.find("the number of restarts is 3 there and 4 here"), std::string::npos)
        << ran.out;
}

TEST_F(AbstractInDirectory, ADryRunOfWhatIsBegunSaysWhatIsLeft) {
    std::filesystem::create_directories("lookup/x");
    Unfinished begun;
    begun.counts = sparseCounts;
    begun.options.seed = 77;
    begun.options.sample = 20000;
    begun.rounds[0].buckets = 20;
    begun.rounds[1].buckets = 7;
    ASSERT_TRUE(writeUnfinished("lookup/x/unfinished", begun).ok());
    const ToolboxRun text = callTamarin(asSparse + Arguments{"--dry-run"});
    EXPECT_EQ(text.status, exitDone) << text.err;
    EXPECT_EQ(text.out.find("lookup/x/flop"), std::string::npos) << text.out;
    EXPECT_NE(text.out.find("lookup/x/turn: 27.9 MB\n"), std::string::npos) << text.out;
    const ToolboxRun ran = callTamarin(asSparse + Arguments{"--dry-run", "--json"});
    EXPECT_EQ(ran.json()["state"], "begun");
    ASSERT_EQ(ran.json()["files"].size(), 3U);
    EXPECT_EQ(ran.json()["files"][1]["bytes"], 246312508);
}

TEST_F(AbstractInDirectory, VerifyCountsTheHandsOfItsSeed) {
    uint8_t cards[6];
    drawCards(mixBits(5) + 2, 0, 6, cards); // the first turn hand that seed 5 looks at
    const size_t hand = hand_index_last(RoundIndexer(2).get(), cards);
    writeOneWrong("x", hand);
    const Arguments verify{"abstract", "1-1-2-1", "--method", "percentile",
                           "--name",   "x",       "--verify", "--quiet"};
    ToolboxRun ran = callTamarin(verify);
    EXPECT_EQ(ran.status, exitDone) << ran.err;
    EXPECT_EQ(ran.out, "pre-flop: good, 0 hands checked\n"
                       "flop: good, 100 hands checked\n"
                       "turn: good, 1,000 hands checked\n"
                       "river: good, 1,000 hands checked\n");
    ran = callTamarin(verify + Arguments{"--json", "--seed", "6"});
    EXPECT_EQ(ran.status, exitDone) << ran.err;
    EXPECT_EQ(ran.json()["good"], true);
    EXPECT_EQ(ran.json()["rounds"][1]["handsChecked"], 100);
    ran = callTamarin(verify + Arguments{"--seed", "5"});
    EXPECT_EQ(ran.status, exitFailed);
    EXPECT_EQ(ran.err, "tamarin: lookup/x/turn: hand " + std::to_string(hand) +
                           " has bucket 1 and belongs in 0\n");
}

TEST_F(AbstractInDirectory, CtrlCKeepsWhatIsDone) {
    const std::string home = std::filesystem::current_path().string();
    for (const bool force : {false, true}) {
        Process making(tamarinCommand({"abstract", "20-7-8-9", force ? "--force" : "--json"}),
                       home);
        for (int tries = 0; tries < 1000; ++tries) {
            if (std::filesystem::exists("lookup/20-7-8-9/unfinished"))
                break;
            usleep(10000);
        }
        kill(making.pid(), SIGINT);
        EXPECT_EQ(making.wait(), 130);
        EXPECT_EQ(making.out(), "");
        const std::string last =
            std::string("stopped; what is done is kept, and the same command") +
            (force ? " without --force" : "") + " goes on from there\n";
        EXPECT_NE(making.err().find(last), std::string::npos) << making.err();
        const auto begun = readUnfinished("lookup/20-7-8-9/unfinished");
        ASSERT_TRUE(begun.ok()) << begun.error();
        EXPECT_EQ(begun->counts, sparseCounts);
        std::filesystem::remove_all("lookup/20-7-8-9");
    }
}

// On a disk of 20 MB, where the rest of it has no room.
TEST_F(AbstractInDirectory, GoingOnNeedsRoomToo) {
    std::filesystem::create_directories("lookup/x");
    std::filesystem::create_directories("small");
    Unfinished begun;
    begun.counts = sparseCounts;
    begun.options.seed = 77;
    begun.options.sample = 20000;
    ASSERT_TRUE(writeUnfinished("lookup/x/unfinished", begun).ok());
    const std::string home = std::filesystem::current_path().string();
    const auto onSmallDisk = [&](const Arguments& command) {
        Process process(Arguments{"unshare", "-rm", "sh", "-c",
                                  "mount -t tmpfs -o size=20m none small && cp -r lookup small && "
                                  "exec \"$@\"",
                                  "sh"} +
                            command,
                        home);
        const int status = process.wait();
        return Ended{status, process.out(), process.err()};
    };
    if (onSmallDisk({"true"}).status != 0)
        GTEST_SKIP() << "a test may not mount a disk here";
    const Ended refused = onSmallDisk(tamarinCommand(asSparse + Arguments{"--dir", "small"}));
    EXPECT_EQ(refused.status, exitFailed);
    EXPECT_NE(refused.err.find("this needs 276.8 MB of disk at "), std::string::npos)
        << refused.err;
}

TEST(AbstractCommand, SaysWhatIsWrong) {
    EXPECT_NE(usageError({"169-200-200"}).find("'169-200-200' is no card abstraction"),
              std::string::npos);
    EXPECT_NE(usageError({"1-1-1-1", "--method", "guess"}).find("no method 'guess'"),
              std::string::npos);
    EXPECT_NE(usageError({"1-1-1-1", "--name", "../x"}).find("is no name"), std::string::npos);
    EXPECT_NE(usageError({"1-1-1-1", "--clusters", "9"}).find("--clusters"), std::string::npos);
    EXPECT_NE(usageError({}).find("COUNTS"), std::string::npos);
}

TEST(AbstractCommand, RefusesNamesOfOtherThings) {
    const TempDirectory directory;
    const auto refusal = [](const std::string& name) {
        return usageError({"1-1-1-1", "--name", name});
    };
    for (const char* table :
         {"flop_2p", "river_3p_c", "utility_turn_2p_1", "holdem_river_3p_2", "tpt", "tpt.indexes"})
        EXPECT_NE(refusal(table).find("'" + std::string(table) +
                                      "' is no name for a card abstraction: a table below lookup/ "
                                      "is called that"),
                  std::string::npos);
    EXPECT_NE(refusal("manifest.json").find("the manifest"), std::string::npos);
    EXPECT_NE(refusal("kuhn.limit.3p.game").find("games end in .game"), std::string::npos);
    for (const char* free : {"flop_4p", "flop_2p_", "tpt2", "game", "x.games"})
        EXPECT_EQ(callTamarin({"abstract", "1-1-1-1", "--name", free, "--dir", directory.path(),
                               "--dry-run"})
                      .status,
                  exitDone)
            << free;
}

TEST(AbstractCommand, ADryRunWritesNothing) {
    const TempDirectory directory;
    const std::vector<std::string> arguments{"abstract", "169-30-40-50", "--dir", directory.path(),
                                             "--dry-run"};
    const ToolboxRun text = callTamarin(arguments);
    EXPECT_EQ(text.status, exitDone) << text.err;
    EXPECT_NE(text.out.find("lookup/169-30-40-50/turn: 27.9 MB\n"), std::string::npos) << text.out;
    std::vector<std::string> withJson = arguments;
    withJson.insert(withJson.end(), {"--json", "--method", "percentile"});
    const ToolboxRun ran = callTamarin(withJson);
    EXPECT_EQ(ran.status, exitDone) << ran.err;
    EXPECT_EQ(ran.json()["name"], "169-30-40-50-percentile");
    EXPECT_EQ(ran.json()["state"], "missing");
    EXPECT_EQ(ran.json()["files"][3]["bytes"], 246312508);
    EXPECT_EQ(directory.names(), std::set<std::string>{});
}

TEST(AbstractCommand, WhatIsThereAndDoesNotFitIsRefused) {
    const TempDirectory directory;
    ASSERT_TRUE(writeFake(directory.path(), "x").ok()); // of a few hands
    const std::vector<std::string> arguments{"abstract", "169-3-4-5", "--name",
                                             "x",        "--dir",     directory.path()};
    ToolboxRun ran = callTamarin(arguments);
    EXPECT_EQ(ran.status, exitFailed);
    EXPECT_NE(ran.err.find("hands on the flop, not 1286792; --force makes it anew"),
              std::string::npos)
        << ran.err;
    std::vector<std::string> verifying = arguments;
    verifying.emplace_back("--verify");
    ran = callTamarin(verifying);
    EXPECT_EQ(ran.status, exitFailed);
    EXPECT_NE(ran.err.find("hands on the flop"), std::string::npos) << ran.err;
    verifying[1] = "169-3-4-6";
    ran = callTamarin(verifying);
    EXPECT_EQ(ran.status, exitFailed);
    EXPECT_NE(ran.err.find("the number of buckets is 169-3-4-5 there and 169-3-4-6 here"),
              std::string::npos)
        << ran.err;
    verifying.emplace_back("--force");
    EXPECT_EQ(callTamarin(verifying).status, exitUsage);
}

class AbstractionsVerified : public PlayingDirectory {};

TEST_F(AbstractionsVerified, AreGoodOrWrong) {
    const auto verified = [] { return callTamarin({"verify", "--json", "--quiet"}).json(); };
    const auto before = verified();
    EXPECT_EQ(before["abstractions"].size(), 0U);
    writeSparseAbstraction("mine");
    const auto good = verified();
    ASSERT_EQ(good["abstractions"].size(), 1U);
    EXPECT_EQ(good["abstractions"][0],
              nlohmann::json({{"name", "mine"}, {"good", true}, {"result", "good"}}));
    EXPECT_EQ(good["wrong"], before["wrong"]);
    ASSERT_TRUE(writeFake(".", "few").ok()); // of a few hands, so that it is none
    const ToolboxRun ran = callTamarin({"verify", "--json", "--quiet"});
    EXPECT_EQ(ran.status, exitFailed);
    const auto after = ran.json();
    ASSERT_EQ(after["abstractions"].size(), 2U);
    EXPECT_EQ(after["abstractions"][0]["name"], "few");
    EXPECT_EQ(after["abstractions"][0]["good"], false);
    EXPECT_EQ(after["abstractions"][1], good["abstractions"][0]);
    EXPECT_EQ(after["wrong"].get<int>(), before["wrong"].get<int>() + 1);
}

} // namespace tamarin::test
