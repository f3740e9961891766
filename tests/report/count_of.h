// How often a part stands in a text.
#pragma once

#include <string>

namespace tamarin::test {

inline size_t countOf(const std::string& text, const std::string& part) {
    size_t count = 0;
    for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1))
        ++count;
    return count;
}

} // namespace tamarin::test
