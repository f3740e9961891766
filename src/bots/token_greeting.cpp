#include "bots/token_greeting.h"

namespace tamarin {

ssize_t TokenGreeting::send(int fd, const void* buffer, size_t size) {
    while (!left_.empty()) {
        const ssize_t sent = SocketCalls::send(fd, left_.data(), left_.size());
        if (sent < 0)
            return sent; // the caller tries again, or gives up
        left_.erase(0, static_cast<size_t>(sent));
    }
    return SocketCalls::send(fd, buffer, size);
}

} // namespace tamarin
