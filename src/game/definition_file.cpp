#include "game/definition_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tamarin {

namespace {

// The definition in an open file; the descriptor is closed.
GamePtr readFrom(int fd) {
    struct stat about = {};
    FILE* const file = fstat(fd, &about) == 0 && S_ISREG(about.st_mode) ? fdopen(fd, "r") : nullptr;
    if (!file) {
        close(fd);
        return nullptr;
    }
    GamePtr game(readGame(file));
    std::fclose(file);
    return game;
}

} // namespace

GamePtr readDefinitionFile(const char* path) {
    // Without blocking: the open of a pipe that nobody writes would wait for ever.
    const int fd = open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (fd < 0) {
        std::fprintf(stderr, "ERROR: could not open game %s\n", path);
        return nullptr;
    }
    GamePtr game = readFrom(fd);
    if (!game)
        std::fprintf(stderr, "ERROR: could not read game %s\n", path);
    return game;
}

} // namespace tamarin
