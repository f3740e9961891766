#include "driver/loopback_dealer.h"
#include "toolbox/kuhn_game.h"
#include "toolbox/tamarin_process.h"

#include <csignal>

namespace tamarin::test {

TEST(BotCommand, PlaysUntilTheDealerCloses) {
    const Scratch scratch;
    LoopbackDealer dealer;
    Process bot(
        tamarinCommand({"bot", "rule", kuhnGame, "127.0.0.1", std::to_string(dealer.port())}),
        scratch.path());
    ASSERT_TRUE(dealer.accept());
    EXPECT_EQ(dealer.readLine(), "VERSION:2.0.0\n");
    dealer.send("# welcome\r\nMATCHSTATE:0:0::As||\r\n");
    EXPECT_EQ(dealer.readLine(), "MATCHSTATE:0:0::As||:r\r\n");
    dealer.hangUp();
    EXPECT_EQ(bot.wait(), 0);
    EXPECT_EQ(bot.out() + bot.err(), "");
}

TEST(BotCommand, SaysItsToken) {
    const Scratch scratch;
    LoopbackDealer dealer;
    Process bot(tamarinCommand({"bot", "call", kuhnGame, "127.0.0.1", std::to_string(dealer.port()),
                                "--token", "s3cret"}),
                scratch.path());
    ASSERT_TRUE(dealer.accept());
    EXPECT_EQ(dealer.readLine(), "#token s3cret\n");
    EXPECT_EQ(dealer.readLine(), "VERSION:2.0.0\n");
    dealer.send("MATCHSTATE:0:0::As||\r\n");
    EXPECT_EQ(dealer.readLine(), "MATCHSTATE:0:0::As||:c\r\n");
    dealer.hangUp();
    EXPECT_EQ(bot.wait(), 0);
}

TEST(BotCommand, DiesOfASignalAtOnce) {
    const Scratch scratch;
    LoopbackDealer dealer;
    Process bot(
        tamarinCommand({"bot", "call", kuhnGame, "127.0.0.1", std::to_string(dealer.port())}),
        scratch.path());
    ASSERT_TRUE(dealer.accept());
    EXPECT_EQ(dealer.readLine(), "VERSION:2.0.0\n");
    kill(bot.pid(), SIGTERM);
    EXPECT_EQ(bot.wait(), 128 + SIGTERM);
}

TEST(BotCommand, DrawsRepeatWithTheSeed) {
    const auto answers = [](const std::string& seed) {
        const Scratch scratch;
        LoopbackDealer dealer;
        Process bot(tamarinCommand({"bot", "random", kuhnGame, "127.0.0.1",
                                    std::to_string(dealer.port()), "--seed", seed}),
                    scratch.path());
        EXPECT_TRUE(dealer.accept());
        EXPECT_EQ(dealer.readLine(), "VERSION:2.0.0\n");
        std::string all;
        for (int i = 0; i < 50; ++i) {
            dealer.send("MATCHSTATE:0:" + std::to_string(i) + "::As||\r\n");
            all += dealer.readLine();
        }
        dealer.hangUp();
        EXPECT_EQ(bot.wait(), 0);
        return all;
    };
    EXPECT_EQ(answers("5"), answers("5"));
    EXPECT_NE(answers("5"), answers("6"));
}

TEST(BotCommand, WrongUsage) {
    Ended run = runTamarin({"bot", "genius", kuhnGame, "127.0.0.1", "1"});
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.err, "tamarin: there is no bot 'genius', only random, call, raise, rule; try "
                       "'tamarin bot --help'\n");
    run = runTamarin({"bot", "call", kuhnGame, "127.0.0.1", "70000"});
    EXPECT_EQ(run.status, 2);
    run = runTamarin({"bot", "call", "none.game", "127.0.0.1", "1"});
    EXPECT_EQ(run.status, 1);
    EXPECT_TRUE(run.err.starts_with("tamarin: no game definition none.game in ")) << run.err;
}

TEST(BotCommand, DealerThatIsNotThere) {
    LoopbackDealer dealer;
    dealer.stopListening();
    const Ended run =
        runTamarin({"bot", "call", kuhnGame, "127.0.0.1", std::to_string(dealer.port())});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err,
              "ERROR: could not connect to 127.0.0.1:" + std::to_string(dealer.port()) + "\n");
}

} // namespace tamarin::test
