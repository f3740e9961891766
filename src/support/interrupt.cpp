#include "support/interrupt.h"

#include <atomic>
#include <cstdint>
#include <initializer_list>
#include <signal.h>
#include <time.h>

namespace tamarin {
namespace {

// One request to stop may come as several signals: timeout(1) sends its own to the process and then
// to the process's group, a terminal and a script may both pass theirs on.
constexpr int64_t sameRequest = 500'000'000; // nanoseconds

std::atomic<int> firstSignal{0};
std::atomic<int64_t> firstTime{0};
static_assert(std::atomic<int>::is_always_lock_free && std::atomic<int64_t>::is_always_lock_free,
              "the handler may touch nothing that locks");

// Nanoseconds by the steady clock, which a handler may read; never 0.
int64_t steadyTime() {
    timespec time = {};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec + 1;
}

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
    const int64_t now = steadyTime();
    int64_t first = 0;
    if (firstTime.compare_exchange_strong(first, now))
        firstSignal.store(signal);
    else if (now - first >= sameRequest)
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
