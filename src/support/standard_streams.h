// Descriptors 0, 1 and 2, which a caller may have closed.
#pragma once

namespace tamarin {

// Opens /dev/null in place of whichever of the three is closed. Otherwise the next socket or file
// takes its number, and what is meant for standard error is sent to the dealer or written into a
// log. Input is opened for writing and output for reading: using it stays the error that it is
// without it, so that a result nobody gets is not taken for delivered. Call first in main.
void reserveStandardStreams();

} // namespace tamarin
