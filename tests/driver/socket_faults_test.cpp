// Every socket call of a match fails in turn: what can be repeated is, the rest ends in order.
#include "driver/recording_agent.h"
#include "support/faulty_sockets.h"

#include <set>
#include <string>
#include <thread>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

const std::string session = randomSession(*parseGame(threePlayerKuhn), 12);

struct Faulted {
    bool connected = false;
    bool result = false;
    bool metFault = false;
    std::string failed; // the call that did
    std::string sent;
};

// The session with the k-th socket call failing; k 0 for none. The connect is call 1.
Faulted playWithFault(size_t k, int error, bool forEver) {
    const DefinitionFile file(threePlayerKuhn);
    LoopbackDealer dealer;
    Faulted faulted;
    std::thread dealing([&] {
        if (dealer.accept()) {
            dealer.send(session);
            dealer.halfClose();
            faulted.sent = dealer.readAll();
        }
    });
    FaultySockets sockets;
    sockets.receiveAtMost = [] { return size_t{40}; };
    sockets.failAt(k, error, forEver);
    testing::internal::CaptureStderr();
    {
        RecordingAgent agent(file.path(), always(callAction), sockets);
        faulted.connected = agent.connect("127.0.0.1", dealer.port());
        faulted.result = faulted.connected && agent.play();
        agent.disconnect();
    }
    testing::internal::GetCapturedStderr();
    faulted.metFault = sockets.metFault();
    if (faulted.metFault)
        faulted.failed = sockets.log()[k - 1];
    dealing.join();
    return faulted;
}

TEST(SocketFaults, InterruptionsAndShortTransfersChangeNothing) {
    const Faulted clean = playWithFault(0, 0, false);
    ASSERT_TRUE(clean.result);
    ASSERT_GT(clean.sent.size(), 100U);
    for (const int error : {EINTR, EAGAIN, FaultySockets::shortTransfer}) {
        size_t k = 2;
        for (bool met = true; met; ++k) {
            const Faulted faulted = playWithFault(k, error, false);
            met = faulted.metFault;
            ASSERT_TRUE(faulted.result) << "call " << k << " error " << error;
            ASSERT_EQ(faulted.sent, clean.sent) << "call " << k << " error " << error;
        }
        EXPECT_GT(k, 20U) << "the sweep went over the whole match";
    }
}

TEST(SocketFaults, ABrokenConnectionEndsTheMatchInOrder) {
    const Faulted clean = playWithFault(0, 0, false);
    constexpr size_t greeting = 2; // the send of the version line
    std::set<std::string> failed;
    for (const int error : {ECONNRESET, EPIPE, ETIMEDOUT}) {
        for (size_t k = 2;; ++k) {
            const Faulted faulted = playWithFault(k, error, true);
            if (!faulted.metFault) {
                EXPECT_EQ(faulted.sent, clean.sent);
                break;
            }
            // A dealer that cannot be heard has ended the match; one that cannot be answered has
            // not.
            ASSERT_EQ(faulted.connected, k != greeting) << "call " << k << " error " << error;
            ASSERT_EQ(faulted.result, faulted.failed == "receive")
                << "call " << k << " error " << error;
            failed.insert(faulted.failed);
            // Whatever was sent before is a beginning of the clean run.
            ASSERT_EQ(clean.sent.substr(0, faulted.sent.size()), faulted.sent)
                << "call " << k << " error " << error;
        }
    }
    EXPECT_EQ(failed, (std::set<std::string>{"receive", "send"}));
}

TEST(SocketFaultsDeath, AFailedConnectExitsWithOne) {
    const DefinitionFile file(threePlayerKuhn);
    LoopbackDealer dealer;
    for (const int error : {ECONNREFUSED, ETIMEDOUT, ECONNRESET}) {
        const auto connect = [&] {
            FaultySockets sockets;
            sockets.failAt(1, error);
            RecordingAgent agent(file.path(), always(callAction), sockets);
            agent.connect("127.0.0.1", dealer.port());
        };
        EXPECT_EXIT(connect(), testing::ExitedWithCode(1),
                    "^ERROR: could not connect to 127.0.0.1:[0-9]+\n$")
            << error;
    }
}

} // namespace
} // namespace tamarin::test
