#include "driver/fallback.h"

#include <cstdio>

namespace tamarin {

void FallbackCount::add() {
    if (count_++ == 0) {
        std::fprintf(stderr, "WARNING: the strategy does not hold this state: playing by %s\n",
                     rule_);
    }
}

FallbackCount::~FallbackCount() {
    if (count_ > 0) {
        std::fprintf(stderr, "%ld decision%s made by %s in this match\n", count_,
                     count_ == 1 ? " was" : "s were", rule_);
    }
}

} // namespace tamarin
