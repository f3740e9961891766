#include "toolbox/round_argument.h"

#include "abstraction/round_indexers.h"
#include "abstraction/table_names.h"
#include "toolbox/command.h"

namespace tamarin {

int readRound(const std::string& text) {
    for (size_t round = 0; round < holdemRounds; ++round)
        if (text == roundFileNames[round] || text == roundNames[round] ||
            text == std::to_string(round))
            return static_cast<int>(round);
    throw UsageError(fmt::format(
        "there is no round \"{}\"; they are 0 to 3, or preflop, flop, turn, river", text));
}

} // namespace tamarin
