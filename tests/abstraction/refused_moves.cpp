#include "abstraction/refused_moves.h"

#include <cerrno>
#include <sys/syscall.h>
#include <unistd.h>

namespace tamarin::test {
namespace {

bool refused = false;

} // namespace

RefusedMoves::RefusedMoves() {
    refused = true;
}
RefusedMoves::~RefusedMoves() {
    refused = false;
}

} // namespace tamarin::test

// Stands before the C library's, for the whole test program.
extern "C" int renameat2(int fromDirectory, const char* from, int toDirectory, const char* to,
                         unsigned int flags) noexcept {
    if (tamarin::test::refused) {
        errno = EPERM;
        return -1;
    }
    return static_cast<int>(syscall(SYS_renameat2, fromDirectory, from, toDirectory, to, flags));
}
