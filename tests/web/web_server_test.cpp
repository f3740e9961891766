// The server over real sockets, from outside: what a page sends, and what nobody should.
#include "web/web_server.h"

#include "dealer/fake_player.h"
#include "web/client_message.h"
#include "web/table_guest.h"

#include <atomic>
#include <fstream>

namespace tamarin::test {

namespace {

using namespace std::chrono_literals;

constexpr const char* token = "00112233445566778899aabbccddeeff";

// Bytes over a connection, read as they come.
class Wire {
public:
    explicit Wire(uint16_t port, int receiveBuffer = 0)
        : fd_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        if (receiveBuffer > 0)
            ::setsockopt(fd_, SOL_SOCKET, SO_RCVBUF, &receiveBuffer, sizeof receiveBuffer);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        address.sin_port = htons(port);
        EXPECT_EQ(::connect(fd_, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
        const int on = 1;
        ::setsockopt(fd_, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    }
    Wire(const Wire&) = delete;
    Wire& operator=(const Wire&) = delete;
    ~Wire() { ::close(fd_); }

    // False when the other side takes no more.
    bool send(std::string_view text) {
        while (!text.empty()) {
            const ssize_t sent = ::send(fd_, text.data(), text.size(), MSG_NOSIGNAL);
            if (sent <= 0)
                return false;
            text.remove_prefix(static_cast<size_t>(sent));
        }
        return true;
    }
    // So many bytes, or fewer where the stream ends before.
    std::string take(size_t size) {
        while (kept_.size() < size && more()) {
        }
        const std::string taken = kept_.substr(0, size);
        kept_.erase(0, taken.size());
        return taken;
    }
    std::string takeUntil(const std::string& mark) {
        while (kept_.find(mark) == std::string::npos && more()) {
        }
        const size_t end = kept_.find(mark);
        return take(end == std::string::npos ? kept_.size() : end + mark.size());
    }
    std::string takeAll() {
        while (more()) {
        }
        return std::exchange(kept_, "");
    }

private:
    bool more() {
        constexpr int patience = 30000; // milliseconds
        pollfd waiting{fd_, POLLIN, 0};
        char buffer[4096];
        if (::poll(&waiting, 1, patience) != 1)
            return false;
        const ssize_t count = ::recv(fd_, buffer, sizeof buffer, 0);
        if (count <= 0)
            return false;
        kept_.append(buffer, static_cast<size_t>(count));
        return true;
    }

    int fd_;
    std::string kept_;
};

// What distinguishes one request from another.
struct Forged {
    std::string host;
    std::string origin;
    std::string said = token;
};

// A page's side of a WebSocket (RFC 6455), with a mask of zeros.
class PageSocket {
public:
    PageSocket(uint16_t port, const Forged& forged, int receiveBuffer = 0)
        : wire_(port, receiveBuffer) {
        const std::string place = "127.0.0.1:" + std::to_string(port);
        const std::string host = forged.host.empty() ? place : forged.host;
        const std::string origin = forged.origin.empty() ? "http://" + place : forged.origin;
        wire_.send("GET /table HTTP/1.1\r\nHost: " + host + "\r\nOrigin: " + origin +
                   "\r\nConnection: Upgrade\r\nUpgrade: websocket\r\nSec-WebSocket-Version: 13\r\n"
                   "Sec-WebSocket-Key: dGhlIHNhbXBsZSBub25jZQ==\r\n"
                   "Sec-WebSocket-Protocol: tamarin, " +
                   forged.said + "\r\n\r\n");
        head_ = wire_.takeUntil("\r\n\r\n");
    }
    explicit PageSocket(uint16_t port) : PageSocket(port, Forged{}) {}

    const std::string& head() const { return head_; }
    Wire& wire() { return wire_; }

    static std::string frame(const std::string& text) {
        std::string frame = "\x81";
        if (text.size() < 126)
            frame += static_cast<char>(0x80 | text.size());
        else
            frame += {static_cast<char>(0xfe), static_cast<char>(text.size() >> 8),
                      static_cast<char>(text.size() & 0xff)};
        return frame + std::string(4, '\0') + text;
    }
    void say(const std::string& text) { wire_.send(frame(text)); }
    // The next message; empty at the end.
    std::string hear() {
        const std::string start = wire_.take(2);
        if (start.size() < 2 || (start[0] & 0x0f) != 1)
            return "";
        size_t size = static_cast<uint8_t>(start[1]);
        if (size == 126) {
            const std::string length = wire_.take(2);
            size = size_t{static_cast<uint8_t>(length[0])} << 8 | static_cast<uint8_t>(length[1]);
        }
        return wire_.take(size);
    }
    // News until one of them is as it should be.
    Json hearUntil(const std::function<bool(const Json&)>& enough) {
        for (std::string text; !(text = hear()).empty();) {
            const Json news = Json::parse(text);
            if (news["type"] != "table")
                ADD_FAILURE() << text;
            else if (enough(news))
                return news;
        }
        ADD_FAILURE() << "the socket has ended";
        return {};
    }
    void sitDown() {
        say(R"({"type":"sit","game":"kuhn.limit.3p.game","opponents":["call","call"]})");
    }
    // Hands in which the person calls; returns the last news. news: the last that was heard, if
    // any.
    Json play(int hands, Json news = {}) {
        if (news.is_null())
            news = hearUntil(waitsForPerson);
        for (int done = 0; news.is_object() && done < hands;) {
            const Json hand = news["hand"];
            if (news["phase"] == "between") {
                if (++done == hands)
                    return news;
                say(R"({"type":"next","hand":)" + hand["hand"].dump() + "}");
                news = hearUntil([&](const Json& now) {
                    return now["hand"]["hand"] != hand["hand"] && waitsForPerson(now);
                });
            } else {
                say(R"({"type":"act","hand":)" + hand["hand"].dump() + R"(,"actions":)" +
                    std::to_string(hand["actions"].size()) + R"(,"action":"c"})");
                news = hearUntil([&](const Json& now) {
                    return (now["hand"]["hand"] != hand["hand"] ||
                            now["hand"]["actions"].size() > hand["actions"].size()) &&
                           waitsForPerson(now);
                });
            }
        }
        return news;
    }

private:
    Wire wire_;
    std::string head_;
};

class Serving : public testing::Test {
protected:
    void start(const ServerLimits& limits = {}) {
        auto opened = WebServer::open(scratch_.path(), 0, token, builtPrograms(), limits);
        ASSERT_TRUE(opened.ok()) << opened.error();
        server_ = std::move(*opened);
        thread_ = std::thread([this] { server_->run([this] { return running_.load(); }); });
    }
    ~Serving() override {
        running_ = false;
        if (thread_.joinable())
            thread_.join();
    }
    uint16_t port() const { return server_->port(); }
    std::string ask(const std::string& request) const {
        Wire wire(port());
        wire.send(request);
        return wire.takeAll();
    }
    std::string get(const std::string& target, const Forged& forged = {}) const {
        const std::string host =
            forged.host.empty() ? "127.0.0.1:" + std::to_string(port()) : forged.host;
        return ask("GET " + target + " HTTP/1.1\r\nHost: " + host + "\r\n" +
                   (forged.origin.empty() ? "" : "Origin: " + forged.origin + "\r\n") +
                   "Authorization: Bearer " + forged.said + "\r\nConnection: close\r\n\r\n");
    }

    Scratch scratch_;
    std::unique_ptr<WebServer> server_;
    std::thread thread_;
    std::atomic<bool> running_{true};
};

bool hasStatus(const std::string& answer, int status) {
    return answer.starts_with("HTTP/1.1 " + std::to_string(status) + " ");
}

// Sanitizers keep what is freed for a while, so that memory grows with whatever is done.
#if defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define TAMARIN_SANITIZED 1
#endif
#endif
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) || defined(TAMARIN_SANITIZED)
constexpr bool memoryTells = false;
#else
constexpr bool memoryTells = true;
#endif

size_t residentBytes() {
    std::ifstream statm("/proc/self/statm");
    size_t all = 0;
    size_t resident = 0;
    statm >> all >> resident;
    return resident * static_cast<size_t>(::getpagesize());
}

// Whether the process has grown by less than so many megabytes since it had so many bytes.
bool grownByLess(size_t before, size_t megabytes) {
    return !memoryTells || residentBytes() < before + (megabytes << 20);
}

} // namespace

TEST_F(Serving, AnswersOurPageWithItsHeaders) {
    start();
    const std::string page = get("/");
    EXPECT_TRUE(hasStatus(page, 200)) << page;
    EXPECT_NE(page.find("Content-Security-Policy: default-src 'self'; frame-ancestors 'none'\r\n"),
              std::string::npos);
    EXPECT_NE(page.find("X-Content-Type-Options: nosniff\r\n"), std::string::npos);
    EXPECT_NE(page.find("Content-Type: text/html; charset=utf-8\r\n"), std::string::npos);
    EXPECT_NE(page.find("<!doctype html>"), std::string::npos);
    EXPECT_TRUE(hasStatus(get("/api/games"), 200));
    EXPECT_TRUE(hasStatus(get("/nothing"), 404));
    EXPECT_TRUE(hasStatus(get("/api/nothing"), 404));
}

TEST_F(Serving, RefusesForgedQuestions) {
    start();
    EXPECT_TRUE(hasStatus(get("/", {"evil.example", ""}), 403));
    EXPECT_TRUE(hasStatus(get("/api/games", {"", "http://evil.example"}), 403));
    EXPECT_TRUE(hasStatus(get("/api/games", {"", "", "00112233445566778899aabbccddeef0"}), 403));
    EXPECT_TRUE(hasStatus(get("/api/games", {"", "", ""}), 403));
    EXPECT_TRUE(hasStatus(ask("GET / HTTP/1.0\r\n\r\n"), 403)) << "without a Host";
    const std::string own = "127.0.0.1:" + std::to_string(port());
    EXPECT_TRUE(hasStatus(ask("POST / HTTP/1.1\r\nHost: " + own + "\r\n\r\n"), 405));
    EXPECT_TRUE(hasStatus(
        ask("GET / HTTP/1.1\r\nHost: " + own + "\r\nContent-Length: 5\r\n\r\nhello"), 413));
    EXPECT_TRUE(hasStatus(
        ask("GET / HTTP/1.1\r\nHost: " + own + "\r\nX: " + std::string(20000, 'a') + "\r\n\r\n"),
        431));
    EXPECT_TRUE(hasStatus(ask("GARBAGE\r\n\r\n"), 400));
}

TEST_F(Serving, NothingOfARequestComesBack) {
    start();
    const std::string answer = get("/<script>alert(1)</script>%0d%0aX-Bad:%201?q=<b>");
    EXPECT_EQ(answer.find("script"), std::string::npos);
    EXPECT_EQ(answer.find("X-Bad"), std::string::npos);
    EXPECT_EQ(answer.find("<b>"), std::string::npos);
    const std::string table = get("/api/hands?first=0&log=<img%20src=x>");
    EXPECT_EQ(table.find("img"), std::string::npos);
    PageSocket socket(port());
    EXPECT_EQ(socket.head().find(token), std::string::npos) << "the token is not said back";
    socket.say(R"({"type":"<i>"})");
    EXPECT_EQ(socket.hear().find("<i>"), std::string::npos);
}

TEST_F(Serving, RefusesForgedSockets) {
    start();
    EXPECT_TRUE(hasStatus(PageSocket(port()).head(), 101));
    EXPECT_TRUE(hasStatus(PageSocket(port(), {"evil.example:1", ""}).head(), 403));
    EXPECT_TRUE(hasStatus(PageSocket(port(), {"", "http://evil.example"}).head(), 403));
    EXPECT_TRUE(hasStatus(PageSocket(port(), {"", "null"}).head(), 403));
    EXPECT_TRUE(hasStatus(PageSocket(port(), {"", "", "wrong"}).head(), 403));
    EXPECT_TRUE(hasStatus(PageSocket(port(), {"", "", std::string(token) + "0"}).head(), 403));
}

TEST_F(Serving, AHandIsTakenUpOverAnotherSocket) {
    start();
    Json before;
    {
        PageSocket socket(port());
        EXPECT_NE(socket.head().find("Sec-WebSocket-Protocol: tamarin\r\n"), std::string::npos);
        socket.sitDown();
        before = socket.hearUntil(waitsForPerson);
    }
    const std::string tables = get("/api/tables");
    EXPECT_NE(tables.find("kuhn.limit.3p.game"), std::string::npos);
    PageSocket socket(port());
    socket.say(R"({"type":"back","table":)" + before["table"].dump() + "}");
    const Json news = socket.hearUntil(waitsForPerson);
    EXPECT_EQ(news["hand"], before["hand"]);
    const Json after = socket.play(5, news);
    EXPECT_EQ(after["session"]["hands"], 5);
}

// Two messages that come in one piece are two messages.
TEST_F(Serving, HearsMessagesThatComeTogether) {
    start();
    PageSocket socket(port());
    socket.wire().send(PageSocket::frame("{}") + PageSocket::frame("[]") + PageSocket::frame("{}"));
    EXPECT_NE(socket.hear().find("has no type"), std::string::npos);
    EXPECT_NE(socket.hear().find("no JSON object"), std::string::npos);
    EXPECT_NE(socket.hear().find("has no type"), std::string::npos);
}

TEST_F(Serving, ALargeFrameEndsItsSocketAndNothingElse) {
    start();
    PageSocket playing(port());
    playing.sitDown();
    PageSocket large(port());
    const size_t before = residentBytes();
    constexpr size_t size = size_t{2} << 20;
    std::string frame = "\x81\xff";
    for (int byte = 7; byte >= 0; --byte)
        frame += static_cast<char>(size >> (8 * byte) & 0xff);
    frame += std::string(4, '\0');
    large.wire().send(frame);
    large.wire().send(std::string(size, ' '));
    EXPECT_EQ(large.hear(), "") << "closed";
    PageSocket limit(port());
    limit.say(std::string(longestMessage, ' '));
    EXPECT_NE(limit.hear().find("no JSON object"), std::string::npos);
    limit.say(std::string(longestMessage + 1, ' '));
    EXPECT_EQ(limit.hear(), "");
    EXPECT_EQ(playing.play(10)["session"]["hands"], 10);
    EXPECT_TRUE(grownByLess(before, 8));
}

TEST_F(Serving, IdleSocketsMakeWay) {
    ServerLimits limits;
    limits.connections = 24;
    start(limits);
    PageSocket playing(port());
    playing.sitDown();
    const size_t before = residentBytes();
    std::vector<std::unique_ptr<Wire>> idle;
    for (int i = 0; i < 200; ++i) {
        idle.push_back(std::make_unique<Wire>(port()));
        if (i % 2 == 0)
            idle.back()->send("GET / HTTP/1.1\r\nHost: ");
    }
    EXPECT_TRUE(hasStatus(get("/api/games"), 200)) << "there is room for who has the token";
    EXPECT_EQ(playing.play(10)["session"]["hands"], 10);
    EXPECT_TRUE(grownByLess(before, 16));
}

TEST_F(Serving, HalfARequestEndsInTime) {
    ServerLimits limits;
    limits.request = 300ms;
    start(limits);
    PageSocket playing(port());
    playing.sitDown();
    Wire half(port());
    half.send("GET / HTTP/1.1\r\nHost: 127");
    Wire silent(port());
    PageSocket halfFrame(port());
    halfFrame.wire().send("\x81");
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(half.takeAll(), "");
    EXPECT_EQ(silent.takeAll(), "");
    EXPECT_EQ(halfFrame.hear(), "");
    EXPECT_LT(std::chrono::steady_clock::now() - start, 10s);
    // A page at the table may be silent for as long as it likes.
    EXPECT_EQ(playing.play(3)["session"]["hands"], 3);
}

TEST_F(Serving, ASlowReaderHoldsNobodyUp) {
    ServerLimits limits;
    limits.answer = 500ms;
    start(limits);
    PageSocket playing(port());
    playing.sitDown();
    const Json news = playing.hearUntil(waitsForPerson);
    constexpr int smallest = 2048;
    PageSocket slow(port(), {}, smallest);
    slow.say(R"({"type":"back","table":)" + news["table"].dump() + "}");
    const size_t before = residentBytes();
    // Far more than fits into the sockets' buffers, had it all been kept.
    EXPECT_EQ(playing.play(400, news)["session"]["hands"], 400);
    EXPECT_TRUE(grownByLess(before, 8));
    // What reaches it at last ends in the middle: it has been given up.
    std::this_thread::sleep_for(1s);
    const std::string all = slow.wire().takeAll();
    EXPECT_EQ(all.find("\"hands\":400"), std::string::npos);
}

TEST_F(Serving, SoManySocketsAndNoMore) {
    ServerLimits limits;
    limits.sockets = 3;
    start(limits);
    std::vector<std::unique_ptr<PageSocket>> open;
    for (int i = 0; i < 3; ++i) {
        open.push_back(std::make_unique<PageSocket>(port()));
        EXPECT_TRUE(hasStatus(open.back()->head(), 101));
    }
    EXPECT_TRUE(hasStatus(PageSocket(port()).head(), 503));
    EXPECT_TRUE(hasStatus(get("/"), 200));
    open.pop_back();
    std::string head;
    for (int i = 0; i < 100 && !hasStatus(head, 101); ++i) {
        std::this_thread::sleep_for(20ms);
        head = PageSocket(port()).head();
    }
    EXPECT_TRUE(hasStatus(head, 101));
}

// Every kind of end, with connections of every kind.
TEST_F(Serving, EndsWithTablesAndSocketsOpen) {
    start();
    PageSocket playing(port());
    playing.sitDown();
    playing.hearUntil(waitsForPerson);
    Wire idle(port());
    const auto start = std::chrono::steady_clock::now();
    running_ = false;
    thread_.join();
    server_.reset();
    EXPECT_LT(std::chrono::steady_clock::now() - start, 10s);
}

// The command itself: it prints one address, serves there and nowhere else, and ends on a signal.
TEST(ServeCommand, PrintsAnAddressThatOpens) {
    const Scratch scratch;
    Process process(tamarinCommand({"serve", "--game", "kuhn.limit.3p.game"}), scratch.path());
    std::string address;
    for (int i = 0; i < 500 && address.find('\n') == std::string::npos; ++i) {
        std::this_thread::sleep_for(20ms);
        address = process.out();
    }
    const std::string start = "http://127.0.0.1:";
    ASSERT_EQ(address.substr(0, start.size()), start);
    const size_t slash = address.find("/#token=");
    ASSERT_NE(slash, std::string::npos) << address;
    const std::string said = address.substr(slash + 8, 32);
    EXPECT_EQ(address.substr(slash + 40), "&game=kuhn.limit.3p.game\n");
    const std::string own = address.substr(7, slash - 7);
    Wire wire(static_cast<uint16_t>(std::stoi(own.substr(own.find(':') + 1))));
    wire.send("GET /api/games HTTP/1.1\r\nHost: " + own + "\r\nAuthorization: Bearer " + said +
              "\r\nConnection: close\r\n\r\n");
    EXPECT_TRUE(hasStatus(wire.takeAll(), 200));
    kill(process.pid(), SIGINT);
    EXPECT_EQ(process.wait(), 128 + SIGINT);
    EXPECT_EQ(runTamarin({"serve", "--game", "nothing.game"}).status, 1);
    EXPECT_EQ(runTamarin({"serve", "--port", "65536"}).status, 2);
}

} // namespace tamarin::test
