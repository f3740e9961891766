#include "support/word_checksum.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace tamarin {

void WordChecksum::add(std::span<const std::byte> bytes) {
    const auto mix = [](uint64_t& chain, uint64_t word) {
        chain = std::rotl((chain ^ word) * 0x9E3779B97F4A7C15U, 29);
    };
    size_t at = 0;
    const auto addWord = [&] {
        uint64_t word = 0;
        std::memcpy(&word, bytes.data() + at, std::min(sizeof word, bytes.size() - at));
        mix(chains_[next_], word);
        next_ = (next_ + 1) % chains_.size();
        at += sizeof word;
    };
    while (next_ != 0 && at < bytes.size())
        addWord();
    auto chains = chains_; // four of them in registers: most of the time of a large checkpoint
    for (; at + sizeof chains <= bytes.size(); at += sizeof chains)
        for (size_t i = 0; i < chains.size(); ++i) {
            uint64_t word = 0;
            std::memcpy(&word, bytes.data() + at + i * sizeof word, sizeof word);
            mix(chains[i], word);
        }
    chains_ = chains;
    while (at < bytes.size())
        addWord();
    length_ += bytes.size();
}

uint64_t WordChecksum::value() const {
    uint64_t sum = length_;
    for (const uint64_t chain : chains_)
        sum = std::rotl((sum ^ chain) * 0xD6E8FEB86659FD93U, 31);
    return sum;
}

} // namespace tamarin
