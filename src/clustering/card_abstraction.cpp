#include "clustering/card_abstraction.h"

#include "support/word_checksum.h"

#include <algorithm>

namespace tamarin {

namespace {

std::string bucketFile(const std::string& folder, size_t round) {
    return folder + "/" + bucketFileNames[round];
}

// Bytes of the file that are looked at together.
constexpr size_t pieceBuckets = size_t{1} << 20U;

// Many at a time, which std::max_element(), that says where it is, does not.
uint16_t largestOf(std::span<const uint16_t> buckets) {
    uint16_t largest = 0;
    for (const uint16_t bucket : buckets)
        largest = std::max(largest, bucket);
    return largest;
}

// Every bucket of the file and their checksum.
Status checkBuckets(const std::string& path, const MappedFile& file,
                    const RoundDescription& description) {
    const std::span<const uint16_t> buckets = file.as<uint16_t>();
    WordChecksum checksum;
    for (size_t begin = 0; begin < buckets.size(); begin += pieceBuckets) {
        const auto piece = buckets.subspan(begin, std::min(pieceBuckets, buckets.size() - begin));
        checksum.add(std::as_bytes(piece));
        if (const uint16_t largest = largestOf(piece); largest >= description.buckets) {
            const auto place = std::ranges::find(piece, largest) - piece.begin();
            return Error{path + ": damaged, hand " +
                         std::to_string(begin + static_cast<size_t>(place)) + " has bucket " +
                         std::to_string(largest) + " of " + std::to_string(description.buckets)};
        }
    }
    file.forgetPages();
    if (checksum.value() != description.checksum)
        return Error{path + ": damaged, or of another abstraction: its checksum is not the one "
                            "that the file beside it holds"};
    return {};
}

} // namespace

Result<CardAbstraction> CardAbstraction::open(const std::string& directory, const std::string& name,
                                              Check check, const HandCounts& hands) {
    if (const Status good = checkAbstractionName(name); !good)
        return Error{good.error()};
    const std::string folder = abstractionFolder(directory, name);
    const std::string path = folder + "/" + descriptionFileName;
    Result<AbstractionDescription> description = readDescription(path);
    if (!description)
        return Error{description.error()};
    CardAbstraction opened;
    opened.description_ = std::move(*description);
    for (size_t round = 0; round < hands.size(); ++round) {
        const RoundDescription& wanted = opened.description_.rounds[round];
        if (wanted.hands != hands[round])
            return Error{path + ": has " + std::to_string(wanted.hands) + " hands on the " +
                         roundNames[round] + ", not " + std::to_string(hands[round])};
        const std::string file = bucketFile(folder, round);
        Result<MappedFile> mapped = MappedFile::open(file, wanted.hands * sizeof(uint16_t));
        if (!mapped)
            return Error{mapped.error()};
        if (check == Check::contents)
            if (const Status good = checkBuckets(file, *mapped, wanted); !good)
                return Error{good.error()};
        opened.files_.push_back(std::move(*mapped));
        opened.tables_[round] = opened.files_.back().as<uint16_t>();
    }
    return opened;
}

uint64_t bucketChecksum(std::span<const uint16_t> buckets) {
    WordChecksum checksum;
    checksum.add(std::as_bytes(buckets));
    return checksum.value();
}

Status writeBuckets(const std::string& folder, int round, std::span<const uint16_t> buckets,
                    RoundDescription& description) {
    Result<AtomicFile> file = AtomicFile::create(bucketFile(folder, static_cast<size_t>(round)));
    if (!file)
        return Error{file.error()};
    if (Status written = file->write(std::as_bytes(buckets)); !written)
        return written;
    if (Status committed = file->commit(); !committed)
        return committed;
    description.hands = buckets.size();
    description.checksum = bucketChecksum(buckets);
    return {};
}

Status writeAbstraction(const std::string& directory, const std::string& name,
                        AbstractionDescription description,
                        const std::array<std::span<const uint16_t>, holdemRounds>& buckets) {
    if (Status good = checkAbstractionName(name); !good)
        return good;
    const std::string folder = abstractionFolder(directory, name);
    if (Status made = makeDirectories(folder); !made)
        return made;
    for (size_t round = 0; round < buckets.size(); ++round)
        if (Status written = writeBuckets(folder, static_cast<int>(round), buckets[round],
                                          description.rounds[round]);
            !written)
            return written;
    return writeDescription(folder + "/" + descriptionFileName, description);
}

} // namespace tamarin
