#include "directory/notice.h"

#include <cstdio>

namespace tamarin {

void remark(const std::string& message) {
    std::fprintf(stderr, "%s\n", message.c_str());
}

void complain(const std::string& message) {
    std::fprintf(stderr, "%s: %s\n", programName, message.c_str());
}

} // namespace tamarin
