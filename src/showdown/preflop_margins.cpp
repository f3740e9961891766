#include "showdown/preflop_margins.h"

#include "abstraction/boards.h"
#include "eval/hand_evaluator.h"
#include "eval/hand_value.h"

#include <algorithm>
#include <atomic>
#include <cassert>
#include <numeric>

namespace tamarin {

namespace {

constexpr int boardCards = 5;
constexpr size_t cardsLeft = deckCards - boardCards;
static_assert(PreflopMargins::boards() ==
              int64_t{48} * 47 * 46 * 45 * 44 / (5 * 4 * 3 * 2)); // 48 choose 5
constexpr int16_t aboveAll = INT16_MAX;
constexpr int16_t belowAll = INT16_MIN;

// Hand values fill more than half of 16 bits: moved down, they leave either end free.
int16_t movedDown(uint16_t value) {
    return static_cast<int16_t>(value - static_cast<int>(handValueCount / 2));
}

// Pairs of hands are numbered as holdings are: of two hands in place of two cards.
size_t pairNumber(size_t high, size_t low) {
    return holdingNumber(low, high);
}

// The sums of one thread.
class PairSums {
public:
    explicit PairSums(const PublicDeck& deck)
        : hands_(deck.holdings().size()), high_(hands_), low_(hands_), few_(numHoldings(hands_)),
          sums_(few_.size()) {}

    // weight: how many boards it stands for.
    void add(std::span<const uint8_t> board, unsigned weight) {
        if (weight != weight_ || inFew_ == INT16_MAX)
            flush();
        weight_ = weight;
        ++inFew_;
        rank(board);
        for (size_t i = 0; i < hands_; ++i)
            if (low_[i] != belowAll)
                compare(low_[i], high_.data(), low_.data(), i, few_.data() + pairNumber(i, 0));
    }
    void flush() {
        for (size_t i = 0; i < few_.size(); ++i)
            sums_[i] += static_cast<int32_t>(weight_) * few_[i];
        std::ranges::fill(few_, int16_t{0});
        inFew_ = 0;
    }
    const std::vector<int32_t>& sums() const { return sums_; }

private:
    // The one loop that counts: of 16-bit numbers throughout, so that vectors hold many.
    static void compare(int16_t own, const int16_t* __restrict beaten,
                        const int16_t* __restrict beating, size_t count, int16_t* __restrict sums) {
        for (size_t j = 0; j < count; ++j) {
            const int16_t won = own > beaten[j] ? 1 : 0;
            const int16_t lost = own < beating[j] ? 1 : 0;
            sums[j] = static_cast<int16_t>(sums[j] + won - lost);
        }
    }

    // A hand that shares a card with the board neither is beaten nor beats.
    void rank(std::span<const uint8_t> board) {
        std::array<uint8_t, cardsLeft> left{};
        cardsWithout(board.data(), boardCards, left.data());
        HandEvaluator::shared().rankHoldings(board, values_.data());
        std::ranges::fill(high_, aboveAll);
        std::ranges::fill(low_, belowAll);
        size_t i = 0;
        for (size_t high = 1; high < left.size(); ++high)
            for (size_t low = 0; low < high; ++low, ++i) {
                const size_t hand = holdingNumber(left[low], left[high]);
                high_[hand] = low_[hand] = movedDown(values_[i]);
            }
    }

    size_t hands_;
    std::vector<int16_t> high_; // by hand: its value, or what is above all
    std::vector<int16_t> low_;  // the same, or what is below all
    std::array<uint16_t, numHoldings(cardsLeft)> values_{};
    std::vector<int16_t> few_; // of boards of one weight
    std::vector<int32_t> sums_;
    unsigned weight_ = 0;
    int inFew_ = 0;
};

} // namespace

Result<PreflopMargins> PreflopMargins::count(const PublicDeck& deck, const Work& work) {
    assert(deck.cards().size() == deckCards);
    const BoardSet boards(boardCards);
    std::vector<size_t> order(boards.size());
    std::iota(order.begin(), order.end(), size_t{0});
    std::ranges::stable_sort(order, {}, [&](size_t b) { return boards.multiplicity(b); });
    std::vector<int64_t> sums(numHoldings(deck.holdings().size()));
    std::atomic<bool> stopping{false};
    std::atomic<size_t> done{0};
    ParallelErrors errors;
#pragma omp parallel num_threads(work.threadCount())
    errors.run([&] {
        PairSums own(deck);
#pragma omp for schedule(static) nowait
        for (size_t i = 0; i < order.size(); ++i) {
            if (stopping)
                continue;
            own.add({boards.board(order[i]), boardCards}, boards.multiplicity(order[i]));
            if (const size_t now = ++done; now % 1024 == 0) {
                if (work.shouldStop())
                    stopping = true;
                if (omp_get_thread_num() == 0)
                    work.report(now, boards.size());
            }
        }
        own.flush();
#pragma omp critical(tamarin_preflop_margins)
        for (size_t i = 0; i < sums.size(); ++i)
            sums[i] += own.sums()[i];
    });
    errors.rethrow();
    if (stopping)
        return stopped();
    PreflopMargins margins(deck);
    margins.finish(sums);
    return margins;
}

// A board stands for all its renamings; the same is to rename the hands.
void PreflopMargins::finish(const std::vector<int64_t>& sums) {
    const std::vector<SuitRenaming> renamings = deck_->empty().symmetry;
    const size_t hands = deck_->holdings().size();
    std::vector<std::vector<size_t>> images(renamings.size(), std::vector<size_t>(hands));
    for (size_t r = 0; r < renamings.size(); ++r)
        for (size_t h = 0; h < hands; ++h) {
            const auto cards = deck_->cardsOf(h);
            images[r][h] =
                deck_->numberOf(renamed(cards[0], renamings[r]), renamed(cards[1], renamings[r]));
        }
    net_.assign(sums.size(), 0);
    for (size_t i = 0; i < hands; ++i)
        for (size_t j = 0; j < i; ++j) {
            const auto [a, b] = deck_->holdings()[i];
            const auto [c, d] = deck_->holdings()[j];
            if (a == c || a == d || b == c || b == d)
                continue;
            int64_t all = 0;
            for (const auto& image : images) {
                const auto [low, high] = std::minmax({image[i], image[j]});
                const int64_t sum = sums[pairNumber(high, low)];
                all += high == image[i] ? sum : -sum;
            }
            assert(all % static_cast<int64_t>(images.size()) == 0);
            net_[pairNumber(i, j)] =
                static_cast<int32_t>(all / static_cast<int64_t>(images.size()));
        }
}

int32_t PreflopMargins::net(size_t holding, size_t other) const {
    if (holding == other)
        return 0;
    return holding > other ? net_[pairNumber(holding, other)] : -net_[pairNumber(other, holding)];
}

} // namespace tamarin
