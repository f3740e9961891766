// The seven-card table in memory, and its files.
//
// Ranks five to seven cards by one dependent look-up a card; see seven_card_generator.h for the
// layout and hand_value.h for the values. A table object is read-only and may be used from any
// number of threads.
#pragma once

#include "eval/seven_card_generator.h"
#include "support/result.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>

namespace tamarin {

inline constexpr char sevenCardTablePath[] = "lookup/tpt";
inline constexpr char denseRankTablePath[] = "lookup/tpt.indexes";

class SevenCardTable {
public:
    // Maps the file read-only. Refused with one line: a file that is missing, unreadable or of the
    // wrong size, one with an entry that leads outside the table, and one that does not rank a few
    // dozen sample hands as the rules do. So a table that opens may still rank some hands wrongly,
    // but no hand leads outside it.
    // Reads the whole file: some 30 ms once it is in memory.
    static Result<SevenCardTable> open(const std::string& path = sevenCardTablePath);

    // Computes the table in memory (124 MiB, under a second).
    static SevenCardTable generate(int threads = 0, const std::function<void(uint64_t)>& done = {});

    // The file if it is there and good, else a computed table, with the reason on standard error.
    static SevenCardTable openOrGenerate(const std::string& path = sevenCardTablePath);

    SevenCardTable(SevenCardTable&&) noexcept;
    SevenCardTable& operator=(SevenCardTable&&) noexcept;
    ~SevenCardTable();

    std::span<const int32_t> entries() const { return {entries_, sevenCardEntries}; }
    const int32_t* data() const { return entries_; }

    // Cards are bytes 0..51, all different; neither is checked.
    uint32_t rank5(const uint8_t* cards) const { return at(walk<5>(cards)); }
    uint32_t rank6(const uint8_t* cards) const { return at(walk<6>(cards)); }
    uint32_t rank7(const uint8_t* cards) const { return walk<7>(cards); }

    // Ranks count hands of seven cards, sixteen in flight: single look-ups of random hands wait for
    // memory, which serves several at a time.
    void rankMany(const uint8_t (*hands)[7], uint32_t* values, size_t count) const;

    // Whether entries, of any contents, rank a few dozen sample hands as the rules do.
    static bool ranksSampleHands(std::span<const int32_t> entries);
    // Whether no look-up leads outside, for any cards in any order: every entry is small enough to
    // be the start of a row. Hand values are.
    static bool staysInside(std::span<const int32_t> entries);

    // Writes the entries to a file, atomically.
    Status save(const std::string& path) const;

private:
    struct Storage;
    SevenCardTable(std::unique_ptr<Storage> storage, const int32_t* entries);

    uint32_t at(uint32_t entry) const { return static_cast<uint32_t>(entries_[entry]); }

    template <int cardCount>
    uint32_t walk(const uint8_t* cards) const {
        uint32_t state = sevenCardRowEntries;
        for (int i = 0; i < cardCount; ++i)
            state = at(state + cards[i] + 1U);
        return state;
    }

    std::unique_ptr<Storage> storage_;
    const int32_t* entries_;
};

// Writes the companion table of dense ranks, atomically.
Status saveDenseRankTable(const std::string& path = denseRankTablePath);

} // namespace tamarin
