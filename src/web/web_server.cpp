// The one file that includes the sockets' library: it takes longer to compile than all the rest of
// the room. What is said over the sockets is decided elsewhere: request_guard, queries, table_talk.
#include "web/web_server.h"

#include "web/client_message.h"
#include "web/deadline_stream.h"
#include "web/table_talk.h"

#include <atomic>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/http/empty_body.hpp>
#include <boost/beast/http/parser.hpp>
#include <boost/beast/http/read.hpp>
#include <boost/beast/websocket/stream.hpp>
#include <optional>
#include <sys/eventfd.h>
#include <thread>

namespace tamarin {

namespace {

namespace beast = boost::beast;
namespace http = boost::beast::http;
using ErrorCode = DeadlineStream::ErrorCode;
using Request = http::request<http::empty_body>;
using Socket = beast::websocket::stream<DeadlineStream&, false>;

constexpr std::string_view bearer = "Bearer ";
// A WebSocket of a browser has no header for a token; it names protocols, ours and the token.
constexpr std::string_view protocol = "tamarin";

std::vector<std::string> allOf(const Request& request, http::field name) {
    std::vector<std::string> values;
    const auto [begin, end] = request.equal_range(name);
    for (auto at = begin; at != end; ++at)
        values.emplace_back(at->value());
    return values;
}

// The one value of a header; empty when it is missing or there twice.
std::string oneOf(const Request& request, http::field name) {
    const auto values = allOf(request, name);
    return values.size() == 1 ? values[0] : "";
}

std::string tokenOf(const Request& request, bool socket) {
    if (socket) {
        const std::string said = oneOf(request, http::field::sec_websocket_protocol);
        const std::string before = std::string(protocol) + ", ";
        return said.starts_with(before) ? said.substr(before.size()) : "";
    }
    const std::string said = oneOf(request, http::field::authorization);
    return said.starts_with(bearer) ? said.substr(bearer.size()) : "";
}

RequestFacts factsOf(const Request& request) {
    RequestFacts facts;
    facts.method = std::string(request.method_string());
    facts.target = std::string(request.target());
    facts.hosts = allOf(request, http::field::host);
    facts.origins = allOf(request, http::field::origin);
    facts.socket = beast::websocket::is_upgrade(request);
    facts.token = tokenOf(request, facts.socket);
    const std::string length = oneOf(request, http::field::content_length);
    facts.hasBody = (request.count(http::field::content_length) > 0 && length != "0") ||
                    request.count(http::field::transfer_encoding) > 0;
    return facts;
}

std::string headOf(int status, const WebAnswer& answer, bool keep) {
    std::string head = "HTTP/1.1 " + std::to_string(status) + " " +
                       std::string(http::obsolete_reason(static_cast<http::status>(status))) +
                       "\r\nContent-Type: " + answer.type +
                       "\r\nContent-Length: " + std::to_string(answer.body().size()) + "\r\n";
    for (const auto& [name, value] : answerHeaders)
        head += std::string(name) + ": " + value + "\r\n";
    return head + (keep ? "\r\n" : "Connection: close\r\n\r\n");
}

} // namespace

// One connection, in a thread of its own.
class WebServer::Visit {
public:
    Visit(WebServer& server, int fd)
        : server_(server), fd_(fd), wake_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)),
          stream_(fd, unused_) {
        thread_ = std::thread([this] {
            serve();
            ::shutdown(fd_, SHUT_RDWR);
            ended_ = true;
        });
    }
    ~Visit() {
        hangUp();
        thread_.join();
        ::close(fd_);
        if (wake_ >= 0)
            ::close(wake_);
    }

    // Makes the thread end soon.
    void hangUp() {
        closing_ = true;
        ::shutdown(fd_, SHUT_RDWR);
        wake();
    }
    bool ended() const { return ended_; }
    bool trusted() const { return trusted_; } // it has shown the token
    bool isSocket() const { return isSocket_; }

private:
    void wake() const {
        const uint64_t one = 1;
        if (wake_ >= 0 && ::write(wake_, &one, sizeof one) < 0) {
            // The count is full: it wakes all the same.
        }
    }

    void serve() {
        beast::flat_buffer buffer;
        while (!closing_) {
            stream_.setDeadline(steadyClock().now() + server_.limits_.request);
            http::request_parser<http::empty_body> parser;
            parser.header_limit(static_cast<uint32_t>(server_.limits_.header));
            parser.body_limit(boost::none); // none is ever read
            ErrorCode error;
            http::read_header(stream_, buffer, parser, error);
            if (error == http::error::end_of_stream || error == beast::error::timeout)
                return;
            if (error) {
                refuse(error == http::error::header_limit ? 431 : 400);
                return;
            }
            const RequestFacts facts = factsOf(parser.get());
            const int verdict = server_.guard_.judge(facts);
            if (verdict != RequestGuard::ok) {
                refuse(verdict);
                return;
            }
            trusted_ = trusted_ || facts.socket || needsToken(facts.target);
            if (facts.socket) {
                upgrade(parser.get());
                return;
            }
            const WebAnswer answer = server_.queries_.answer(facts.target);
            if (!write(headOf(answer.status, answer, parser.get().keep_alive())) ||
                !write(answer.body()) || !parser.get().keep_alive())
                return;
        }
    }

    bool write(std::string_view text) {
        stream_.setDeadline(steadyClock().now() + server_.limits_.answer);
        while (!text.empty()) {
            ErrorCode error;
            const size_t sent =
                stream_.write_some(boost::asio::const_buffer(text.data(), text.size()), error);
            if (error)
                return false;
            text.remove_prefix(sent);
        }
        return true;
    }

    // A refusal tells nothing but its number.
    void refuse(int status) {
        WebAnswer answer;
        answer.text = "{\"problem\":\"refused\"}";
        if (write(headOf(status, answer, false)))
            write(answer.body());
        // What the other side still sends is read, so that the end does not take the answer away.
        ::shutdown(fd_, SHUT_WR);
        stream_.setDeadline(steadyClock().now() + std::chrono::milliseconds(200));
        std::array<char, 4096> rest{};
        ErrorCode error;
        while (!error && !closing_)
            stream_.read_some(boost::asio::mutable_buffer(rest.data(), rest.size()), error);
    }

    void upgrade(const Request& request) {
        size_t sockets = 0;
        {
            const std::lock_guard lock(server_.socketsMutex_);
            sockets = server_.sockets_;
            if (sockets < server_.limits_.sockets)
                ++server_.sockets_;
        }
        if (sockets >= server_.limits_.sockets) {
            refuse(503);
            return;
        }
        isSocket_ = true;
        talk(request);
        const std::lock_guard lock(server_.socketsMutex_);
        --server_.sockets_;
    }

    void talk(const Request& request) {
        stream_.readBytewise();
        stream_.setDeadline(steadyClock().now() + server_.limits_.answer);
        Socket socket(stream_);
        socket.read_message_max(longestMessage);
        socket.set_option(
            beast::websocket::stream_base::decorator([](beast::websocket::response_type& answer) {
                answer.set(http::field::sec_websocket_protocol, beast::string_view("tamarin"));
                for (const auto& [name, value] : answerHeaders)
                    answer.set(name, value);
            }));
        ErrorCode error;
        socket.accept(request, error);
        socket.text(true);
        TableTalk talk(server_.tables_, [this] { wake(); });
        while (!error && !closing_) {
            pollfd waiting[] = {{fd_, POLLIN, 0}, {wake_, POLLIN, 0}};
            if (!stream_.waiting())
                ::poll(waiting, 2, -1);
            stream_.setDeadline(steadyClock().now() + server_.limits_.request);
            if (waiting[1].revents != 0)
                tellNews(socket, talk, error);
            if (!error && !closing_ && (stream_.waiting() || waiting[0].revents != 0))
                hearMessage(socket, talk, error);
        }
    }

    void tellNews(Socket& socket, const TableTalk& talk, ErrorCode& error) {
        uint64_t count = 0;
        if (::read(wake_, &count, sizeof count) < 0)
            return; // somebody was quicker, or it was for the end
        send(socket, talk.news(), error);
    }

    void hearMessage(Socket& socket, TableTalk& talk, ErrorCode& error) {
        beast::flat_buffer buffer;
        socket.read(buffer, error);
        if (error)
            return;
        const auto data = buffer.data();
        send(socket, talk.hear({static_cast<const char*>(data.data()), data.size()}), error);
    }

    void send(Socket& socket, const std::string& text, ErrorCode& error) {
        if (text.empty())
            return;
        stream_.setDeadline(steadyClock().now() + server_.limits_.answer);
        socket.write(boost::asio::const_buffer(text.data(), text.size()), error);
    }

    WebServer& server_;
    const int fd_;
    const int wake_;
    boost::asio::io_context unused_;
    DeadlineStream stream_;
    std::atomic<bool> closing_{false};
    std::atomic<bool> ended_{false};
    std::atomic<bool> trusted_{false};
    std::atomic<bool> isSocket_{false};
    std::thread thread_;
};

WebServer::WebServer(Listener listener, const std::string& directory, const std::string& token,
                     const Programs& programs, const ServerLimits& limits)
    : listener_(std::move(listener)), limits_(limits), guard_(listener_.port(), token),
      tables_(directory, programs), queries_(directory, tables_) {}

WebServer::~WebServer() = default;

Result<std::unique_ptr<WebServer>> WebServer::open(const std::string& directory, uint16_t port,
                                                   const std::string& token,
                                                   const Programs& programs,
                                                   const ServerLimits& limits) {
    auto listener = Listener::at(loopbackAddress, port);
    if (!listener)
        return Error{listener.error()};
    return std::unique_ptr<WebServer>(
        new WebServer(std::move(*listener), directory, token, programs, limits));
}

void WebServer::run(const std::function<bool()>& keepRunning) {
    constexpr int look = 200; // milliseconds
    while (keepRunning()) {
        pollfd waiting{listener_.fd(), POLLIN, 0};
        ::poll(&waiting, 1, look);
        while (const auto visitor = listener_.accept())
            receive(visitor->fd);
        forgetEnded();
    }
    visits_.clear();
}

void WebServer::receive(int fd) {
    forgetEnded();
    if (visits_.size() >= limits_.connections && !makeRoom()) {
        ::close(fd);
        return;
    }
    // What a page does not read must not pile up in the system either.
    constexpr int mostUnread = 128 << 10;
    ::setsockopt(fd, SOL_SOCKET, SO_SNDBUF, &mostUnread, sizeof mostUnread);
    // One piece of news must not wait until the one before is acknowledged.
    const int on = 1;
    ::setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    visits_.push_back(std::make_unique<Visit>(*this, fd));
}

// The oldest that has not shown the token goes, or else the oldest that is no WebSocket.
bool WebServer::makeRoom() {
    for (const bool trusted : {false, true})
        for (auto visit = visits_.begin(); visit != visits_.end(); ++visit)
            if ((*visit)->trusted() == trusted && !(*visit)->isSocket()) {
                visits_.erase(visit);
                return true;
            }
    return false;
}

void WebServer::forgetEnded() {
    std::erase_if(visits_, [](const auto& visit) { return visit->ended(); });
}

} // namespace tamarin
