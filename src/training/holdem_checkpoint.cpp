// Checkpoints of hold'em training. Everything is native little-endian:
//
//   bytes   field
//   8       "tmrnhold"
//   4       version, 2
//   4       length of the configuration text, L
//   L       the configuration: the game's definition, the algorithm, the seed, the block, the
//   batch,
//           the fingerprint of the buckets
//   8       deals walked
//   8       number of information sets, S
//   48 S    SetNumbers
//   8       checksum of all bytes before it, mixed word by word
//
// Three-player limit hold'em has 4.7 GB of numbers, so that they are written from and read into
// their place, and the checksum runs at memory speed.
#include "holdem/deals.h"
#include "training/holdem_trainer.h"

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <cstring>

namespace tamarin {

namespace {

constexpr char magic[8] = {'t', 'm', 'r', 'n', 'h', 'o', 'l', 'd'};
constexpr uint32_t version = 2;
constexpr size_t pieceSize = size_t{16} << 20U;

static_assert(sizeof(SetNumbers) == 48);

// A 64-bit checksum over whole words, four chains at a time; the last bytes count as a padded word.
// Any changed bit changes a chain for good, since every step is a bijection of it.
class Checksum {
public:
    void add(const void* data, size_t size) {
        const auto* bytes = static_cast<const unsigned char*>(data);
        for (size_t at = 0; at < size; at += sizeof(uint64_t)) {
            uint64_t word = 0;
            std::memcpy(&word, bytes + at, std::min(sizeof word, size - at));
            uint64_t& chain = chains_[next_];
            chain = std::rotl((chain ^ word) * 0x9E3779B97F4A7C15U, 29);
            next_ = (next_ + 1) % std::size(chains_);
        }
        length_ += size;
    }
    uint64_t value() const {
        uint64_t sum = length_;
        for (const uint64_t chain : chains_)
            sum = std::rotl((sum ^ chain) * 0xD6E8FEB86659FD93U, 31);
        return sum;
    }

private:
    uint64_t chains_[4] = {1, 2, 3, 4};
    size_t next_ = 0;
    uint64_t length_ = 0;
};

std::string configText(const Game& game, const HoldemBuckets& buckets,
                       const HoldemTrainerConfig& config) {
    char hex[17];
    std::snprintf(hex, sizeof hex, "%016llx",
                  static_cast<unsigned long long>(fingerprintOf(game, buckets)));
    return gameAsText(game) + "algorithm = " + algorithmName(config.algorithm) +
           "\nseed = " + std::to_string(config.seed) + "\nblock = " + std::to_string(config.block) +
           "\nbatch = " + std::to_string(config.batch) + "\nbuckets = " + hex + "\n";
}

// The first line in which two configurations differ, for the refusal.
std::string difference(const std::string& there, const std::string& here) {
    size_t start = 0;
    for (size_t i = 0; i < there.size() && i < here.size() && there[i] == here[i]; ++i)
        if (there[i] == '\n')
            start = i + 1;
    const auto line = [start](const std::string& text) {
        return "\"" + text.substr(start, text.find('\n', start) - start) + "\"";
    };
    return line(there) + " there and " + line(here) + " here";
}

} // namespace

Status HoldemTrainer::writeCheckpoint(const std::string& path, FileSystem& files) const {
    Result<AtomicFile> file = AtomicFile::create(path, files);
    if (!file)
        return Error{file.error()};
    Checksum checksum;
    const auto put = [&](const void* data, size_t size) {
        checksum.add(data, size);
        return file->write(data, size).ok();
    };
    const std::string config = configText(game_, buckets_, config_);
    const auto length = static_cast<uint32_t>(config.size());
    const uint64_t count = sets_.numSets();
    bool written = put(magic, sizeof magic) && put(&version, sizeof version) &&
                   put(&length, sizeof length) && put(config.data(), length) &&
                   put(&deals_, sizeof deals_) && put(&count, sizeof count);
    const auto* bytes = reinterpret_cast<const char*>(sets_.numbers());
    const size_t total = count * sizeof(SetNumbers);
    for (size_t at = 0; written && at < total; at += pieceSize)
        written = put(bytes + at, std::min(pieceSize, total - at));
    const uint64_t sum = checksum.value();
    // A failed write fails every later call with its message, so that commit() reports it.
    (void)(written && file->write(&sum, sizeof sum).ok());
    return file->commit();
}

Status HoldemTrainer::readCheckpoint(const std::string& path, FileSystem& files) {
    const Result<MappedFile> file = MappedFile::open(path, MappedFile::anySize, files);
    if (!file)
        return Error{file.error()};
    const std::span<const std::byte> all = file->bytes();
    size_t at = 0;
    const auto take = [&](void* data, size_t size) {
        if (all.size() - at < size)
            return false;
        std::memcpy(data, all.data() + at, size);
        at += size;
        return true;
    };
    char kind[sizeof magic];
    uint32_t madeVersion = 0;
    uint32_t length = 0;
    if (!take(kind, sizeof kind) || std::memcmp(kind, magic, sizeof magic) != 0)
        return Error{path + ": not a checkpoint of hold'em training"};
    if (!take(&madeVersion, sizeof madeVersion) || madeVersion != version) {
        return Error{path + ": made by another version of this program, format " +
                     std::to_string(madeVersion)};
    }
    if (!take(&length, sizeof length) || all.size() - at < length)
        return Error{path + ": cut short, it has " + std::to_string(all.size()) + " bytes"};
    std::string made(length, '\0');
    take(made.data(), length);
    const std::string wanted = configText(game_, buckets_, config_);
    if (made != wanted)
        return Error{path + ": made with another configuration: " + difference(made, wanted)};
    uint64_t deals = 0;
    uint64_t count = 0;
    uint64_t sum = 0;
    const size_t total = sets_.numSets() * sizeof(SetNumbers);
    if (!take(&deals, sizeof deals) || !take(&count, sizeof count) || count != sets_.numSets() ||
        all.size() - at != total + sizeof sum) {
        return Error{path + ": its numbers do not fit its " + std::to_string(all.size()) +
                     " bytes"};
    }
    const size_t numbersAt = at;
    at += total;
    take(&sum, sizeof sum);
    Checksum checksum;
    checksum.add(magic, sizeof magic);
    checksum.add(&madeVersion, sizeof madeVersion);
    checksum.add(&length, sizeof length);
    checksum.add(made.data(), length);
    checksum.add(&deals, sizeof deals);
    checksum.add(&count, sizeof count);
    // Twice through the file, since numbers in use are replaced by sound ones only; the pages are
    // given back on the way, or the file would be in memory beside them.
    const auto inPieces = [&](const auto& body) {
        for (size_t done = 0; done < total; done += pieceSize) {
            body(done, std::min(pieceSize, total - done));
            file->forgetPages();
        }
    };
    inPieces([&](size_t done, size_t size) { checksum.add(all.data() + numbersAt + done, size); });
    if (checksum.value() != sum)
        return Error{path + ": damaged, its checksum does not fit"};
    auto* numbers = reinterpret_cast<std::byte*>(sets_.numbers());
    inPieces([&](size_t done, size_t size) {
        std::memcpy(numbers + done, all.data() + numbersAt + done, size);
    });
    deals_ = deals;
    return {};
}

} // namespace tamarin
