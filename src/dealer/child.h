// A player's process, started and ended by the dealer.
//
// Its standard output and error come through one pipe, which the dealer must read so that the
// player does not wait on it (player_output.h says how far that goes). It runs in a process group
// of its own, so that a signal reaches what it has started too and Ctrl-C at the terminal reaches
// the dealer alone; it is told to end when the dealer dies first.
#pragma once

#include "dealer/player_output.h"
#include "support/result.h"

#include <string>
#include <sys/types.h>
#include <vector>

namespace tamarin {

class Child {
public:
    struct Command {
        std::string file;                   // a path; PATH is not searched
        std::vector<std::string> arguments; // the first is the name the program sees
        std::string directory = ".";        // working directory
        std::string firstPath;              // put in front of PATH, when not empty
        std::string mirror;                 // every output line goes to standard error after this
                                            // prefix, when not empty
    };
    static Result<Child> start(const Command& command);

    Child(Child&& other) noexcept;
    Child& operator=(Child&& other) noexcept;
    ~Child(); // kills the group and reaps the process

    // The group's number, which is that of the process.
    pid_t group() const { return pid_; }

    PlayerOutput& output() { return output_; }
    const PlayerOutput& output() const { return output_; }

    // Whether the process has ended; never waits.
    bool ended();
    // "ended with status 1" or "was killed by signal 9 (Killed)"; "is running".
    std::string describe();
    // The same with the last lines of output, for one line of error.
    std::string explain();

    void signalGroup(int signal);

private:
    Child() = default;
    void release();

    pid_t pid_ = -1;
    PlayerOutput output_;
    bool ended_ = false;
    bool killed_ = false; // by a signal
    int status_ = 0;      // the exit status, or the signal
};

} // namespace tamarin
