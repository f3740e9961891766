// The frame of every page: one file that fetches nothing, runs no script, and follows the reader's
// light or dark preference.
#pragma once

#include <string>

namespace tamarin {

// A whole page under its title. style: rules of its own, after those that all pages share. body:
// the HTML below the heading.
std::string pageOf(const std::string& title, const std::string& style, const std::string& body);

// Text made safe for a page.
std::string escapedForPage(const std::string& text);

// The rules for actions in their colours, shares as bars, and their legend.
extern const char* const actionStyle;

} // namespace tamarin
