// Part of every test program: signals that it was started deaf to act again as they would have, in
// it and in the programs that it starts. Programs keep what they inherit ignored
// (support/interrupt.h), so a test that stops one would otherwise wait for ever where the tests run
// in the background of a script, or under nohup.
#include <initializer_list>
#include <signal.h>

namespace {

[[maybe_unused]] const bool heard = [] {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGCHLD}) {
        struct sigaction standard = {};
        standard.sa_handler = SIG_DFL;
        sigaction(signal, &standard, nullptr);
    }
    sigset_t none;
    sigemptyset(&none);
    return sigprocmask(SIG_SETMASK, &none, nullptr) == 0;
}();

} // namespace
