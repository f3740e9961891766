#include "report/strategy_page.h"

#include "training/line_reach.h"

#include <array>

#include <fmt/format.h>

namespace tamarin {

namespace {

// Trees of more nodes open with their first levels only.
constexpr size_t openNodes = 60;
constexpr int openLevels = 3;

constexpr const char* style = R"(
:root{--bg:#fcfcfb;--ink:#1d2329;--soft:#66707a;--line:#dde1e4;--card:#fff;
--fold:#8a97a6;--call:#3f7fbf;--raise:#d9713c;--on:#fff}
@media(prefers-color-scheme:dark){:root{--bg:#15181b;--ink:#e6e9ec;--soft:#98a2ab;--line:#31373d;
--card:#1d2125;--fold:#5d6976;--call:#3a78b5;--raise:#c9642f}}
*{box-sizing:border-box}
body{margin:0;background:var(--bg);color:var(--ink);font:15px/1.45 system-ui,sans-serif}
main{max-width:62rem;margin:0 auto;padding:2rem 1.25rem 4rem}
h1{font-size:1.5rem;margin:0 0 .25rem}
p{margin:.25rem 0 1rem;color:var(--soft)}
table{border-collapse:collapse;font-variant-numeric:tabular-nums}
.values{margin:0 0 1.5rem}
.values th,.values td{padding:.25rem 1.5rem .25rem 0;text-align:right;
border-bottom:1px solid var(--line)}
.values th:first-child,.values td:first-child{text-align:left}
th{font-weight:600;color:var(--soft);font-size:.85rem}
.legend span{display:inline-block;margin-right:1.25rem}
.legend i{display:inline-block;width:.8rem;height:.8rem;border-radius:2px;margin-right:.4rem;
vertical-align:-1px}
details{margin:.6rem 0 0;border-left:3px solid var(--line);padding-left:1rem}
details.s0{border-color:#6a8f4e}details.s1{border-color:#a0649c}details.s2{border-color:#c2a03a}
summary{cursor:pointer;padding:.15rem 0}
summary b{margin-right:.75rem}
.reach{color:var(--soft);font-size:.85rem;white-space:nowrap}
.meter{display:inline-block;width:4.5rem;height:.4rem;background:var(--line);border-radius:2px;
margin:0 .5rem;vertical-align:2px;overflow:hidden}
.meter u{display:block;height:100%;background:var(--soft)}
.sets{width:100%;max-width:40rem;margin:.35rem 0 .5rem}
.sets td{padding:.15rem .75rem .15rem 0}
.sets td:first-child{width:3rem;font-weight:600}
.sets td:last-child{width:6.5rem;text-align:right;color:var(--soft);font-size:.85rem}
.bar{display:flex;height:1.35rem;border-radius:3px;overflow:hidden;background:var(--line)}
.bar i{font-style:normal;font-size:.78rem;line-height:1.35rem;color:var(--on);text-align:center;
overflow:hidden;white-space:nowrap}
.fold{background:var(--fold)}.call{background:var(--call)}.raise{background:var(--raise)}
.end{margin:.35rem 0 0;color:var(--soft);font-size:.9rem}
.end b{color:var(--ink);font-weight:600}
)";

std::string escaped(const std::string& text) {
    return escapedForPage(text);
}

std::string percent(double share) {
    const double value = 100.0 * share;
    if (share > 0.0 && value < 0.05)
        return "&lt;0.1%";
    return fmt::format("{:.1f}%", value);
}

std::string meter(double share) {
    return fmt::format("<span class=reach><span class=meter><u style=\"width:{:.2f}%\"></u></span>"
                       "{} of hands</span>",
                       100.0 * share, percent(share));
}

class Page {
public:
    Page(const NamedGame& game, const Profile& profile)
        : game_(game), small_(*game.small), profile_(profile),
          reach_(lineReaches(small_, profile)) {}

    std::string make(const ProfileValue& value, const std::string& source) {
        text_ = "<!doctype html>\n<html lang=en><head><meta charset=utf-8>\n"
                "<meta name=viewport content=\"width=device-width,initial-scale=1\">\n";
        text_ += fmt::format("<title>{}</title>\n<style>{}</style></head>\n<body><main>\n",
                             escaped(game_.name), style);
        text_ += fmt::format("<h1>{}</h1>\n<p>{}</p>\n", escaped(game_.name), escaped(source));
        addValues(value);
        text_ += "<p class=legend><span><i class=fold></i>fold</span><span><i class=call></i>"
                 "check or call</span><span><i class=raise></i>bet or raise</span></p>\n";
        addNode(0, 0, "start");
        text_ += "</main></body></html>\n";
        return std::move(text_);
    }

private:
    void addValues(const ProfileValue& value) {
        text_ += "<table class=values><tr><th>seat<th>value<th>best response<th>gain</tr>\n";
        for (size_t p = 0; p < value.value.size(); ++p)
            text_ += fmt::format("<tr><td>seat {}<td>{:.6f}<td>{:.6f}<td>{:.2e}</tr>\n", p,
                                 value.value[p], value.best[p], value.gain(p));
        text_ += fmt::format("</table>\n<p>Chips a hand. NashConv {:.3e}: what the seats could "
                             "gain by a best response, added up.</p>\n",
                             value.nashConv());
    }

    // "check", "bet" where nothing is owed; "call", "raise" where something is.
    static const char* nameOf(const CompiledTree::Node& node, size_t action) {
        const bool owed = node.child[actionFold] != CompiledTree::noChild;
        if (action == actionFold)
            return "fold";
        if (action == actionCall)
            return owed ? "call" : "check";
        return owed ? "raise" : "bet";
    }

    void addNode(size_t n, int level, const std::string& line) {
        const CompiledTree::Node& node = small_.tree().nodes()[n];
        const bool open = small_.tree().nodes().size() <= openNodes || level < openLevels;
        text_ += fmt::format("<details class=s{}{}><summary><b>seat {}</b>{}{}{}</summary>\n",
                             node.player % 3, open ? " open" : "", node.player,
                             game_.rules->numRounds > 1 ? fmt::format("round {}, ", node.round + 1)
                                                        : std::string(),
                             escaped(line), meter(reach_.ofNode(n)));
        addSets(n, node);
        for (size_t a = 0; a < numAbstractedActions; ++a) {
            if (node.child[a] == CompiledTree::noChild)
                continue;
            const std::string below = (level == 0 ? std::string() : line + ", ") + nameOf(node, a);
            if (node.child[a] >= 0)
                addNode(static_cast<size_t>(node.child[a]), level + 1, below);
            else
                addEnd(n * numAbstractedActions + a, below);
        }
        text_ += "</details>\n";
    }

    void addSets(size_t n, const CompiledTree::Node& node) {
        text_ += "<table class=sets>\n";
        for (uint32_t field = 0; field < reach_.node[n].size(); ++field) {
            const auto& shares = profile_[small_.layout().index(node, field)];
            text_ += fmt::format("<tr><td>{}<td><div class=bar>", cardLabel(*game_.rules, field));
            for (size_t a = 0; a < numAbstractedActions; ++a)
                if (shares[a] > 0.0)
                    text_ += fmt::format("<i class={} style=\"width:{:.3f}%\" title=\"{} {:.6f}\">"
                                         "{}</i>",
                                         abstractedActionNames[a], 100.0 * shares[a],
                                         nameOf(node, a), shares[a],
                                         shares[a] >= 0.12 ? percent(shares[a]) : std::string());
            text_ += fmt::format("</div><td>{}</tr>\n", percent(reach_.node[n][field]));
        }
        text_ += "</table>\n";
    }

    void addEnd(size_t edge, const std::string& line) {
        text_ += fmt::format("<div class=end><b>{}</b> {} ends it", escaped(line),
                             meter(reach_.edge[edge]));
        if (reach_.edge[edge] > 0.0) {
            text_ += ", worth";
            for (size_t p = 0; p < reach_.paid[edge].size(); ++p)
                text_ += fmt::format("{} {:+.3f}", p == 0 ? "" : ",", reach_.paid[edge][p]);
        }
        text_ += "</div>\n";
    }

    const NamedGame& game_;
    const SmallGame& small_;
    const Profile& profile_;
    LineReach reach_;
    std::string text_;
};

} // namespace

std::string cardLabel(const Game& game, uint32_t field) {
    constexpr uint32_t jack = 9;
    return std::string(1, rankChars[game.numRanks == 4 ? jack + field : field]);
}

std::string strategyPage(const NamedGame& game, const Profile& profile, const ProfileValue& value,
                         const std::string& source) {
    return Page(game, profile).make(value, source);
}

const char* strategyPageStyle() {
    return style;
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
