// What a player's process prints, taken in by the dealer without ever holding the match up.
//
// The last lines are kept for the message that explains the player's end, and every line can be
// shown to a person as it comes. A player that prints without end gets its share and no more: a
// piece at a time, and on average a fixed rate, beyond which it waits for its own pipe; of what is
// shown, so many lines a second, and one line that says how many were passed over.
#pragma once

#include "support/clock.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <deque>
#include <string>

namespace tamarin {

class PlayerOutput {
public:
    static constexpr size_t linesKept = 4;
    static constexpr size_t longestLine = 300; // the rest of a longer one is dropped
    static constexpr size_t piece = size_t{16} << 10;
    static constexpr size_t burst = size_t{1} << 20; // at once, after a pause
    static constexpr size_t bytesASecond = size_t{2} << 20;
    static constexpr uint64_t linesShownASecond = 500;

    PlayerOutput() = default;
    // Owns fd, which does not block. With a prefix every line goes to shown behind it.
    PlayerOutput(int fd, std::string prefix, FILE* shown = stderr,
                 const Clock& clock = steadyClock());
    PlayerOutput(PlayerOutput&& other) noexcept;
    PlayerOutput& operator=(PlayerOutput&& other) noexcept;
    ~PlayerOutput();

    // The descriptor to poll: -1 after the end, and while the player has had its share.
    int fdToPoll() const;
    // Takes in what has come, one piece at most.
    void take();
    // Takes in all that lies in the pipe now, whatever the share: the last words.
    void takeRest();

    // The last lines, oldest first; empty ones are not kept.
    const std::deque<std::string>& lastLines() const { return lines_; }

private:
    void close();
    size_t read(size_t atMost);
    void add(const char* data, size_t size);
    void addLine(std::string line);
    void show(const std::string& line);
    void tellPassedOver();
    double allowanceNow() const;

    int fd_ = -1;
    std::string prefix_;
    FILE* shown_ = nullptr;
    const Clock* clock_ = nullptr;
    std::string partial_; // a line still coming
    std::deque<std::string> lines_;

    double allowance_ = burst; // bytes it may print, as of allowedAt_
    TimePoint allowedAt_{};
    TimePoint secondBegan_{};
    uint64_t shownInSecond_ = 0;
    uint64_t passedOver_ = 0; // lines not shown, and not told of
};

} // namespace tamarin
