#include "blueprint/blueprint_file.h"

#include "support/word_checksum.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cstring>
#include <numeric>

namespace tamarin {

namespace {

constexpr std::string_view blueprintMagic = "tmrnblue";
constexpr uint32_t blueprintVersion = 1;
constexpr uint32_t byteOrderMark = 0x01020304;
constexpr size_t checkedBlock = size_t{1} << 20U;
constexpr size_t nameLength = 64;

struct BlueprintHead {
    char magic[8];
    uint32_t version;
    uint32_t byteOrder;
    uint64_t game;
    uint64_t abstraction;
    char name[nameLength];
    uint64_t seed;
    uint64_t steps;
    uint64_t nodes;
    uint32_t buckets[MAX_ROUNDS];
    uint64_t bytes;
};
static_assert(sizeof(BlueprintHead) == 8 + 4 + 4 + 8 + 8 + 64 + 3 * 8 + 16 + 8);

uint64_t checksumOf(std::span<const std::byte> bytes) {
    WordChecksum checksum;
    checksum.add(bytes);
    return checksum.value();
}

size_t allowedActions(const CompiledTree::Node& node) {
    return static_cast<size_t>(std::ranges::count_if(
        node.child, [](int32_t child) { return child != CompiledTree::noChild; }));
}

// Where each node's bytes begin, and behind the last where they end.
std::vector<uint64_t> startsOfNodes(const CompiledTree& tree, std::span<const uint32_t> buckets) {
    std::vector<uint64_t> starts{0};
    starts.reserve(tree.nodes().size() + 1);
    for (const auto& node : tree.nodes())
        starts.push_back(starts.back() + uint64_t{buckets[node.round]} * allowedActions(node));
    return starts;
}

size_t numBlocks(uint64_t bytes) {
    return static_cast<size_t>((bytes + checkedBlock - 1) / checkedBlock);
}

std::span<const std::byte> blockOf(std::span<const std::byte> bytes, size_t block) {
    const size_t begin = block * checkedBlock;
    return bytes.subspan(begin, std::min(checkedBlock, bytes.size() - begin));
}

std::vector<uint8_t> allParts(const BlueprintSets& sets) {
    std::vector<uint8_t> bytes;
    for (size_t n = 0; n < sets.tree().nodes().size(); ++n) {
        const auto& node = sets.tree().nodes()[n];
        for (size_t bucket = 0; bucket < sets.numBuckets(node.round); ++bucket) {
            const ActionShares shares = sets.average(static_cast<int32_t>(n), bucket);
            std::array<double, numAbstractedActions> allowed{};
            size_t count = 0;
            for (size_t a = 0; a < shares.size(); ++a)
                if (node.child[a] != CompiledTree::noChild)
                    allowed[count++] = shares[a];
            const auto parts = inParts(std::span(allowed).first(count));
            bytes.insert(bytes.end(), parts.begin(), parts.end());
        }
    }
    return bytes;
}

} // namespace

uint64_t hashOfGame(const Game& game) {
    const std::string text = gameAsText(game);
    return checksumOf(std::as_bytes(std::span(text)));
}

uint64_t hashOfBuckets(const AbstractionDescription& description) {
    WordChecksum checksum;
    for (const RoundDescription& round : description.rounds) {
        const std::array<uint64_t, 3> fields{round.buckets, round.hands, round.checksum};
        checksum.add(std::as_bytes(std::span(fields)));
    }
    return checksum.value();
}

std::vector<uint8_t> inParts(std::span<const double> shares) {
    constexpr int whole = 255;
    std::vector<uint8_t> parts;
    std::vector<double> remainders;
    int left = whole;
    for (const double share : shares) {
        const double exact = share * whole;
        parts.push_back(static_cast<uint8_t>(exact));
        remainders.push_back(exact - parts.back());
        left -= parts.back();
    }
    assert(left >= 0 && left <= static_cast<int>(shares.size()));
    for (; left > 0; --left) {
        const auto largest = std::ranges::max_element(remainders);
        ++parts[static_cast<size_t>(largest - remainders.begin())];
        *largest = -1;
    }
    return parts;
}

Status writeBlueprint(const std::string& path, const BlueprintSets& sets,
                      const BlueprintOrigin& origin, FileSystem& files) {
    if (origin.abstraction.size() >= nameLength)
        return Error{path + ": the name of the card abstraction is longer than " +
                     std::to_string(nameLength - 1) + " bytes: " + origin.abstraction};
    const std::vector<uint8_t> bytes = allParts(sets);
    const auto shares = std::as_bytes(std::span(bytes));
    BlueprintHead head{{},
                       blueprintVersion,
                       byteOrderMark,
                       origin.game,
                       origin.abstractionHash,
                       {},
                       origin.seed,
                       origin.steps,
                       sets.tree().nodes().size(),
                       {},
                       bytes.size()};
    blueprintMagic.copy(head.magic, sizeof head.magic);
    origin.abstraction.copy(head.name, nameLength - 1);
    assert(origin.buckets.size() <= MAX_ROUNDS);
    std::ranges::copy(origin.buckets, head.buckets);
    std::vector<uint64_t> checksums;
    for (size_t block = 0; block < numBlocks(bytes.size()); ++block)
        checksums.push_back(checksumOf(blockOf(shares, block)));
    std::string front(reinterpret_cast<const char*>(&head), sizeof head);
    front.append(reinterpret_cast<const char*>(checksums.data()),
                 checksums.size() * sizeof checksums[0]);
    const uint64_t checksum = checksumOf(std::as_bytes(std::span(front)));
    front.append(reinterpret_cast<const char*>(&checksum), sizeof checksum);

    Result<AtomicFile> file = AtomicFile::create(path, files);
    if (!file)
        return Error{file.error()};
    if (Status written = file->write(front); !written)
        return written;
    if (Status written = file->write(shares); !written)
        return written;
    return file->commit();
}

Result<uint64_t> gameOfBlueprint(const std::string& path, FileSystem& files) {
    const Result<MappedFile> mapped = MappedFile::open(path, MappedFile::anySize, files);
    if (!mapped)
        return Error{mapped.error()};
    BlueprintHead head{};
    const std::span<const std::byte> all = mapped->bytes();
    std::copy_n(all.data(), std::min(sizeof head, all.size()), reinterpret_cast<std::byte*>(&head));
    if (std::string_view(head.magic, sizeof head.magic) != blueprintMagic)
        return Error{path + ": not a blueprint"};
    return head.game;
}

Result<BlueprintFile> BlueprintFile::open(const std::string& path, const Game& game,
                                          const CompiledTree& tree, FileSystem& files) {
    Result<MappedFile> mapped = MappedFile::open(path, MappedFile::anySize, files);
    if (!mapped)
        return Error{mapped.error()};
    BlueprintFile file(path, tree, std::move(*mapped));
    if (Status read = file.readHead(game); !read)
        return Error{read.error()};
    if (Status sound = file.checkSums(); !sound)
        return Error{sound.error()};
    file.file_.forgetPages(); // whoever looks up a few probabilities needs few of them
    return file;
}

Status BlueprintFile::readHead(const Game& game) {
    const std::span<const std::byte> all = file_.bytes();
    BlueprintHead head{};
    std::copy_n(all.data(), std::min(sizeof head, all.size()), reinterpret_cast<std::byte*>(&head));
    if (std::string_view(head.magic, sizeof head.magic) != blueprintMagic)
        return error("not a blueprint");
    const std::string bytes = "it has " + std::to_string(all.size()) + " bytes";
    if (all.size() < sizeof head + sizeof(uint64_t))
        return error("cut short, " + bytes);
    if (head.byteOrder != byteOrderMark)
        return error("made on a machine of another byte order, or damaged");
    if (head.version != blueprintVersion)
        return error("made by another version of this program, format " +
                     std::to_string(head.version) + ", not " + std::to_string(blueprintVersion));
    const size_t room = all.size() - sizeof head - sizeof(uint64_t);
    if (head.bytes > room || numBlocks(head.bytes) * sizeof(uint64_t) != room - head.bytes)
        return error("damaged or cut short, " + bytes);
    std::vector<uint64_t> checksums(numBlocks(head.bytes));
    const size_t front = sizeof head + checksums.size() * sizeof checksums[0];
    uint64_t checksum = 0;
    std::memcpy(&checksum, all.data() + front, sizeof checksum);
    if (checksum != checksumOf(all.first(front)))
        return error("damaged, its head does not fit its checksum");
    if (head.game != hashOfGame(game))
        return error("made for another game than this one");
    std::memcpy(checksums.data(), all.data() + sizeof head, checksums.size() * sizeof checksums[0]);
    shares_ = all.subspan(front + sizeof checksum);
    head.name[nameLength - 1] = 0;
    origin_ = {head.game,        head.name,
               head.abstraction, std::vector<uint32_t>(head.buckets, head.buckets + game.numRounds),
               head.seed,        head.steps};
    if (Status fits = checkSize(head.bytes, head.nodes); !fits)
        return fits;
    return checkBlocks(checksums);
}

Status BlueprintFile::checkSize(uint64_t bytes, uint64_t nodes) {
    if (nodes != tree_->nodes().size())
        return error("made for a betting tree of " + std::to_string(nodes) + " nodes, not " +
                     std::to_string(tree_->nodes().size()));
    starts_ = startsOfNodes(*tree_, origin_.buckets);
    if (starts_.back() != bytes)
        return error("has " + std::to_string(bytes) + " bytes of probabilities, and its buckets " +
                     "take " + std::to_string(starts_.back()));
    return {};
}

Status BlueprintFile::checkBlocks(std::span<const uint64_t> checksums) const {
    for (size_t block = 0; block < checksums.size(); ++block)
        if (checksums[block] != checksumOf(blockOf(shares_, block)))
            return error("damaged, block " + std::to_string(block + 1) + " of " +
                         std::to_string(checksums.size()) + " does not fit its checksum");
    return {};
}

// A writer that errs has sound checksums.
Status BlueprintFile::checkSums() const {
    for (size_t n = 0; n < tree_->nodes().size(); ++n) {
        const size_t actions = allowedActions(tree_->nodes()[n]);
        for (uint64_t at = starts_[n]; at < starts_[n + 1]; at += actions) {
            unsigned sum = 0;
            for (size_t a = 0; a < actions; ++a)
                sum += std::to_integer<unsigned>(shares_[at + a]);
            if (sum != 255)
                return error("the probabilities of bucket " +
                             std::to_string((at - starts_[n]) / actions) + " at node " +
                             std::to_string(n) + " add up to " + std::to_string(sum) +
                             " parts of 255");
        }
    }
    return {};
}

Status BlueprintFile::madeOver(const AbstractionDescription& description) const {
    const BucketCounts counts = description.counts();
    if (hashOfBuckets(description) != origin_.abstractionHash ||
        !std::ranges::equal(counts, origin_.buckets))
        return error("trained over other buckets than those that the card abstraction " +
                     origin_.abstraction + " has now");
    return {};
}

ActionShares BlueprintFile::shares(int32_t number, size_t bucket) const {
    const auto n = static_cast<size_t>(number);
    const auto& node = tree_->nodes()[n];
    assert(bucket < origin_.buckets[node.round]);
    uint64_t at = starts_[n] + bucket * allowedActions(node);
    ActionShares shares{};
    for (size_t a = 0; a < shares.size(); ++a)
        if (node.child[a] != CompiledTree::noChild)
            shares[a] = std::to_integer<int>(shares_[at++]) / 255.0;
    return shares;
}

} // namespace tamarin
