// Ranges out of their texts.
#pragma once

#include "eval/hand_range.h"

#include <string>
#include <vector>

namespace tamarin::test {

inline std::vector<HandRange> rangesOf(const std::vector<std::string>& texts) {
    std::vector<HandRange> ranges;
    for (const std::string& text : texts)
        ranges.push_back(*parseHandRange(text));
    return ranges;
}

} // namespace tamarin::test
