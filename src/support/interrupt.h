// Stopping long work when a person or a system asks for it.
//
// The first SIGINT, SIGTERM or SIGHUP sets a flag that long work asks for at safe points; the work
// saves what it has and returns, and the program exits with 128 + the signal's number. A signal
// that comes half a second later or more ends the process at once; one that comes sooner is taken
// for the same request.
#pragma once

namespace tamarin {

// Installs the handlers, and ignores SIGPIPE and SIGXFSZ: a dealer that goes away or a file-size
// limit is then an error of a call and not the end of the process. Call once, first in main.
void handleInterrupts();

// Ignores SIGPIPE and SIGXFSZ only, for programs that should die of Ctrl-C as usual.
void ignoreBrokenPipes();

// The number of the first signal received, or 0.
int interruptSignal();
inline bool interrupted() {
    return interruptSignal() != 0;
}

// 128 + the signal's number: the exit status after an orderly stop.
int interruptStatus();

} // namespace tamarin
