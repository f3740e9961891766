#include "support/standard_streams.h"

#include <fcntl.h>
#include <unistd.h>

namespace tamarin {

void reserveStandardStreams() {
    for (int standard = STDIN_FILENO; standard <= STDERR_FILENO; ++standard) {
        if (fcntl(standard, F_GETFD) >= 0)
            continue;
        // The lowest number that is free, so this one.
        (void)open("/dev/null", standard == STDIN_FILENO ? O_WRONLY : O_RDONLY);
    }
}

} // namespace tamarin
