#include "web/request_guard.h"

#include "dealer/greeting.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <sys/random.h>

namespace tamarin {

namespace {

constexpr int forbidden = 403;
constexpr int wrongMethod = 405;
constexpr int bodyTooLarge = 413;
constexpr int targetTooLong = 414;

constexpr std::string_view scheme = "http://";

} // namespace

const std::array<AnswerHeader, 6> answerHeaders = {{
    {"Content-Security-Policy", "default-src 'self'; frame-ancestors 'none'"},
    {"X-Content-Type-Options", "nosniff"},
    {"X-Frame-Options", "DENY"},
    {"Referrer-Policy", "no-referrer"},
    {"Cross-Origin-Resource-Policy", "same-origin"},
    {"Cache-Control", "no-store"},
}};

RequestGuard::RequestGuard(uint16_t port, std::string token) : token_(std::move(token)) {
    constexpr uint16_t defaultPort = 80; // browsers leave it out
    for (const std::string host : {"127.0.0.1", "localhost"}) {
        hosts_.push_back(host + ":" + std::to_string(port));
        if (port == defaultPort)
            hosts_.push_back(host);
    }
}

int RequestGuard::judge(const RequestFacts& request) const {
    if (!ours(request))
        return forbidden;
    if (request.method != "GET")
        return wrongMethod;
    if (request.hasBody)
        return bodyTooLarge;
    if (request.target.size() > longestTarget)
        return targetTooLong;
    const bool asks = request.socket || needsToken(request.target);
    return asks && !sameToken(token_, request.token) ? forbidden : ok;
}

bool RequestGuard::ours(const RequestFacts& request) const {
    if (request.hosts.size() != 1 || std::ranges::find(hosts_, request.hosts[0]) == hosts_.end())
        return false;
    // A browser says where a socket is asked for from; of plain requests of our own page it does
    // not.
    if (request.origins.empty())
        return !request.socket;
    return request.origins.size() == 1 &&
           request.origins[0] == std::string(scheme) + request.hosts[0];
}

bool needsToken(std::string_view target) {
    return target.starts_with("/api/");
}

Result<std::string> makeToken() {
    constexpr char digits[] = "0123456789abcdef";
    std::array<unsigned char, 16> bytes{};
    // So few bytes come whole or not at all.
    if (::getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size()))
        return Error{std::string("no random numbers from the system: ") + std::strerror(errno)};
    std::string token;
    for (const unsigned char byte : bytes) {
        token += digits[byte / 16];
        token += digits[byte % 16];
    }
    return token;
}

} // namespace tamarin
