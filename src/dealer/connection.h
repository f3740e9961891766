// One player's connection as the dealer sees it: lines in, lines out, never waiting.
#pragma once

#include "support/net.h"

#include <string>
#include <string_view>

namespace tamarin {

// Owns a connected socket. Every call returns at once; the caller polls. A connection is "broken"
// once the peer has closed it or a call has failed: lines that had come by then can still be taken.
class Connection {
public:
    // Longer lines are cut to this length; no legal reply comes near it.
    static constexpr size_t longestLine = 4096;
    // Unread lines beyond this stay in the kernel until some are taken.
    static constexpr size_t inputLimit = size_t{64} << 10;
    // A player that leaves this much unread is taken to be broken.
    static constexpr size_t outputLimit = size_t{4} << 20;

    explicit Connection(int fd, SocketCalls& calls = systemSockets());
    Connection(Connection&& other) noexcept;
    Connection& operator=(Connection&& other) noexcept;
    ~Connection();

    int fd() const { return fd_; }

    // Sends the text, or keeps what does not fit into the kernel's buffer for flush().
    void send(std::string_view text);
    // Keeps the text back until the next send() or flush(), so that several go out together.
    void hold(std::string_view text);
    bool wantsToWrite() const { return !output_.empty() && !holding_ && !broken_; }
    void flush();

    bool wantsToRead() const { return !ended_ && input_.size() - taken_ < inputLimit; }
    // Takes in what has come.
    void receive();

    // The next whole line, without "\n" or "\r\n"; false when none has come. Text after the last
    // line end of a closed connection is dropped.
    bool nextLine(std::string& line);

    // No more will come, though lines may be left to take.
    bool ended() const { return ended_; }
    // Why, when ended(): "closed the connection", "Connection reset by peer", ...
    const std::string& ending() const { return ending_; }

    // Tells the peer that nothing more will be sent.
    void finishSending();

private:
    void end(std::string why);
    void close();

    int fd_ = -1;
    SocketCalls* calls_;
    std::string input_;
    size_t taken_ = 0;   // bytes of input_ already handed out
    size_t scanned_ = 0; // bytes of input_ known to hold no line end
    std::string output_;
    bool holding_ = false; // output_ waits for us and not for the kernel
    bool broken_ = false;  // nothing can be sent any more
    bool ended_ = false;
    std::string ending_;
};

} // namespace tamarin
