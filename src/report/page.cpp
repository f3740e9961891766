#include "report/page.h"

#include <fmt/format.h>

namespace tamarin {

namespace {

constexpr const char* style = R"(
:root{--bg:#fcfcfb;--ink:#1d2329;--soft:#66707a;--line:#dde1e4}
@media(prefers-color-scheme:dark){:root{--bg:#15181b;--ink:#e6e9ec;--soft:#98a2ab;--line:#31373d}}
*{box-sizing:border-box}
body{margin:0;background:var(--bg);color:var(--ink);font:15px/1.45 system-ui,sans-serif}
main{max-width:62rem;margin:0 auto;padding:2rem 1.25rem 4rem}
h1{font-size:1.5rem;margin:0 0 .25rem}
h2{font-size:1.1rem;margin:2rem 0 .5rem}
p{margin:.25rem 0 1rem;color:var(--soft)}
table{border-collapse:collapse;font-variant-numeric:tabular-nums}
)";

} // namespace

const char* const actionStyle = R"(
:root{--fold:#8a97a6;--call:#3f7fbf;--raise:#d9713c;--on:#fff}
@media(prefers-color-scheme:dark){:root{--fold:#5d6976;--call:#3a78b5;--raise:#c9642f}}
.fold{background:var(--fold)}.call{background:var(--call)}.raise{background:var(--raise)}
.legend span{display:inline-block;margin-right:1.25rem}
.legend i{display:inline-block;width:.8rem;height:.8rem;border-radius:2px;margin-right:.4rem;
vertical-align:-1px}
.sets{width:100%;max-width:40rem;margin:.35rem 0 .5rem}
.sets td{padding:.15rem .75rem .15rem 0}
.sets td:first-child{width:3rem;font-weight:600}
.sets td:last-child{width:6.5rem;text-align:right;color:var(--soft);font-size:.85rem}
.bar{display:flex;height:1.35rem;border-radius:3px;overflow:hidden;background:var(--line)}
.bar i{font-style:normal;font-size:.78rem;line-height:1.35rem;color:var(--on);text-align:center;
overflow:hidden;white-space:nowrap}
)";

std::string pageOf(const std::string& title, const std::string& ownStyle, const std::string& body) {
    return fmt::format("<!doctype html>\n<html lang=en><head><meta charset=utf-8>\n"
                       "<meta name=viewport content=\"width=device-width,initial-scale=1\">\n"
                       "<title>{0}</title>\n<style>{1}{2}</style></head>\n<body><main>\n"
                       "<h1>{0}</h1>\n{3}</main></body></html>\n",
                       escapedForPage(title), style, ownStyle, body);
}

std::string escapedForPage(const std::string& text) {
    std::string result;
    for (const char c : text)
        if (c == '&')
            result += "&amp;";
        else if (c == '<')
            result += "&lt;";
        else if (c == '>')
            result += "&gt;";
        else if (c == '"')
            result += "&quot;";
        else
            result += c;
    return result;
}

} // namespace tamarin
