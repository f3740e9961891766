#include "dealer/seat.h"

#include "dealer/listener.h"

#include <arpa/inet.h>
#include <charconv>
#include <string_view>

namespace tamarin {

namespace {

constexpr size_t longestName = 32;

bool isNameCharacter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
           std::string_view{"._-+"}.find(c) != std::string_view::npos;
}

} // namespace

Result<Seat> parseSeat(const std::string& text) {
    const size_t equals = text.find('=');
    if (equals == std::string::npos)
        return Error{"seat '" + text +
                     "' has no name: write NAME=COMMAND, NAME=bot:KIND or "
                     "NAME=listen:PORT"};
    Seat seat;
    seat.name = text.substr(0, equals);
    if (seat.name.empty() || seat.name.size() > longestName)
        return Error{"seat '" + text + "': a name has 1 to 32 characters"};
    for (const char c : seat.name)
        if (!isNameCharacter(c))
            return Error{"seat '" + text + "': a name has letters, digits and . _ - + only"};

    const std::string what = text.substr(equals + 1);
    if (what.starts_with("bot:")) {
        seat.kind = SeatKind::bot;
        seat.bot = what.substr(4);
        return seat;
    }
    if (what.starts_with("listen:")) {
        seat.kind = SeatKind::listen;
        const size_t colon = what.rfind(':');
        seat.address = colon == 6 ? loopbackAddress : what.substr(7, colon - 7);
        in_addr address{};
        if (::inet_pton(AF_INET, seat.address.c_str(), &address) != 1)
            return Error{"seat '" + text +
                         "': write listen:PORT or listen:ADDRESS:PORT with an IPv4 address, "
                         "0.0.0.0 for all"};
        const char* begin = what.data() + colon + 1;
        const char* end = what.data() + what.size();
        const auto [rest, error] = std::from_chars(begin, end, seat.port);
        if (error != std::errc{} || rest != end)
            return Error{"seat '" + text + "': a port is a number of 0 to 65535"};
        return seat;
    }
    if (what.find_first_not_of(" \t") == std::string::npos)
        return Error{"seat '" + text + "' has no command"};
    seat.command = what;
    return seat;
}

} // namespace tamarin
