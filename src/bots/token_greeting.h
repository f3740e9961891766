// Says a token before everything else that goes over a connection, for a dealer that asks for one:
// the line "#token TEXT" in front of the version line.
#pragma once

#include "support/net.h"

#include <string>

namespace tamarin {

// The real calls, but for the first line that is sent. One object serves one connection.
class TokenGreeting : public SocketCalls {
public:
    // With an empty token nothing is said.
    explicit TokenGreeting(const std::string& token)
        : left_(token.empty() ? "" : "#token " + token + "\n") {}

    ssize_t send(int fd, const void* buffer, size_t size) override;

private:
    std::string left_; // of the line, still to be sent
};

} // namespace tamarin
