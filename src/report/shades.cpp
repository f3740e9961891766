#include "report/shades.h"

#include <algorithm>
#include <cassert>
#include <cmath>

#include <fmt/format.h>

namespace tamarin {

const char* const shadeStyle = R"(
:root{--bar:#3f7fbf}
@media(prefers-color-scheme:dark){:root{--bar:#4a8ccb}}
.range td{padding:.2rem 1.5rem .2rem 0;border-bottom:1px solid var(--line)}
.spread{width:100%}
.spread td{padding:.1rem .75rem .1rem 0;white-space:nowrap;text-align:right}
.spread td:last-child{width:70%}
.spread u{display:block;height:.95rem;background:var(--bar);border-radius:2px}
.soft{color:var(--soft)}
.grid{table-layout:fixed;width:100%;max-width:52rem}
.grid td{border:1px solid var(--bg);padding:.2rem 0;text-align:center;font-size:.72rem;
line-height:1.2;overflow:hidden}
.grid b{display:block;font-size:.82rem}
)";

std::string Colour::text() const {
    return fmt::format("#{:02x}{:02x}{:02x}", static_cast<int>(std::lround(red)),
                       static_cast<int>(std::lround(green)), static_cast<int>(std::lround(blue)));
}

const char* Colour::ink() const {
    return 0.299 * red + 0.587 * green + 0.114 * blue > 140 ? "#1d2329" : "#fff";
}

Colour shade(const Ramp& ramp, double place) {
    assert(std::isfinite(place));
    const double at = std::clamp(place, 0.0, 1.0) * static_cast<double>(ramp.size() - 1);
    const size_t step = std::min(static_cast<size_t>(at), ramp.size() - 2);
    const double along = at - static_cast<double>(step);
    const auto mix = [&](double from, double to) { return from + along * (to - from); };
    const Colour& a = ramp[step];
    const Colour& b = ramp[step + 1];
    return {mix(a.red, b.red), mix(a.green, b.green), mix(a.blue, b.blue)};
}

std::string barOf(double share) {
    return fmt::format("<u style=\"width:{:.2f}%\"></u>", 100.0 * share);
}

std::string gridField(const Colour& colour, const std::string& name, const std::string& below,
                      const std::string& resting) {
    return fmt::format("<td style=\"background:{};color:{}\" title=\"{}: {}\"><b>{}</b>{}",
                       colour.text(), colour.ink(), name, resting, name, below);
}

std::string gridOf(std::span<const std::string> fields, size_t side) {
    assert(fields.size() == side * side);
    std::string text = "<table class=grid>\n";
    for (size_t i = 0; i < fields.size(); ++i)
        text += (i % side == 0 ? "<tr>" : "") + fields[i] + (i % side == side - 1 ? "</tr>\n" : "");
    return text + "</table>\n";
}

} // namespace tamarin
