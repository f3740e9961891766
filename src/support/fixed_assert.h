// Assertions with fixed messages, because other programs watch for them.
//
// The text and the file name in the message stay the same, wherever the code moves and however the
// condition is written. Such an assertion prints and aborts exactly as assert() does, in every
// build.
#pragma once

#include <cassert>

#define TAMARIN_FIXED_ASSERT(condition, text, file, function)                                      \
    ((condition) ? static_cast<void>(0) : __assert_fail(text, file, __LINE__, function))
