#include "support/clock.h"

namespace tamarin {

const Clock& steadyClock() {
    static const Clock clock;
    return clock;
}

} // namespace tamarin
