// A playing directory with a blueprint of a menu's tree, or of a limit game for three that is small
// enough to be whole, over the card abstraction of blueprint_directory.h.
#pragma once

#include "driver/blueprint_directory.h"
#include "sampling/menu_blueprint.h"

#include <functional>
#include <optional>
#include <string>

namespace tamarin::test {

inline const std::string noLimitGame = "holdem.nolimit.2p.reverse_blinds.game";
inline const std::string noLimitBlueprint = "strategies/holdem.nolimit.2p/blueprint";
inline const std::string threeGame = "holdem.limit.3p.game";
inline const std::string threeBlueprint = "strategies/holdem.limit.3p/blueprint";

class MenuBlueprintDirectory : public CardsDirectory {
public:
    static constexpr uint64_t iterations = 6400;

    // A weight of each edge of a node.
    using Weigh = std::function<int32_t(int32_t node, size_t bucket, size_t edge)>;

    // An empty menu: limit for three, with one raise a round, as the game's definition then says.
    MenuBlueprintDirectory(const std::string& menu, const std::vector<KnownHand>& known,
                           const Weigh& weigh)
        : CardsDirectory(known), game_(gameOf(menu)) {
        const auto parsed = BettingMenu::parse(menu, "menu");
        const MenuTree tree = menu.empty() ? MenuTree(*game_) : MenuTree(*game_, *parsed);
        MenuSets sets(tree, game_->numPlayers, counts);
        for (size_t n = 0; n < tree.nodes().size(); ++n)
            for (size_t bucket = 0; bucket < counts[tree.nodes()[n].round]; ++bucket)
                for (size_t edge = 0; edge < tree.nodes()[n].numEdges; ++edge)
                    sets.sums()[sets.placeOf(tree.nodes()[n], bucket) + edge] =
                        weigh(static_cast<int32_t>(n), bucket, edge);
        const std::string& path = menu.empty() ? threeBlueprint : noLimitBlueprint;
        std::filesystem::create_directories(std::filesystem::path(path).parent_path());
        const MenuOrigin origin{{hashOfGame(*game_),
                                 "small",
                                 hashOfBuckets(description()),
                                 {counts.begin(), counts.end()},
                                 1,
                                 iterations},
                                menu.empty() ? "" : parsed->text(),
                                {}};
        EXPECT_TRUE(writeMenuBlueprint(path, sets, origin).ok());
    }

    const Game& game() const { return *game_; }

private:
    static GamePtr gameOf(const std::string& menu) {
        if (!menu.empty())
            return readDefinitionFile(noLimitGame.c_str());
        std::string text = read(threeGame);
        text.replace(text.find("3 4 4 4"), 7, "1 1 1 1");
        write(threeGame, text);
        return readDefinitionFile(threeGame.c_str());
    }

    GamePtr game_;
};

} // namespace tamarin::test
