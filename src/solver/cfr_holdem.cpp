// Hold'em training: buckets from the hold'em tables, random deals, the player's own update rule.

#include "holdem/buckets.h"
#include "holdem/sets.h"
#include "holdem/walk.h"
#include "solver/cfr.h"
#include "solver/training_progress.h"
#include "support/fast_draws.h"
#include "support/flag_guard.h"
#include "tree/deck.h"

#include <algorithm>
#include <cassert>
#include <iostream>
#include <vector>

namespace {

using tamarin::FlagGuard;
using tamarin::holdemBuckets;

constexpr int bucketCombinations = holdemBuckets * holdemBuckets * holdemBuckets * holdemBuckets;

// A line each hundred of the ten thousand bucket combinations.
void printTreeProgress(int count) {
    if (count % 100 == 0)
        std::cout << static_cast<double>(count) / bucketCombinations * 100 << "%" << std::endl;
}

// The cards of one deal after another: each is drawn from the whole deck as the last one left it.
class DealSequence {
public:
    explicit DealSequence(const Game& game)
        : game_(game), deck_(tamarin::solverDeck(game)), cards_(tamarin::cardsNeeded(game)) {}

    void next(State* state) {
        shuffle(deck_.data(), cards_, static_cast<int>(deck_.size()));
        tamarin::placeCards(game_, deck_.data(), state);
    }

private:
    const Game& game_;
    std::vector<uint8_t> deck_;
    int cards_;
};

} // namespace

void CFR::trainHoldem(unsigned long long iterations) {
    runHoldemTraining(iterations, Form::compiled);
}

void CFR::trainHoldemPlain(unsigned long long iterations) {
    runHoldemTraining(iterations, Form::plain);
}

void CFR::runHoldemTraining(unsigned long long iterations, Form form) {
    if (equityTables == nullptr && bucketSource == nullptr)
        throw "Deve carregar equity tables para correr cfr no hold'em poker";
    const std::unique_ptr<const tamarin::HoldemBuckets> fromTables =
        bucketSource ? nullptr
                     : std::make_unique<tamarin::TableBuckets>(*equityTables, game->numPlayers);
    const tamarin::HoldemBuckets& source = bucketSource ? *bucketSource : *fromTables;
    const FlagGuard tables(useHoldemTables, FlagGuard::After::off);
    const FlagGuard abstraction(useCardAbstraction, FlagGuard::After::off);
    tamarin::TrainingProgress progress(iterations, 100);

    std::unique_ptr<tamarin::HoldemSets> sets;
    if (form == Form::compiled)
        sets = takeHoldemSets();
    if (sets) {
        try {
            trainHoldemSets(*sets, iterations, source, progress);
        } catch (...) {
            keepHoldemSets(std::move(sets)); // the solver is not to lose its nodes
            throw;
        }
        keepHoldemSets(std::move(sets));
    } else { // as asked, or a strategy of another tree: the plain form knows what becomes of it
        trainHoldemNodes(iterations, source, progress);
    }
    if (gameUtility == nullptr)
        gameUtility = new double[game->numPlayers]();
}

void CFR::trainHoldemSets(tamarin::HoldemSets& sets, unsigned long long iterations,
                          const tamarin::HoldemBuckets& source,
                          tamarin::TrainingProgress& progress) {
    if (!treeReady) {
        for (int count = 1; count <= bucketCombinations; ++count)
            printTreeProgress(count);
        treeReady = true;
    }
    std::cout << "Number of information sets: " << sets.numSets() << std::endl;

    tamarin::HoldemWalk walk(*game, sets);
    DealSequence deals(*game);
    State deal{};
    tamarin::DealBuckets buckets;
    for (unsigned long long it = 0; it < iterations; ++it) {
        progress.at(it);
        deals.next(&deal);
        tamarin::fillDealBuckets(*game, deal, source, buckets);
        double util[MAX_PLAYERS];
        walk.iterate(tamarin::HoldemRule::player, deal, buckets, util);
    }
}

void CFR::trainHoldemNodes(unsigned long long iterations, const tamarin::HoldemBuckets& source,
                           tamarin::TrainingProgress& progress) {
    const int players = game->numPlayers;
    State state{};
    const auto setBuckets = [&](const tamarin::DealBuckets& buckets) {
        for (int r = 0; r < game->numRounds; ++r)
            for (int acting = 1; acting <= players; ++acting)
                std::copy_n(buckets.of[r][acting], players, holdemBucket[r][acting]);
    };
    if (!treeReady) {
        initState(game, 0, &state);
        int count = 0;
        for (int combination = 0; combination < bucketCombinations; ++combination) {
            const int digits[MAX_ROUNDS] = {combination / 1000, combination / 100 % 10,
                                            combination / 10 % 10, combination % 10};
            tamarin::DealBuckets buckets{};
            for (int r = 0; r < MAX_ROUNDS; ++r)
                for (auto& acting : buckets.of[r])
                    std::fill_n(acting, 3, static_cast<uint8_t>(digits[r]));
            setBuckets(buckets);
            createAbstractedGameTree(&state);
            printTreeProgress(++count);
        }
        treeReady = true;
    }
    std::cout << "Number of information sets: " << numInformationSets() << std::endl;

    double reach[MAX_PLAYERS];
    std::fill_n(reach, MAX_PLAYERS, 1.0);
    DealSequence deals(*game);
    for (unsigned long long it = 0; it < iterations; ++it) {
        progress.at(it);
        initState(game, 0, &state);
        deals.next(&state);
        tamarin::DealBuckets buckets;
        tamarin::fillDealBuckets(*game, state, source, buckets);
        setBuckets(buckets);
        double util[MAX_PLAYERS];
        calc(&state, reach, 0, util);
    }
}

// The numbers to train on: those of the solver when its tree is ready, else zeros. Null where the
// solver holds another tree than the game's.
std::unique_ptr<tamarin::HoldemSets> CFR::takeHoldemSets() {
    if (auto* kept = dynamic_cast<tamarin::HoldemSets*>(store.get())) {
        (void)store.release(); // kept owns it now
        return std::unique_ptr<tamarin::HoldemSets>(kept);
    }
    auto sets = std::make_unique<tamarin::HoldemSets>(*game);
    if (!treeReady)
        return sets;
    size_t taken = 0;
    bool fits = true;
    for (int m = 0; fits && m < numMaps(); ++m)
        fits = nodes().forEach(m, [&](const std::string& key, const CFRNode& node) {
            ++taken;
            return sets->set(m, key, node);
        });
    if (!fits || taken != sets->numSets())
        return nullptr;
    store.reset();
    return sets;
}

void CFR::keepHoldemSets(std::unique_ptr<tamarin::HoldemSets> sets) {
    assert(sets != nullptr && store == nullptr); // they are the solver's only nodes
    if (sets->numSets() <= mapLimits.informationSets) {
        copyToMaps(*sets);
        return;
    }
    for (int m = 0; m < numMaps(); ++m)
        nodeMaps[m].clear();
    store = std::move(sets);
}
