#include "dealer/hand_log.h"

#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

namespace tamarin {

namespace {

constexpr size_t longestLine = size_t{64} << 10;

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
        receive(*hand);
    }
}

struct HandLog::Output {
    std::string path;
    FILE* file = nullptr;
    bool fresh = false; // there was no such file
    bool begun = false;
};

void HandLog::Finish::operator()(Output* output) const {
    if (output->file)
        std::fclose(output->file);
    if (output->fresh && !output->begun)
        unlink(output->path.c_str());
    delete output;
}

Result<HandLog> HandLog::create(const std::string& path) {
    const auto failed = [&] {
        return Error{"could not write " + path + ": " + std::strerror(errno)};
    };
    constexpr mode_t mode = 0666;
    constexpr int flags = O_WRONLY | O_CREAT | O_CLOEXEC;
    bool fresh = true;
    int fd = open(path.c_str(), flags | O_EXCL, mode);
    if (fd < 0 && errno == EEXIST) {
        fresh = false;
        fd = open(path.c_str(), flags, mode);
    }
    if (fd < 0)
        return failed();
    FILE* const file = fdopen(fd, "w"); // which does not cut a file that is open
    if (!file) {
        const Error error = failed();
        ::close(fd);
        return error;
    }
    HandLog log;
    log.output_.reset(new Output{path, file, fresh, false});
    return log;
}

Status HandLog::comment(const std::string& text) {
    return writeLine(std::string{"# "}.append(text));
}

Status HandLog::add(const Game* game, const LoggedHand& hand) {
    return writeLine(formatHand(game, hand));
}

Status HandLog::writeLine(const std::string& line) {
    FILE* const file = output_->file;
    // A pipe or a device cannot be cut, and need not be.
    if (!output_->begun && ftruncate(fileno(file), 0) != 0 && errno != EINVAL)
        return Error{"could not write " + output_->path + ": " + std::strerror(errno)};
    output_->begun = true;
    if (std::fprintf(file, "%s\n", line.c_str()) < 0 || std::fflush(file) != 0)
        return Error{"could not write " + output_->path + ": " + std::strerror(errno)};
    return {};
}

Status HandLog::close() {
    if (std::fclose(std::exchange(output_->file, nullptr)) != 0)
        return Error{"could not write " + output_->path + ": " + std::strerror(errno)};
    return {};
}

} // namespace tamarin
