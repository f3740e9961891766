#include "dealer/hand_log.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <string_view>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace tamarin {

namespace {

constexpr size_t longestLine = size_t{64} << 10;
constexpr std::string_view logHead = "# tamarin match "; // how every log begins

std::string formatChips(double chips) {
    char text[40];
    const auto [end, error] = std::to_chars(text, text + sizeof text, chips);
    return error == std::errc{} ? std::string(text, end) : "?";
}

std::vector<std::string> pieces(const std::string& text, char separator) {
    std::vector<std::string> result;
    size_t begin = 0;
    for (size_t end; (end = text.find(separator, begin)) != std::string::npos; begin = end + 1)
        result.push_back(text.substr(begin, end - begin));
    result.push_back(text.substr(begin));
    return result;
}

Result<double> parseChips(const std::string& text) {
    double chips = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), chips);
    if (error != std::errc{} || end != text.data() + text.size() || !std::isfinite(chips))
        return Error{"'" + text + "' is no number of chips"};
    return chips;
}

} // namespace

std::string formatHand(const Game* game, const LoggedHand& hand) {
    char text[MAX_LINE_LEN];
    const int length = printState(game, &hand.state, sizeof text, text);
    assert(length > 0);
    std::string line(text, static_cast<size_t>(length));
    for (size_t seat = 0; seat < hand.chips.size(); ++seat) {
        line += seat == 0 ? ':' : '|';
        line += formatChips(hand.chips[seat]);
    }
    for (size_t seat = 0; seat < hand.names.size(); ++seat) {
        line += seat == 0 ? ':' : '|';
        line += hand.names[seat];
    }
    return line;
}

Result<LoggedHand> parseHand(const Game* game, const std::string& line) {
    LoggedHand hand{};
    const int length = readState(line.c_str(), game, &hand.state);
    if (length < 0)
        return Error{"no state of this game at its beginning"};
    if (!hand.state.finished)
        return Error{"the hand is not finished"};
    const auto parts = pieces(line.substr(static_cast<size_t>(length)), ':');
    if (parts.size() != 3 || !parts[0].empty())
        return Error{"the state is not followed by ':' and the chips and ':' and the names"};
    const auto chips = pieces(parts[1], '|');
    hand.names = pieces(parts[2], '|');
    if (chips.size() != game->numPlayers || hand.names.size() != game->numPlayers)
        return Error{"there must be chips and a name for each of " +
                     std::to_string(game->numPlayers) + " seats"};
    for (uint8_t seat = 0; seat < game->numPlayers; ++seat) {
        const auto won = parseChips(chips[seat]);
        if (!won)
            return Error{won.error()};
        if (*won != valueOfState(game, &hand.state, seat))
            return Error{"seat " + std::to_string(seat) + " did not win " + chips[seat]};
        hand.chips.push_back(*won);
    }
    return hand;
}

Status readHandLog(const Game* game, const std::string& path,
                   const std::function<void(const LoggedHand&)>& receive) {
    return followHandLog(game, path, [&](const LoggedHand& hand, size_t) {
        receive(hand);
        return Status();
    });
}

Status followHandLog(const Game* game, const std::string& path,
                     const std::function<Status(const LoggedHand&, size_t)>& receive) {
    std::unique_ptr<FILE, int (*)(FILE*)> file(std::fopen(path.c_str(), "re"), std::fclose);
    if (!file)
        return Error{"could not open " + path + ": " + std::strerror(errno)};
    std::string line;
    for (size_t number = 1;; ++number) {
        line.clear();
        int c;
        while ((c = std::getc(file.get())) != EOF && c != '\n' && line.size() < longestLine)
            line += static_cast<char>(c);
        const std::string where = path + ":" + std::to_string(number) + ": ";
        if (std::ferror(file.get()))
            return Error{where + std::strerror(errno)};
        if (c == EOF)
            return {};
        if (c != '\n')
            return Error{where + "the line is too long"};
        if (line.empty() || line.front() == '#')
            continue;
        const auto hand = parseHand(game, line);
        if (!hand)
            return Error{where + hand.error()};
        if (Status received = receive(*hand, number); !received)
            return received;
    }
}

struct HandLog::Output {
    std::string path;
    std::function<bool()> keepWaiting;
    FileSystem& files;
    int fd = -1;
    bool regular = false;
    bool fresh = false; // there was no such file
    bool begun = false;

    ~Output() {
        // The name goes before the lock does, so that nobody takes up a file that is going.
        if (fresh && !begun)
            files.unlink(path.c_str());
        if (fd >= 0)
            files.close(fd);
    }

    Error failure() const { return Error{"could not write " + path + ": " + std::strerror(errno)}; }

    Status open();
    Status lock();
    Status checkContents();
    Status write(std::string_view text);
};

// Opens the path without waiting, as opening a pipe that nobody reads would.
Status HandLog::Output::open() {
    constexpr mode_t mode = 0666;
    constexpr int flags = O_WRONLY | O_CREAT | O_CLOEXEC | O_NONBLOCK;
    fd = files.open(path.c_str(), flags | O_EXCL, mode);
    const bool made = fd >= 0;
    if (fd < 0 && errno == EEXIST)
        fd = files.open(path.c_str(), flags, mode);
    if (fd < 0 && errno == ENXIO)
        return Error{"could not write " + path +
                     ": nobody reads this pipe; start its reader first"};
    if (fd < 0)
        return failure();
    struct stat status = {};
    if (files.fstat(fd, &status) != 0)
        return failure();
    regular = S_ISREG(status.st_mode);
    if (!regular)
        return {};
    if (Status locked = lock(); !locked)
        return locked;
    fresh = made;
    return checkContents();
}

// Two matches in one file would be two halves of none.
Status HandLog::Output::lock() {
    if (files.flock(fd, LOCK_EX | LOCK_NB) != 0) {
        if (errno == EWOULDBLOCK)
            return Error{"could not write " + path + ": another match is writing it"};
        return {}; // a file system without locks
    }
    struct stat held = {};
    struct stat named = {};
    if (files.fstat(fd, &held) != 0 || files.stat(path.c_str(), &named) != 0 ||
        held.st_dev != named.st_dev || held.st_ino != named.st_ino)
        return Error{"could not write " + path + ": it was taken away just now; try again"};
    return {};
}

// An older log may be replaced; anything else that has contents is somebody's work.
Status HandLog::Output::checkContents() {
    struct stat status = {};
    if (files.fstat(fd, &status) != 0)
        return failure();
    if (status.st_size == 0)
        return {};
    char head[logHead.size()];
    ssize_t size = -1;
    const int reader = files.open(path.c_str(), O_RDONLY | O_CLOEXEC, 0);
    if (reader >= 0) {
        do
            size = files.read(reader, head, sizeof head);
        while (size < 0 && errno == EINTR);
        files.close(reader);
    }
    const std::string_view begins(head, static_cast<size_t>(std::max<ssize_t>(size, 0)));
    if (begins == logHead || begins.starts_with("STATE:"))
        return {};
    return Error{path + " holds something else than a match log; name another file, or remove it"};
}

// The whole text, however slowly a pipe's reader takes it.
Status HandLog::Output::write(std::string_view text) {
    while (!text.empty()) {
        const ssize_t written = files.write(fd, text.data(), text.size());
        if (written >= 0) {
            text.remove_prefix(static_cast<size_t>(written));
        } else if (errno == EAGAIN) {
            if (!keepWaiting())
                return Error{"stopped while nobody reads " + path};
            pollfd waiting{fd, POLLOUT, 0};
            ::poll(&waiting, 1, 100);
        } else if (errno != EINTR) {
            return failure();
        }
    }
    return {};
}

void HandLog::Finish::operator()(Output* output) const {
    delete output;
}

Result<HandLog> HandLog::create(const std::string& path, std::function<bool()> keepWaiting,
                                FileSystem& files) {
    HandLog log;
    log.output_.reset(new Output{path, std::move(keepWaiting), files});
    if (Status status = log.output_->open(); !status)
        return Error{status.error()};
    return log;
}

Status HandLog::begin(const std::string& match) {
    return writeLine(std::string(logHead) + match);
}

Status HandLog::add(const Game* game, const LoggedHand& hand) {
    return writeLine(formatHand(game, hand));
}

Status HandLog::writeLine(const std::string& line) {
    // A pipe or a device cannot be cut, and need not be.
    if (!output_->begun && output_->regular && ::ftruncate(output_->fd, 0) != 0)
        return output_->failure();
    output_->begun = true;
    return output_->write(line + "\n");
}

Status HandLog::close() {
    // Some file systems, those on other machines above all, tell only now what they could not keep.
    if (output_->files.close(std::exchange(output_->fd, -1)) != 0 && errno != EINTR)
        return output_->failure();
    return {};
}

} // namespace tamarin
