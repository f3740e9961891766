#include "eval/seven_card_table.h"

#include "eval/hand_value.h"
#include "support/file.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <optional>
#include <sys/mman.h>
#include <utility>

namespace tamarin {
namespace {

// 2 MiB pages: a random look-up otherwise misses the translation cache as well as the data cache.
constexpr size_t hugePage = size_t{2} << 20;

struct FreeMemory {
    void operator()(int32_t* memory) const { std::free(memory); }
};
using Entries = std::unique_ptr<int32_t, FreeMemory>;

Entries allocateEntries() {
    const size_t bytes = (sevenCardBytes + hugePage - 1) / hugePage * hugePage;
    Entries entries(static_cast<int32_t*>(std::aligned_alloc(hugePage, bytes)));
    if (!entries)
        throw std::bad_alloc();
    madvise(entries.get(), bytes, MADV_HUGEPAGE); // a wish; refusal costs speed alone
    return entries;
}

} // namespace

struct SevenCardTable::Storage {
    std::optional<MappedFile> file;
    Entries memory;
};

SevenCardTable::SevenCardTable(std::unique_ptr<Storage> storage, const int32_t* entries)
    : storage_(std::move(storage)), entries_(entries) {}
SevenCardTable::SevenCardTable(SevenCardTable&&) noexcept = default;
SevenCardTable& SevenCardTable::operator=(SevenCardTable&&) noexcept = default;
SevenCardTable::~SevenCardTable() = default;

Result<SevenCardTable> SevenCardTable::open(const std::string& path) {
    Result<MappedFile> file = MappedFile::open(path, sevenCardBytes);
    if (!file)
        return Error{file.error() + "; \"tamarin tables --only tpt\" makes the seven-card table"};
    const std::span<const int32_t> entries = file->as<int32_t>();
    if (!staysInside(entries) || !ranksSampleHands(entries))
        return Error{path + " does not rank hands as the rules do; remove it, and \"tamarin tables "
                            "--only tpt\" makes it anew"};
    auto storage = std::make_unique<Storage>();
    storage->file.emplace(std::move(*file));
    return SevenCardTable(std::move(storage), entries.data());
}

SevenCardTable SevenCardTable::generate(int threads, const std::function<void(uint64_t)>& done) {
    auto storage = std::make_unique<Storage>();
    storage->memory = allocateEntries();
    generateSevenCardTable({storage->memory.get(), sevenCardEntries}, threads, done);
    const int32_t* entries = storage->memory.get();
    return SevenCardTable(std::move(storage), entries);
}

SevenCardTable SevenCardTable::openOrGenerate(const std::string& path) {
    Result<SevenCardTable> opened = open(path);
    if (opened)
        return std::move(*opened);
    std::fprintf(stderr, "WARNING: %s; computing it in memory\n", opened.error().c_str());
    return generate();
}

// A state's row reaches 52 entries beyond it. Negative entries are large as unsigned ones.
bool SevenCardTable::staysInside(std::span<const int32_t> entries) {
    uint32_t greatest = 0;
    for (const int32_t entry : entries)
        greatest = std::max(greatest, static_cast<uint32_t>(entry));
    return entries.size() >= sevenCardRowEntries &&
           greatest <= entries.size() - sevenCardRowEntries;
}

// Every step is checked against the table's bounds, so that a file of any contents can be asked.
bool SevenCardTable::ranksSampleHands(std::span<const int32_t> entries) {
    uint32_t draw = 12345; // a small linear congruential generator: always the same samples
    for (int sample = 0; sample < 64; ++sample) {
        CardSet cards = 0;
        size_t state = sevenCardRowEntries;
        for (int held = 0; held < 7;) {
            draw = draw * 1664525 + 1013904223;
            const auto card = static_cast<uint8_t>((draw >> 16) % 52);
            if ((cards & cardBit(card)) != 0)
                continue;
            if (state + 52 >= entries.size())
                return false;
            cards |= cardBit(card);
            const int32_t next = entries[state + card + 1];
            if (next <= 0)
                return false;
            state = static_cast<size_t>(next);
            ++held;
        }
        if (state != handValueOf(cards))
            return false;
    }
    return true;
}

void SevenCardTable::rankMany(const uint8_t (*hands)[7], uint32_t* values, size_t count) const {
    constexpr size_t inFlight = 16; // measured best of 1, 4, 8, 16, 32 and 64
    size_t i = 0;
    for (; i + inFlight <= count; i += inFlight) {
        uint32_t state[inFlight];
        for (uint32_t& s : state)
            s = sevenCardRowEntries;
        for (int card = 0; card < 7; ++card)
            for (size_t hand = 0; hand < inFlight; ++hand)
                state[hand] = at(state[hand] + hands[i + hand][card] + 1U);
        for (size_t hand = 0; hand < inFlight; ++hand)
            values[i + hand] = state[hand];
    }
    for (; i < count; ++i)
        values[i] = rank7(hands[i]);
}

Status SevenCardTable::save(const std::string& path) const {
    Result<AtomicFile> file = AtomicFile::create(path);
    if (!file)
        return Error{file.error()};
    if (Status written = file->write(std::as_bytes(entries())); !written)
        return written;
    return file->commit();
}

Status saveDenseRankTable(const std::string& path) {
    const std::vector<int32_t> dense = makeDenseRankTable();
    Result<AtomicFile> file = AtomicFile::create(path);
    if (!file)
        return Error{file.error()};
    if (Status written = file->write(std::as_bytes(std::span(dense))); !written)
        return written;
    return file->commit();
}

} // namespace tamarin
