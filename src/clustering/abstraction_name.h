// What a card abstraction is called, and where its files lie.
//
// 169-200-200-200 says how many buckets the rounds have, pre-flop first. The files lie in a folder
// of that name (or of one that a person chose) below lookup/ of the playing directory.
#pragma once

#include "abstraction/round_indexers.h"
#include "support/result.h"

#include <array>
#include <cstdint>
#include <string>

namespace tamarin {

using BucketCounts = std::array<uint32_t, holdemRounds>;

// A bucket is a 16-bit number, and one number is kept for hands that have none yet.
inline constexpr uint32_t mostBuckets = 65535;

enum class AbstractionMethod : uint32_t { emd, percentile };
inline constexpr std::array<const char*, 2> methodNames{"emd", "percentile"};
Result<AbstractionMethod> methodNamed(const std::string& name);

// "169-200-200-200": 1 to 65,535 buckets a round, 1 to 169 pre-flop.
Result<BucketCounts> readBucketCounts(const std::string& text);

// The name that an abstraction has by itself: its counts, and "-percentile" where it was cut so.
std::string abstractionName(const BucketCounts& counts, AbstractionMethod method);

// Letters, digits, '-', '_' and '.', and no '.' first: one folder below lookup/, whatever it is
// called.
Status checkAbstractionName(const std::string& name);

std::string abstractionFolder(const std::string& directory, const std::string& name);
// The files of that folder.
inline constexpr std::array<const char*, holdemRounds> bucketFileNames{"preflop", "flop", "turn",
                                                                       "river"};
inline constexpr char descriptionFileName[] = "abstraction";

} // namespace tamarin
