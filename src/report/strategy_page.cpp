#include "report/strategy_page.h"

#include "report/page.h"
#include "training/sequence_reach.h"

#include <fmt/format.h>

namespace tamarin {

namespace {

// Trees of more nodes open with their first levels only.
constexpr size_t openNodes = 60;
constexpr int openLevels = 3;

constexpr const char* strategyStyle = R"(
.values{margin:0 0 1.5rem}
.values th,.values td{padding:.25rem 1.5rem .25rem 0;text-align:right;
border-bottom:1px solid var(--line)}
.values th:first-child,.values td:first-child{text-align:left}
th{font-weight:600;color:var(--soft);font-size:.85rem}
details{margin:.6rem 0 0;border-left:3px solid var(--line);padding-left:1rem}
details.s0{border-color:#6a8f4e}details.s1{border-color:#a0649c}details.s2{border-color:#c2a03a}
summary{cursor:pointer;padding:.15rem 0}
summary b{margin-right:.75rem}
.reach{color:var(--soft);font-size:.85rem;white-space:nowrap}
.meter{display:inline-block;width:4.5rem;height:.4rem;background:var(--line);border-radius:2px;
margin:0 .5rem;vertical-align:2px;overflow:hidden}
.meter u{display:block;height:100%;background:var(--soft)}
.end{margin:.35rem 0 0;color:var(--soft);font-size:.9rem}
.end b{color:var(--ink);font-weight:600}
)";

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
          reach_(sequenceReaches(small_, profile)) {}

    std::string make(const ProfileValue& value, const std::string& source) {
        text_ = fmt::format("<p>{}</p>\n", escapedForPage(source));
        addValues(value);
        text_ += "<p class=legend><span><i class=fold></i>fold</span><span><i class=call></i>"
                 "check or call</span><span><i class=raise></i>bet or raise</span></p>\n";
        addNode(0, 0, "start");
        return pageOf(game_.name, std::string(actionStyle) + strategyStyle, text_);
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
                             escapedForPage(line), meter(reach_.ofNode(n)));
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
        text_ += fmt::format("<div class=end><b>{}</b> {} ends it", escapedForPage(line),
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
    SequenceReach reach_;
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

} // namespace tamarin
