// Descriptors 0, 1 and 2, which a caller may have closed.
#pragma once

namespace tamarin {

// Opens /dev/null in place of whichever of the three is closed. Otherwise the next socket or file
// takes its number, and what is meant for standard error is sent to the dealer or written into a
// log. Input is opened for writing and output for reading, so that using one is still an error: a
// result that nobody gets must not pass for delivered. Call first in main.
void reserveStandardStreams();

} // namespace tamarin
