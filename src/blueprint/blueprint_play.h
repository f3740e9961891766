// A blueprint as the measures take it: what it does with every hand, in the real game's terms.
#pragma once

#include "blueprint/blueprint_file.h"
#include "blueprint/hand_classes.h"
#include "clustering/card_abstraction.h"
#include "response/hand_strategy.h"

#include <string>
#include <utility>

namespace tamarin {

class BlueprintPlay : public HandStrategy {
public:
    // The file with the card abstraction that it names, below lookup/ of the directory. Refuses
    // what BlueprintFile refuses, and an abstraction that is missing, damaged or another one. The
    // tree is the game's, and must outlive the object.
    static Result<BlueprintPlay> open(const std::string& path, const std::string& directory,
                                      const Game& game, const CompiledTree& tree);

    // The abstraction is the one that the file was made over, with its contents checked.
    BlueprintPlay(BlueprintFile file, CardAbstraction abstraction)
        : file_(std::move(file)), abstraction_(std::move(abstraction)) {}

    const BlueprintOrigin& origin() const { return file_.origin(); }

    size_t numClasses(int seat, int round) const override;
    uint16_t classOf(int seat, int round, std::span<const uint8_t> cards) const override;
    ActionShares shares(int32_t node, size_t handClass) const override;

private:
    BlueprintFile file_;
    CardAbstraction abstraction_;
    HandClasses classes_;
};

} // namespace tamarin
