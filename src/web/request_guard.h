// Who may ask, decided before anything of a request is looked at.
//
// The server listens on the loopback address, but other programs of this machine and the pages of
// other sites that a browser shows reach that address, too. A page of another site can send
// requests with a Host of its own choosing (a name that it has made lead here) or with its Origin;
// both are compared whole with what our own page sends. Everything but the page itself takes a
// token as well, which only whoever started the server knows.
#pragma once

#include "support/result.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tamarin {

// What of a request the decision hangs on. Lists, since a header may come twice.
struct RequestFacts {
    std::string method;
    std::string target;
    std::vector<std::string> hosts;
    std::vector<std::string> origins;
    std::string token;    // what it says, empty where it says none
    bool socket = false;  // asks to become a WebSocket
    bool hasBody = false; // announces one, of whatever size
};

class RequestGuard {
public:
    static constexpr size_t longestTarget = 2048;
    static constexpr int ok = 200;

    RequestGuard(uint16_t port, std::string token);

    // 200, or the status of the refusal: 405 for another method than GET, 413 for a body, 414 for a
    // long target, 403 for a Host, Origin or token that is not ours.
    int judge(const RequestFacts& request) const;

private:
    bool ours(const RequestFacts& request) const;

    std::vector<std::string> hosts_;
    std::string token_;
};

// Whether a target is answered only to who knows the token.
bool needsToken(std::string_view target);

// A new token: 128 bits of the system's randomness in hexadecimal digits.
Result<std::string> makeToken();

// What every answer carries: no other site may frame it, load from it or be loaded by it, and
// nothing of it is kept.
struct AnswerHeader {
    const char* name;
    const char* value;
};
extern const std::array<AnswerHeader, 6> answerHeaders;

} // namespace tamarin
