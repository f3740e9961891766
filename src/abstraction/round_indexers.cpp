#include "abstraction/round_indexers.h"

#include <new>

namespace tamarin {

bool initRoundIndexer(int round, hand_indexer_t* indexer) {
    const uint8_t structure[] = {2,
                                 static_cast<uint8_t>(roundBoardCards[static_cast<size_t>(round)])};
    return hand_indexer_init(round == 0 ? 1 : 2, structure, indexer);
}

RoundIndexer::RoundIndexer(int round) {
    if (!initRoundIndexer(round, &indexer_))
        throw std::bad_alloc();
}

} // namespace tamarin
