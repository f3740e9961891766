// Assertions whose words are a promise to whoever watches for them.
//
// The text and the file in the message stay as they are, wherever the code has moved and however
// the condition is written by now: watchers look for `text' and for the source that the promise
// names. Such an assertion prints and aborts exactly as assert() does, in every build.
#pragma once

#include <cassert>

#define TAMARIN_FIXED_ASSERT(condition, text, file, function)                                      \
    ((condition) ? static_cast<void>(0) : __assert_fail(text, file, __LINE__, function))
