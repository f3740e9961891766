#include "response/finished_flops.h"

#include "support/file.h"
#include "support/fnv.h"
#include "support/split_mix.h"
#include "support/word_checksum.h"

#include <array>
#include <cassert>
#include <cstring>

namespace tamarin {

namespace {

constexpr uint32_t newest = 2;
constexpr uint32_t withoutLater = 1;

struct Head {
    std::array<char, 8> magic{'t', 'm', 'r', 'n', 'f', 'l', 'o', 'p'};
    uint32_t version = newest;
    uint32_t byteOrder = 0x01020304;
    uint64_t fingerprint = 0;
    uint64_t size = 0;

    bool sameFormat(const Head& other) const {
        return magic == other.magic && (version == newest || version == withoutLater) &&
               byteOrder == other.byteOrder && size == other.size;
    }
};
static_assert(sizeof(Head) == 32);

uint64_t checksumOf(std::string_view bytes) {
    WordChecksum checksum;
    checksum.add(std::as_bytes(std::span(bytes.data(), bytes.size())));
    return checksum.value();
}

// All that a file holds, in its order.
template <class Values>
auto seriesOf(Values& values) {
    std::vector<decltype(values.best.data())> all;
    for (auto* of : {&values.best, &values.value})
        for (auto& seat : *of)
            all.push_back(&seat);
    for (auto& seat : values.later)
        for (auto& later : seat)
            all.push_back(&later);
    return all;
}

// From bytes that hold so many for each of them.
void fill(FlopValues& values, size_t size, const char* at) {
    for (auto* const series : seriesOf(values)) {
        series->resize(size);
        std::memcpy(series->data(), at, size * sizeof(double));
        at += size * sizeof(double);
    }
}

} // namespace

uint64_t fingerprintOf(const MeasuredGame& game) {
    Fnv1a hash;
    hash.add(std::string_view(gameAsText(game.game)));
    const auto& nodes = game.tree.nodes();
    for (size_t n = 0; n < nodes.size(); ++n)
        for (size_t c = 0; c < game.strategy.numClasses(nodes[n].player, nodes[n].round); ++c)
            for (const double share : game.strategy.shares(static_cast<int32_t>(n), c))
                hash.add(share);
    constexpr int hands = 500; // a round and seat
    SplitMix random(71);
    for (int round = 0; round < game.game.numRounds; ++round)
        for (int hand = 0; hand < hands; ++hand) {
            std::vector<uint8_t> left = game.deck.cards();
            std::vector<uint8_t> cards;
            for (int count = 2 + sumBoardCards(&game.game, round); count > 0; --count) {
                const auto place = random.below(static_cast<uint32_t>(left.size()));
                cards.push_back(left[place]);
                left.erase(left.begin() + place);
            }
            for (int seat = 0; seat < 2; ++seat)
                hash.add(game.strategy.classOf(seat, round, cards));
        }
    return hash.value();
}

std::string nameOfFlop(const PublicBoard& flop) {
    std::string name;
    for (const uint8_t card : flop.cards) {
        name += rankChars[card / MAX_SUITS];
        name += suitChars[card % MAX_SUITS];
    }
    return name;
}

FinishedFlops::FinishedFlops(std::string folder, const MeasuredGame& game)
    : folder_(std::move(folder)), fingerprint_(fingerprintOf(game)),
      size_(game.rounds.entries().size() * game.deck.numHandClasses()),
      later_(static_cast<size_t>(game.rounds.last()) - 1) {}

std::string FinishedFlops::pathOf(const PublicBoard& flop) const {
    return folder_ + "/" + nameOfFlop(flop);
}

Result<std::optional<FlopValues>> FinishedFlops::read(const PublicBoard& flop) const {
    const std::string path = pathOf(flop);
    struct stat status {};
    if (systemFiles().stat(path.c_str(), &status) != 0)
        return std::optional<FlopValues>();
    const auto bytes = readWholeFile(path);
    if (!bytes)
        return Error{bytes.error()};
    const std::string_view all = *bytes;
    Head expected;
    expected.size = size_;
    Head head;
    if (all.size() < sizeof head)
        return std::optional<FlopValues>();
    std::memcpy(&head, all.data(), sizeof head);
    const size_t later = head.version == withoutLater ? 0 : later_;
    const size_t checked = sizeof head + (4 + 2 * later) * size_ * sizeof(double);
    uint64_t checksum = 0;
    if (!head.sameFormat(expected) || all.size() != checked + sizeof checksum)
        return std::optional<FlopValues>();
    std::memcpy(&checksum, all.data() + checked, sizeof checksum);
    if (checksum != checksumOf(all.substr(0, checked)))
        return std::optional<FlopValues>();
    if (head.fingerprint != fingerprint_)
        return Error{folder_ +
                     " holds flops of another strategy, or of other tables: delete it, or "
                     "name another folder with --finished"};
    FlopValues values;
    for (auto& seat : values.later)
        seat.resize(later);
    fill(values, size_, all.data() + sizeof head);
    return std::optional(std::move(values));
}

Status FinishedFlops::write(const PublicBoard& flop, const FlopValues& values) const {
    if (Status made = makeDirectories(folder_); !made)
        return made;
    Head head;
    head.fingerprint = fingerprint_;
    head.size = size_;
    std::string bytes(reinterpret_cast<const char*>(&head), sizeof head);
    assert(values.later[0].size() == later_ && values.later[1].size() == later_);
    for (const auto* const series : seriesOf(values))
        bytes.append(reinterpret_cast<const char*>(series->data()), size_ * sizeof(double));
    const uint64_t checksum = checksumOf(bytes);
    bytes.append(reinterpret_cast<const char*>(&checksum), sizeof checksum);
    return writeWholeFile(pathOf(flop), bytes);
}

} // namespace tamarin
