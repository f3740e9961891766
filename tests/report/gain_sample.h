// Gains with numbers made up so that no two are alike, in a game of twelve cards.
#pragma once

#include "report/gain_report.h"
#include "response/measured.h"

namespace tamarin::test {

struct GainSample {
    explicit GainSample(const std::string& text = shortGame(4, 3, "3 2", "10 10", "0 3"))
        : measured(text) {
        parts.whole = {{8, 2}, {3, 5}};
        parts.rounds = {{{6, 1}, {1.5, 4.5}}, {{2, 0.5}, {1.75, 0.25}}};
        for (int seat = 0; seat < 2; ++seat) {
            const PreflopResponse before(measured.whole(), seat);
            for (const auto& decision : before.firstDecisions())
                addActions(seat, decision.node);
        }
        const double holdings = static_cast<double>(measured.deck.holdings().size());
        for (size_t c = 0; c < measured.deck.numHandClasses(); ++c) {
            const auto gain = static_cast<double>(c * c) - 10;
            parts.hands.push_back(
                {c,
                 measured.deck.handClassSize(c) / holdings,
                 {{gain, 0.25 + 0.5 * static_cast<double>(c)}, {gain / 4, 3 * gain / 4}}});
        }
    }

    GainReport report(bool sampled) const {
        GainReport made = gainReport(measured.whole(), parts, 10, sampled);
        made.game = "twelve <cards>";
        made.strategy = "strat & egy";
        made.flops = "all 12 flops";
        return made;
    }

    Measured measured;
    GainParts parts;

private:
    void addActions(int seat, int32_t node) {
        for (size_t a = 0; a < numAbstractedActions; ++a)
            if (measured.tree.nodes()[static_cast<size_t>(node)].child[a] !=
                CompiledTree::noChild) {
                const auto i = static_cast<double>(parts.first.size());
                parts.first.push_back(
                    {seat, node, a, 0.05 * i, 0.01 + 0.04 * i, {0.2 * i - 0.3, 0.1}});
            }
    }
};

} // namespace tamarin::test
