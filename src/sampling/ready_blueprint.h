// A menu's blueprint with the card abstraction that it names: all that is needed to play it.
#pragma once

#include "clustering/card_abstraction.h"
#include "sampling/menu_blueprint.h"
#include "sampling/seat_buckets.h"
#include "support/result.h"

#include <memory>
#include <string>
#include <utility>

namespace tamarin {

class ReadyBlueprint {
public:
    // The file with its card abstraction below lookup/ of the directory, every byte of both looked
    // at. Refuses what MenuBlueprint::open() refuses, and an abstraction that is missing, damaged
    // or another one. The game has hold'em's cards.
    static Result<std::unique_ptr<ReadyBlueprint>>
    open(const std::string& path, const std::string& directory, const Game& game);

    const MenuBlueprint& blueprint() const { return blueprint_; }
    const SeatBuckets& buckets() const { return buckets_; }

private:
    ReadyBlueprint(MenuBlueprint blueprint, CardAbstraction abstraction)
        : blueprint_(std::move(blueprint)), abstraction_(std::move(abstraction)),
          buckets_(abstraction_) {}

    MenuBlueprint blueprint_;
    CardAbstraction abstraction_;
    AbstractionSeatBuckets buckets_;
};

} // namespace tamarin
