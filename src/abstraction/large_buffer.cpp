#include "abstraction/large_buffer.h"

#include <sys/mman.h>

namespace tamarin {

void* takePages(size_t bytes) {
    void* const address =
        mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (address == MAP_FAILED)
        return nullptr;
    madvise(address, bytes, MADV_HUGEPAGE); // a wish; small pages do, too
    return address;
}

void releasePages(void* address, size_t bytes) {
    if (address != nullptr)
        munmap(address, bytes);
}

} // namespace tamarin
