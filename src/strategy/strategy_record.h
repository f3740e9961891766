// The strategy file's layout. No header, no checksum, native (little-endian) byte order:
//
//   for each player, for each round:   4 bytes   number of nodes
//     for each node, in key order:   108 bytes   StrategyRecord
#pragma once

#include "strategy/cfr_node.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace tamarin {

#pragma pack(push, 1)
struct StrategyRecord {
    char key[60]; // the text, then zeros to the end: at most 59 characters
    double regretSum[3];
    double strategySum[3];
};
#pragma pack(pop)
static_assert(sizeof(StrategyRecord) == 108);
static_assert(offsetof(StrategyRecord, regretSum) == 60);
static_assert(offsetof(StrategyRecord, strategySum) == 84);
static_assert(std::endian::native == std::endian::little);

using StrategyCount = uint32_t;

inline CFRNode nodeOf(const StrategyRecord& record) {
    CFRNode node;
    std::memcpy(node.regretSum, record.regretSum, sizeof record.regretSum);
    std::memcpy(node.strategySum, record.strategySum, sizeof record.strategySum);
    return node;
}

} // namespace tamarin
