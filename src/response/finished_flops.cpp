#include "response/finished_flops.h"

#include "support/file.h"
#include "support/fnv.h"
#include "support/split_mix.h"
#include "support/word_checksum.h"

#include <array>
#include <cstring>

namespace tamarin {

namespace {

struct Head {
    std::array<char, 8> magic{'t', 'm', 'r', 'n', 'f', 'l', 'o', 'p'};
    uint32_t version = 1;
    uint32_t byteOrder = 0x01020304;
    uint64_t fingerprint = 0;
    uint64_t size = 0;

    bool sameFormat(const Head& other) const {
        return magic == other.magic && version == other.version && byteOrder == other.byteOrder &&
               size == other.size;
    }
};
static_assert(sizeof(Head) == 32);

uint64_t checksumOf(std::string_view bytes) {
    WordChecksum checksum;
    checksum.add(std::as_bytes(std::span(bytes.data(), bytes.size())));
    return checksum.value();
}

void append(std::string& bytes, const std::vector<double>& numbers) {
    bytes.append(reinterpret_cast<const char*>(numbers.data()), numbers.size() * sizeof(double));
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
      size_(game.rounds.entries().size() * game.deck.numHandClasses()) {}

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
    Head expected;
    expected.size = size_;
    const size_t numbers = 4 * size_ * sizeof(double);
    if (bytes->size() != sizeof(Head) + numbers + sizeof(uint64_t))
        return std::optional<FlopValues>();
    Head head;
    std::memcpy(&head, bytes->data(), sizeof head);
    uint64_t checksum = 0;
    std::memcpy(&checksum, bytes->data() + sizeof(Head) + numbers, sizeof checksum);
    if (!head.sameFormat(expected) ||
        checksum != checksumOf(std::string_view(*bytes).substr(0, sizeof(Head) + numbers)))
        return std::optional<FlopValues>();
    if (head.fingerprint != fingerprint_)
        return Error{folder_ +
                     " holds flops of another strategy, or of other tables: delete it, or "
                     "name another folder with --finished"};
    FlopValues values;
    const char* at = bytes->data() + sizeof(Head);
    for (auto* of : {&values.best, &values.value})
        for (auto& seat : *of) {
            seat.resize(size_);
            std::memcpy(seat.data(), at, size_ * sizeof(double));
            at += size_ * sizeof(double);
        }
    return std::optional(std::move(values));
}

Status FinishedFlops::write(const PublicBoard& flop, const FlopValues& values) const {
    if (Status made = makeDirectories(folder_); !made)
        return made;
    Head head;
    head.fingerprint = fingerprint_;
    head.size = size_;
    std::string bytes(reinterpret_cast<const char*>(&head), sizeof head);
    for (const auto* of : {&values.best, &values.value})
        for (const auto& seat : *of)
            append(bytes, seat);
    const uint64_t checksum = checksumOf(bytes);
    bytes.append(reinterpret_cast<const char*>(&checksum), sizeof checksum);
    return writeWholeFile(pathOf(flop), bytes);
}

} // namespace tamarin
