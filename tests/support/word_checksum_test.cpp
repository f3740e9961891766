#include "support/word_checksum.h"

#include <set>
#include <string>

#include <gtest/gtest.h>

namespace tamarin::test {
namespace {

uint64_t checksumOf(const std::string& text) {
    WordChecksum checksum;
    checksum.add(std::as_bytes(std::span(text)));
    return checksum.value();
}

std::string someBytes(size_t size) {
    std::string bytes(size, '\0');
    for (size_t i = 0; i < size; ++i)
        bytes[i] = static_cast<char>(i * 37 + i / 7);
    return bytes;
}

TEST(WordChecksum, SeesEveryChangedByteAndEveryCut) {
    const std::string bytes = someBytes(75);
    std::set<uint64_t> sums{checksumOf(bytes)};
    for (size_t i = 0; i < bytes.size(); ++i) {
        std::string changed = bytes;
        changed[i] = static_cast<char>(changed[i] ^ 4);
        sums.insert(checksumOf(changed));
        sums.insert(checksumOf(bytes.substr(0, i)));
    }
    EXPECT_EQ(sums.size(), 1 + 2 * bytes.size());
}

TEST(WordChecksum, PiecesOfWholeWordsMakeNoDifference) {
    const std::string bytes = someBytes(128);
    for (size_t cut = 0; cut <= bytes.size(); cut += 8) {
        WordChecksum pieces;
        pieces.add(std::as_bytes(std::span(bytes)).first(cut));
        pieces.add(std::as_bytes(std::span(bytes)).subspan(cut));
        EXPECT_EQ(pieces.value(), checksumOf(bytes)) << cut;
    }
}

} // namespace
} // namespace tamarin::test
