#include "analysis/luck_free.h"

#include <algorithm>
#include <cassert>

namespace tamarin {

// One hand on its way: the hands that the known player may hold, with their weights.
class LuckFree::Hand {
public:
    Hand(const LuckFree& luckFree, const PlayedHand& played, int seat)
        : of_(luckFree),
          played_(played), view_{seat, played.hole[1 - static_cast<size_t>(seat)], {}} {
        for (size_t h = 0; h < of_.deck_.holdings().size(); ++h)
            live_.push_back({h, of_.deck_.cardsOf(h), 1, 0});
        dropTouching(view_.other);
        row_ = of_.estimate_.rowOf(view_);
    }

    Result<double> result() {
        double luck = value(0) - of_.estimate_.meanOfDeals(view_.seat);
        int32_t at = 0;
        for (const uint8_t action : played_.actions) {
            assert(at >= 0); // the hand was played by the rules
            luck += deal(at);
            const auto& node = of_.tree_.nodes()[static_cast<size_t>(at)];
            if (node.player == view_.seat) {
                const auto moved = act(at, action);
                if (!moved)
                    return Error{moved.error()};
                luck += *moved;
            }
            at = node.child[action];
        }
        assert(at < 0 && at != CompiledTree::noChild);
        return value(at) - luck;
    }

private:
    struct Live {
        size_t holding;
        HoleCards cards;
        double weight;
        uint16_t handClass;
    };

    void dropTouching(std::span<const uint8_t> cards) {
        std::erase_if(live_, [&](const Live& live) {
            return std::ranges::any_of(live.cards, [&](uint8_t card) {
                return std::ranges::find(cards, card) != cards.end();
            });
        });
    }

    double totalWeight() const {
        double sum = 0;
        for (const Live& live : live_)
            sum += live.weight;
        return sum;
    }

    // Of a place in the tree: a node or ~settlement.
    double valueWith(const Live& live, int32_t at) const {
        if (at >= 0)
            return of_.estimate_.at(view_, row_, at, live.holding);
        return payoffAt(of_.tree_.settlements()[static_cast<size_t>(~at)], view_.seat, live.cards,
                        view_.other, view_.board);
    }

    double value(int32_t at) const {
        double sum = 0;
        for (const Live& live : live_)
            sum += live.weight * valueWith(live, at);
        return sum / totalWeight();
    }

    // Deals what the node's round has on the board; returns the step, 0 where nothing came.
    double deal(int32_t at) {
        const int round = of_.tree_.nodes()[static_cast<size_t>(at)].round;
        const size_t cards = sumBoardCards(&of_.game_, round);
        if (view_.board.size() == cards)
            return 0;
        const double before = value(at);
        view_.board = std::span(played_.board).first(cards);
        dropTouching(view_.board);
        row_ = of_.estimate_.rowOf(view_);
        classified_ = false;
        return value(at) - before;
    }

    void classify(int round) {
        if (classified_)
            return;
        classified_ = true;
        if (of_.strategy_.numClasses(view_.seat, round) == 1) {
            for (Live& live : live_)
                live.handClass = 0;
            return;
        }
        std::vector<uint8_t> cards(2);
        cards.insert(cards.end(), view_.board.begin(), view_.board.end());
        for (Live& live : live_) {
            std::ranges::copy(live.cards, cards.begin());
            live.handClass = of_.strategy_.classOf(view_.seat, round, cards);
        }
    }

    // The known player's action; returns the step.
    Result<double> act(int32_t at, size_t taken) {
        const auto& node = of_.tree_.nodes()[static_cast<size_t>(at)];
        classify(node.round);
        std::vector<ActionShares> shares(of_.strategy_.numClasses(view_.seat, node.round));
        for (size_t c = 0; c < shares.size(); ++c)
            shares[c] = of_.strategy_.shares(at, c);
        const double before = totalWeight();
        double expected = 0;
        double got = 0;
        for (size_t a = 0; a < numAbstractedActions; ++a) {
            if (node.child[a] == CompiledTree::noChild)
                continue;
            double sum = 0;
            for (const Live& live : live_)
                if (const double share = shares[live.handClass][a]; share > 0)
                    sum += live.weight * share * valueWith(live, node.child[a]);
            expected += sum / before;
            if (a == taken)
                got = sum;
        }
        for (Live& live : live_)
            live.weight *= shares[live.handClass][taken];
        std::erase_if(live_, [](const Live& live) { return live.weight == 0; });
        const double after = totalWeight();
        if (!(after > 0))
            return Error{"seat " + std::to_string(view_.seat) +
                         " did what its strategy never does there"};
        return got / after - expected;
    }

    const LuckFree& of_;
    const PlayedHand& played_;
    ValueEstimate::View view_;
    std::vector<Live> live_;
    std::vector<double> row_;
    bool classified_ = false;
};

LuckFree::LuckFree(const Game& game, const CompiledTree& tree, const PublicDeck& deck,
                   const HandStrategy& strategy, const ValueEstimate& estimate)
    : game_(game), tree_(tree), deck_(deck), strategy_(strategy), estimate_(estimate) {
    assert(game.numPlayers == 2 && game.numHoleCards == 2 && game.numBoardCards[0] == 0);
}

Result<double> LuckFree::of(const PlayedHand& hand, int seat) const {
    return Hand(*this, hand, seat).result();
}

} // namespace tamarin
