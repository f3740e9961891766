// Lines for whoever sits at the terminal: what went wrong, what was kept, what is being done.
#pragma once

#include <string>
#include <utility>

#include <fmt/format.h>

namespace tamarin {

inline constexpr const char* programName = "tamarin";

// "tamarin: MESSAGE" and a line end on standard error, without formatting and as fmt does it.
void complain(const std::string& message);
template <class... Args>
void complain(fmt::format_string<Args...> format, Args&&... args) {
    complain(fmt::format(format, std::forward<Args>(args)...));
}

// The same without "tamarin: ", for what is not a complaint. Neither fails when standard error
// cannot be written.
void remark(const std::string& message);
template <class... Args>
void remark(fmt::format_string<Args...> format, Args&&... args) {
    remark(fmt::format(format, std::forward<Args>(args)...));
}

} // namespace tamarin
