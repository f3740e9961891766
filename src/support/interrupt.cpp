#include "support/interrupt.h"

#include <atomic>
#include <initializer_list>
#include <signal.h>

namespace tamarin {
namespace {

std::atomic<int> firstSignal{0};
static_assert(std::atomic<int>::is_always_lock_free, "the handler may touch nothing that locks");

// The second signal, of whichever kind, gets the action it would have had without us, so that the
// parent sees a death by signal. The signal is blocked while its handler runs: unblock it first.
void endAtOnce(int signal) {
    struct sigaction standard = {};
    standard.sa_handler = SIG_DFL;
    sigaction(signal, &standard, nullptr);
    sigset_t only;
    sigemptyset(&only);
    sigaddset(&only, signal);
    pthread_sigmask(SIG_UNBLOCK, &only, nullptr);
    raise(signal);
}

void handle(int signal) {
    int none = 0;
    if (!firstSignal.compare_exchange_strong(none, signal))
        endAtOnce(signal);
}

void ignore(int signal) {
    struct sigaction action = {};
    action.sa_handler = SIG_IGN;
    sigaction(signal, &action, nullptr);
}

} // namespace

void ignoreBrokenPipes() {
    ignore(SIGPIPE);
    ignore(SIGXFSZ);
}

void handleInterrupts() {
    ignoreBrokenPipes();
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction current = {};
        sigaction(signal, nullptr, &current);
        if (current.sa_handler == SIG_IGN)
            continue; // started by nohup or in the background of a script: stay deaf to it
        struct sigaction action = {};
        action.sa_handler = handle;
        // Reads and writes go on; waits (poll, select, sleep) wake up all the same.
        action.sa_flags = SA_RESTART;
        sigaction(signal, &action, nullptr);
    }
}

int interruptSignal() {
    return firstSignal.load(std::memory_order_relaxed);
}

int interruptStatus() {
    return 128 + interruptSignal();
}

} // namespace tamarin
