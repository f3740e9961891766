#include "support/standard_streams.h"

#include "support/child_process.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

// The device and inode behind a descriptor, or zeros.
std::pair<dev_t, ino_t> behind(int fd) {
    struct stat about = {};
    return fstat(fd, &about) == 0 ? std::pair{about.st_dev, about.st_ino}
                                  : std::pair<dev_t, ino_t>{};
}

// What is open stays, what is closed is taken, whichever of the three that is.
TEST(StandardStreams, AreTakenWhereTheyAreClosed) {
    for (int closed = 0; closed < 8; ++closed) {
        const auto isClosed = [closed](int fd) { return (closed >> fd & 1) != 0; };
        const ChildOutcome outcome = runInChild([&] {
            std::pair<dev_t, ino_t> before[3];
            for (int fd = 0; fd < 3; ++fd) {
                if (isClosed(fd))
                    close(fd);
                else if (fcntl(fd, F_GETFD) < 0 && open("/dev/zero", O_RDWR) != fd)
                    return 1; // the test itself was started without it
                before[fd] = behind(fd);
            }
            reserveStandardStreams();
            struct stat null = {};
            stat("/dev/null", &null);
            for (int fd = 0; fd < 3; ++fd)
                if (behind(fd) != (isClosed(fd) ? std::pair{null.st_dev, null.st_ino} : before[fd]))
                    return 10 + fd;
            return open("/dev/zero", O_RDONLY) > 2 ? 0 : 2;
        });
        EXPECT_TRUE(outcome.exited(0)) << "closed " << closed << ", status " << outcome.status;
    }
}

// As without them: what nobody gets must not look delivered.
TEST(StandardStreams, AreStillOfNoUse) {
    const ChildOutcome outcome = runInChild([] {
        for (int fd = 0; fd < 3; ++fd)
            close(fd);
        reserveStandardStreams();
        char byte = 'x';
        if (read(0, &byte, 1) >= 0 || errno != EBADF)
            return 1;
        if (write(1, &byte, 1) >= 0 || errno != EBADF)
            return 2;
        return write(2, &byte, 1) < 0 && errno == EBADF ? 0 : 3;
    });
    EXPECT_TRUE(outcome.exited(0)) << outcome.status;
}

} // namespace
} // namespace tamarin::test
