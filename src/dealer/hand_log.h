// The log of a match: one line a finished hand, made to be read by programs.
//
//   STATE:0:rcf:Qs|Ks|As:2|-1|-1:rule|call|random
//
// The state text with all cards, then what each seat won in chips, then who sat there; the three
// parts in seat order with "|" between the seats. A fraction of a chip, from a pot that was split,
// is written so that it reads back as the same number. Lines that begin with "#" are comments. A
// last line without its line end was cut off when the dealer was killed, and does not count.
#pragma once

#include "game/game.h"
#include "support/file.h"
#include "support/result.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace tamarin {

struct LoggedHand {
    State state;
    std::vector<double> chips;      // by seat
    std::vector<std::string> names; // by seat
};

// The line of one hand, without a line end.
std::string formatHand(const Game* game, const LoggedHand& hand);
// The reverse; the error says what is wrong with the line. That the hand is finished and the chips
// are those of its state is checked.
Result<LoggedHand> parseHand(const Game* game, const std::string& line);

// Calls receive for each hand and the number of its line, in order, until it gives an error, which
// is returned as it is. Other errors name the file and the line.
Status followHandLog(const Game* game, const std::string& path,
                     const std::function<Status(const LoggedHand&, size_t line)>& receive);
// The same, for a receiver that takes every hand.
Status readHandLog(const Game* game, const std::string& path,
                   const std::function<void(const LoggedHand&)>& receive);

// Writes a log hand by hand: every hand is with the operating system when add() returns, so that a
// reader sees the match as it goes and a kill costs at most the hand in play.
class HandLog {
public:
    // Finds out whether the file can be written, without waiting for anything. A file that holds
    // something other than a match log is refused, and so is one that another match is writing. An
    // older log loses its contents with the first line and not before; a new one that is still
    // empty at the end is removed. A pipe must have its reader; one that reads slowly is waited
    // for, as long as keepWaiting, asked some ten times a second, says so.
    static Result<HandLog> create(
        const std::string& path, std::function<bool()> keepWaiting = [] { return true; },
        FileSystem& files = systemFiles());
    // The first line, a comment which says what match this is.
    Status begin(const std::string& match);
    Status add(const Game* game, const LoggedHand& hand);
    // Tells whether everything was written.
    Status close();

private:
    Status writeLine(const std::string& line);
    struct Output;
    struct Finish {
        void operator()(Output* output) const;
    };
    std::unique_ptr<Output, Finish> output_;
};

} // namespace tamarin
