#include "web/page_files.h"

#include <array>

// Put into the program by embedded.S, each from its first byte to the label behind its last.
extern "C" {
extern const char tamarinIndexHtml[];
extern const char tamarinIndexHtmlEnd[];
extern const char tamarinPageJs[];
extern const char tamarinPageJsEnd[];
extern const char tamarinPageCss[];
extern const char tamarinPageCssEnd[];
extern const char tamarinIconSvg[];
extern const char tamarinIconSvgEnd[];
}

namespace tamarin {

namespace {

std::string_view between(const char* begin, const char* end) {
    return {begin, static_cast<size_t>(end - begin)};
}

} // namespace

std::span<const PageFile> pageFiles() {
    static const std::array<PageFile, 4> files = {{
        {"/", "text/html; charset=utf-8", between(tamarinIndexHtml, tamarinIndexHtmlEnd)},
        {"/page.js", "text/javascript; charset=utf-8", between(tamarinPageJs, tamarinPageJsEnd)},
        {"/page.css", "text/css; charset=utf-8", between(tamarinPageCss, tamarinPageCssEnd)},
        {"/icon.svg", "image/svg+xml", between(tamarinIconSvg, tamarinIconSvgEnd)},
    }};
    return files;
}

} // namespace tamarin
