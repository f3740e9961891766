#include "response/flop_response.h"

#include "response/round_walk.h"
#include "support/parallel_errors.h"

#include <atomic>
#include <cassert>
#include <omp.h>

namespace tamarin {

class FlopResponse::Walks {
public:
    virtual ~Walks() = default;
    virtual Result<FlopValues> on(const PublicBoard& flop, const Work& work) const = 0;
    virtual uint64_t memory(int threads) const = 0;
};

template <class Weight>
class FlopResponse::TypedWalks : public FlopResponse::Walks {
public:
    explicit TypedWalks(const MeasuredGame& game) : game_(game) {
        for (size_t seat = 0; seat < 2; ++seat) {
            auto left = game.rounds.reachedBy(game.tree, game.strategy, static_cast<int>(1 - seat));
            const bool fewer = 4 * left.numBlocks() <= 3 * game.rounds.numBlocks();
            if (fewer)
                reached_[seat] = std::make_unique<BettingRounds>(std::move(left));
            Betting& betting = betting_[seat];
            betting.rounds = fewer ? reached_[seat].get() : &game.rounds;
            if (seat == 1 && betting.rounds == betting_[0].rounds)
                betting.shares = betting_[0].shares;
            else
                for (int round = 1; round <= game.rounds.last(); ++round)
                    betting.shares.push_back(std::make_shared<const ShareRows<Weight>>(
                        betting.rounds->round(round), game.strategy, round));
            betting.reach = reachOfFlop(static_cast<int>(1 - seat));
        }
    }

    Result<FlopValues> on(const PublicBoard& flop, const Work& work) const override;

    // Rooms of either seat for each thread and for the flop itself; and of each turn card the sums,
    // until they are added up.
    uint64_t memory(int threads) const override {
        uint64_t rows = 0;
        for (size_t seat = 0; seat < 2; ++seat) {
            for (int round = 2; round <= game_.rounds.last(); ++round)
                rows += (1 + sumsIn(round)) * rowsOf(seat, round) *
                        (static_cast<uint64_t>(threads) + 1);
            if (game_.rounds.last() >= 2)
                rows += sumsIn(2) * rowsOf(seat, 2) * (game_.deck.cards().size() - cardsOf(1));
        }
        return rows * sizeof(Row);
    }

private:
    using Row = LaneRow<Weight>;
    using Rows = std::vector<Row>;

    // What is summed up over the boards of a round, by lane block and holding.
    struct Sums {
        Rows best;
        Rows value;
        std::vector<Rows> later; // as in FlopValues, counted from the round
    };

    // What is walked when one seat responds: where the other's strategy never comes, nothing is won
    // or lost. All the betting, and then the same for both seats, where little could be left out.
    struct Betting {
        const BettingRounds* rounds;
        std::vector<std::shared_ptr<const ShareRows<Weight>>> shares; // [round - 1]
        Rows reach; // the other seat's, on the flop
    };

    // What a thread works in when one seat responds.
    struct Rooms {
        Rooms(const TypedWalks& walks, size_t responder) : seat(responder) {
            const int last = walks.game_.rounds.last();
            const size_t hands = walks.game_.deck.holdings().size();
            const Betting& betting = walks.betting_[seat];
            for (int round = 1; round <= last; ++round) {
                walk.emplace_back(betting.rounds->round(round),
                                  *betting.shares[static_cast<size_t>(round) - 1],
                                  static_cast<int>(seat), hands);
                reachBelow.emplace_back(round < last ? walks.rowsOf(seat, round + 1) : 0);
                sums.push_back(round < last ? walks.sumsOf(seat, round + 1) : Sums{});
            }
            reach.resize(hands);
            best.resize(hands);
            value.resize(hands);
        }
        size_t seat;
        std::vector<RoundWalk<Weight>> walk; // [round - 1]
        std::vector<Rows> reachBelow;        // [round - 1]: of the round after
        std::vector<Sums> sums;              // [round - 1]: likewise
        Rows reach;                          // of one block, by hand
        Rows best;
        Rows value;
    };

    unsigned cardsOf(int round) const {
        assert(round >= 0 && round < MAX_ROUNDS);
        return game_.game.numBoardCards[round];
    }
    size_t blocksOf(size_t responder, int round) const {
        return betting_[responder].rounds->round(round).blocks;
    }
    size_t rowsOf(size_t responder, int round) const {
        return blocksOf(responder, round) * game_.deck.holdings().size();
    }
    size_t roundsAfter(int round) const { return static_cast<size_t>(game_.rounds.last() - round); }
    size_t sumsIn(int round) const { return 2 + roundsAfter(round); }
    Sums sumsOf(size_t responder, int round) const {
        const Rows rows(rowsOf(responder, round));
        return {rows, rows, std::vector<Rows>(roundsAfter(round), rows)};
    }
    static void add(const Rows& more, Rows& rows) {
        for (size_t i = 0; i < more.size(); ++i)
            rows[i].add(more[i]);
    }
    static void add(const Sums& more, Sums& sums) {
        add(more.best, sums.best);
        add(more.value, sums.value);
        for (size_t k = 0; k < more.later.size(); ++k)
            add(more.later[k], sums.later[k]);
    }
    static std::vector<Rows*> allOf(Sums& sums) {
        std::vector<Rows*> all{&sums.best, &sums.value};
        for (Rows& rows : sums.later)
            all.push_back(&rows);
        return all;
    }
    static void clear(Sums& sums) {
        for (Rows* const rows : allOf(sums))
            std::ranges::fill(*rows, Row{});
    }

    Rows reachOfFlop(int seat) const;
    BoardHands handsOn(int round, const PublicBoard& board) const {
        return handsOnBoard(game_.deck, game_.strategy, round, board, round == game_.rounds.last());
    }
    void gather(const BoardHands& hands, const Row* rows, Rows& out) const {
        for (size_t i = 0; i < hands.size(); ++i)
            out[i] = rows[hands.hands[i].number];
    }
    void reachDown(int round, const BoardHands& hands, const Rows& reach, Rooms& rooms,
                   Rows& below) const;
    void valuesUp(int round, const BoardHands& hands, size_t block, const Rows& reach,
                  const Sums& below, Rooms& rooms, unsigned weight, Sums& out) const;
    void addLastBoards(const std::vector<PublicBoard>& boards, const Rows& reach, Rooms& rooms,
                       Sums& out) const;
    void addBoard(int round, const PublicBoard& board, const Rows& reach, Rooms& rooms,
                  Sums& out) const;
    void meanOfNext(const PublicBoard& board, size_t responder, int round, Sums& sums) const;
    std::vector<double> byLineAndClass(const Rows& rows) const;

    const MeasuredGame game_;
    std::array<std::unique_ptr<BettingRounds>, 2> reached_; // where they are other than the game's
    std::array<Betting, 2> betting_;                        // [responder]
};

// The probability of a seat's own actions on the way to the flop, by lane and holding.
template <class Weight>
auto FlopResponse::TypedWalks<Weight>::reachOfFlop(int seat) const -> Rows {
    const size_t holdings = game_.deck.holdings().size();
    Rows rows(rowsOf(static_cast<size_t>(1 - seat), 1));
    const auto& nodes = game_.tree.nodes();
    for (size_t lane = 0; lane < game_.rounds.entries().size(); ++lane)
        for (size_t h = 0; h < holdings; ++h) {
            const auto cards = game_.deck.cardsOf(h);
            const uint16_t handClass = game_.strategy.classOf(seat, 0, cards);
            double reach = 1.0;
            const auto entry = static_cast<size_t>(game_.rounds.entries()[lane]);
            for (int32_t edge = nodes[entry].parentEdge; edge != CompiledTree::noEdge;) {
                const int32_t node = edge / numAbstractedActions;
                const auto& at = nodes[static_cast<size_t>(node)];
                if (at.player == seat)
                    reach *= game_.strategy.shares(
                        node, handClass)[static_cast<size_t>(edge % numAbstractedActions)];
                edge = at.parentEdge;
            }
            rows[lane / lanesInBlock * holdings + h].lanes[lane % lanesInBlock] =
                static_cast<Weight>(reach);
        }
    return rows;
}

template <class Weight>
void FlopResponse::TypedWalks<Weight>::reachDown(int round, const BoardHands& hands,
                                                 const Rows& reach, Rooms& rooms,
                                                 Rows& below) const {
    const size_t holdings = game_.deck.holdings().size();
    for (size_t block = 0; block < blocksOf(rooms.seat, round); ++block) {
        gather(hands, reach.data() + block * holdings, rooms.reach);
        rooms.walk[static_cast<size_t>(round) - 1].down(hands, block, rooms.reach.data(),
                                                        {below.data(), nullptr, nullptr, holdings});
    }
}

// Adds the values of a board at the round's beginning, in one block of lanes, as often as weight
// says. Who plays best from a later round on has that round's best below, and the strategy's own
// play on this one: another walk for each such round, none in the last, which takes the time.
template <class Weight>
void FlopResponse::TypedWalks<Weight>::valuesUp(int round, const BoardHands& hands, size_t block,
                                                const Rows& reach, const Sums& below, Rooms& rooms,
                                                unsigned weight, Sums& out) const {
    const size_t holdings = game_.deck.holdings().size();
    const auto times = static_cast<Weight>(weight);
    gather(hands, reach.data() + block * holdings, rooms.reach);
    const auto walk = [&](const Rows& bestBelow, const Rows& valueBelow) {
        rooms.walk[static_cast<size_t>(round) - 1].up(
            hands, block, rooms.reach.data(),
            {nullptr, bestBelow.data(), valueBelow.data(), holdings}, rooms.best.data(),
            rooms.value.data());
    };
    const auto add = [&](const Rows& found, Rows& sums) {
        Row* const rows = sums.data() + block * holdings;
        for (size_t i = 0; i < hands.size(); ++i)
            rows[hands.hands[i].number].addScaled(found[i], times);
    };
    walk(below.best, below.value);
    add(rooms.best, out.best);
    add(rooms.value, out.value);
    for (size_t k = 0; k < out.later.size(); ++k) {
        const Rows& played = k == 0 ? below.best : below.later[k - 1];
        walk(played, played);
        add(rooms.value, out.later[k]);
    }
}

// The boards that were looked at stand for all; whoever holds two cards, and the opponent, leave so
// many next cards as are not on the board or in their hands.
template <class Weight>
void FlopResponse::TypedWalks<Weight>::meanOfNext(const PublicBoard& board, size_t responder,
                                                  int round, Sums& sums) const {
    const size_t holdings = game_.deck.holdings().size();
    const double cards = static_cast<double>(game_.deck.cards().size() - board.cards.size() - 4);
    for (Rows* const rows : allOf(sums))
        for (size_t block = 0; block < blocksOf(responder, round + 1); ++block) {
            Row* const of = rows->data() + block * holdings;
            game_.deck.symmetrise(board, of);
            for (size_t h = 0; h < holdings; ++h)
                of[h].scale(1.0 / cards);
        }
}

template <class Weight>
void FlopResponse::TypedWalks<Weight>::addBoard(int round, const PublicBoard& board,
                                                const Rows& reach, Rooms& rooms, Sums& out) const {
    const BoardHands hands = handsOn(round, board);
    const size_t at = static_cast<size_t>(round) - 1;
    Sums& below = rooms.sums[at];
    if (round < game_.rounds.last()) {
        reachDown(round, hands, reach, rooms, rooms.reachBelow[at]);
        clear(below);
        const auto next = game_.deck.extend(board, cardsOf(round + 1));
        if (round + 1 < game_.rounds.last())
            for (const PublicBoard& each : next)
                addBoard(round + 1, each, rooms.reachBelow[at], rooms, below);
        else
            addLastBoards(next, rooms.reachBelow[at], rooms, below);
        meanOfNext(board, rooms.seat, round, below);
    }
    for (size_t block = 0; block < blocksOf(rooms.seat, round); ++block)
        valuesUp(round, hands, block, reach, below, rooms, board.weight, out);
}

// Block by block and, of each, board by board: the rows of a block stay in the cache.
template <class Weight>
void FlopResponse::TypedWalks<Weight>::addLastBoards(const std::vector<PublicBoard>& boards,
                                                     const Rows& reach, Rooms& rooms,
                                                     Sums& out) const {
    const int last = game_.rounds.last();
    std::vector<BoardHands> hands;
    for (const PublicBoard& board : boards)
        hands.push_back(handsOn(last, board));
    for (size_t block = 0; block < blocksOf(rooms.seat, last); ++block)
        for (size_t b = 0; b < boards.size(); ++b)
            valuesUp(last, hands[b], block, reach, {}, rooms, boards[b].weight, out);
}

template <class Weight>
std::vector<double> FlopResponse::TypedWalks<Weight>::byLineAndClass(const Rows& rows) const {
    const size_t holdings = game_.deck.holdings().size();
    const size_t classes = game_.deck.numHandClasses();
    std::vector<double> sums(game_.rounds.entries().size() * classes);
    for (size_t lane = 0; lane < game_.rounds.entries().size(); ++lane) {
        for (size_t h = 0; h < holdings; ++h)
            sums[lane * classes + game_.deck.handClassOf(h)] += static_cast<double>(
                rows[lane / lanesInBlock * holdings + h].lanes[lane % lanesInBlock]);
        for (size_t c = 0; c < classes; ++c)
            sums[lane * classes + c] /= game_.deck.handClassSize(c);
    }
    return sums;
}

// Turn cards are shared out among the threads, for either seat; what they give is added up in their
// order, whoever has it first.
template <class Weight>
Result<FlopValues> FlopResponse::TypedWalks<Weight>::on(const PublicBoard& flop,
                                                        const Work& work) const {
    const bool more = game_.rounds.last() > 1;
    const std::vector<PublicBoard> turns =
        more ? game_.deck.extend(flop, cardsOf(2)) : std::vector<PublicBoard>();
    const BoardHands hands = handsOn(1, flop);
    std::array<Rooms, 2> flopRooms{Rooms(*this, 0), Rooms(*this, 1)};
    for (size_t seat = 0; seat < 2 && more; ++seat)
        reachDown(1, hands, betting_[seat].reach, flopRooms[seat], flopRooms[seat].reachBelow[0]);
    std::vector<Sums> ofTurn(2 * turns.size());
    std::atomic<bool> stopping{false};
    std::atomic<uint64_t> done{0};
    ParallelErrors errors;
#pragma omp parallel num_threads(work.threadCount())
    {
        std::array<std::unique_ptr<Rooms>, 2> own;
#pragma omp for schedule(dynamic, 1)
        for (size_t item = 0; item < ofTurn.size(); ++item) {
            if (stopping.load(std::memory_order_relaxed))
                continue;
            errors.run([&] {
                const size_t seat = item % 2;
                if (own[seat] == nullptr)
                    own[seat] = std::make_unique<Rooms>(*this, seat);
                ofTurn[item] = sumsOf(seat, 2);
                addBoard(2, turns[item / 2], flopRooms[seat].reachBelow[0], *own[seat],
                         ofTurn[item]);
                const uint64_t now = done.fetch_add(1, std::memory_order_relaxed) + 1;
                if (work.shouldStop())
                    stopping = true;
                if (omp_get_thread_num() == 0)
                    work.report(now, ofTurn.size());
            });
        }
    }
    errors.rethrow();
    if (stopping)
        return stopped();
    FlopValues values;
    for (size_t seat = 0; seat < 2; ++seat) {
        Rooms& rooms = flopRooms[seat];
        Sums& below = rooms.sums[0];
        for (size_t item = seat; item < ofTurn.size(); item += 2)
            add(ofTurn[item], below);
        if (more)
            meanOfNext(flop, seat, 1, below);
        Sums sums = sumsOf(seat, 1);
        for (size_t block = 0; block < blocksOf(seat, 1); ++block)
            valuesUp(1, hands, block, betting_[seat].reach, below, rooms, 1, sums);
        values.best[seat] = byLineAndClass(sums.best);
        values.value[seat] = byLineAndClass(sums.value);
        for (const Rows& rows : sums.later)
            values.later[seat].push_back(byLineAndClass(rows));
    }
    return values;
}

FlopResponse::FlopResponse(const MeasuredGame& game, LaneNumbers numbers) {
    if (numbers == LaneNumbers::floats)
        walks_ = std::make_unique<TypedWalks<float>>(game);
    else
        walks_ = std::make_unique<TypedWalks<double>>(game);
}

FlopResponse::~FlopResponse() = default;

uint64_t FlopResponse::memory(int threads) const {
    return walks_->memory(threads);
}

Result<FlopValues> FlopResponse::on(const PublicBoard& flop, const Work& work) const {
    return walks_->on(flop, work);
}

} // namespace tamarin
