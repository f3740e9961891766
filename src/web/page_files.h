// The files of the page, as they were when the program was built (web/built/).
#pragma once

#include <span>
#include <string_view>

namespace tamarin {

struct PageFile {
    const char* path; // as a request names it
    const char* type;
    std::string_view contents;
};

// "/" is the first.
std::span<const PageFile> pageFiles();

} // namespace tamarin
