#include "sampling/menu_blueprint.h"

#include "support/word_checksum.h"

#include <algorithm>
#include <cassert>
#include <cstring>
#include <stdexcept>

namespace tamarin {

namespace {

constexpr std::string_view menuBlueprintMagic = "tmrnblue";
constexpr uint32_t menuBlueprintVersion = 2;
constexpr uint32_t menuByteOrder = 0x01020304;
constexpr uint32_t noOwnSeat = 0xffffffff;
constexpr size_t partsTogether = size_t{1} << 20U; // under one checksum
constexpr size_t longestName = 63;

struct MenuHead {
    char magic[8];
    uint32_t version;
    uint32_t byteOrder;
    uint64_t game;
    uint64_t abstraction;
    char name[longestName + 1];
    uint64_t seed;
    uint64_t iterations;
    uint64_t nodes;
    uint32_t buckets[MAX_ROUNDS];
    uint32_t seats;
    uint32_t ownSeat;
    uint32_t edges;
    uint32_t menuBytes;
    uint64_t menuHash;
    uint64_t bytes;
};
static_assert(sizeof(MenuHead) == 8 + 4 + 4 + 8 + 8 + 64 + 3 * 8 + 16 + 4 * 4 + 2 * 8);

uint64_t sumOfBytes(std::span<const std::byte> bytes) {
    WordChecksum checksum;
    checksum.add(bytes);
    return checksum.value();
}

uint64_t inWholeWords(uint64_t bytes) {
    return (bytes + 7) / 8 * 8;
}

uint64_t blocksOf(uint64_t bytes) {
    return (bytes + partsTogether - 1) / partsTogether;
}

std::span<const std::byte> partsOfBlock(std::span<const std::byte> bytes, size_t block) {
    const size_t begin = block * partsTogether;
    return bytes.subspan(begin, std::min(partsTogether, bytes.size() - begin));
}

uint32_t mostEdgesOf(const MenuTree& tree) {
    uint32_t most = 0;
    for (const MenuTree::Node& node : tree.nodes())
        most = std::max<uint32_t>(most, node.numEdges);
    return most;
}

uint64_t hashOfMenu(const std::string& text) {
    const auto menu = BettingMenu::parse(text, "menu");
    return menu ? menu->hash() : 0;
}

// As inParts() has it, without memory of its own.
void putParts(const double* shares, size_t count, uint8_t* parts) {
    std::array<double, MenuTree::mostEdges> remainders{};
    int left = 255;
    for (size_t i = 0; i < count; ++i) {
        const double exact = shares[i] * 255;
        parts[i] = static_cast<uint8_t>(exact);
        remainders[i] = exact - parts[i];
        left -= parts[i];
    }
    assert(left >= 0 && left <= static_cast<int>(count));
    for (; left > 0; --left) {
        const auto end = remainders.begin() + static_cast<std::ptrdiff_t>(count);
        const auto largest = std::max_element(remainders.begin(), end);
        ++parts[largest - remainders.begin()];
        *largest = -1;
    }
}

// visit(node's number, bucket) for all, in the order in which they lie.
template <class Visit>
void forEachSet(const MenuTree& tree, std::span<const uint32_t> buckets, const Visit& visit) {
    std::array<std::array<std::vector<int32_t>, MAX_PLAYERS>, MAX_ROUNDS> numbers;
    for (size_t n = 0; n < tree.nodes().size(); ++n)
        numbers[tree.nodes()[n].round][tree.nodes()[n].seat].push_back(static_cast<int32_t>(n));
    for (size_t round = 0; round < buckets.size(); ++round)
        for (const std::vector<int32_t>& ofSeat : numbers[round])
            for (size_t bucket = 0; bucket < buckets[round] && !ofSeat.empty(); ++bucket)
                for (const int32_t number : ofSeat)
                    visit(number, bucket);
}

std::vector<uint8_t> allPartsOf(const MenuSets& sets) {
    std::vector<uint8_t> bytes(sets.numNumbers());
    std::array<double, MenuTree::mostEdges> shares{};
    forEachSet(sets.tree(), sets.buckets(), [&](int32_t number, size_t bucket) {
        const MenuTree::Node& node = sets.tree().node(number);
        const size_t place = sets.placeOf(node, bucket);
        sets.average(place, node.numEdges, shares.data());
        putParts(shares.data(), node.numEdges, bytes.data() + place);
    });
    return bytes;
}

MenuHead headOf(const MenuSets& sets, const MenuOrigin& origin) {
    MenuHead head{};
    menuBlueprintMagic.copy(head.magic, sizeof head.magic);
    head.version = menuBlueprintVersion;
    head.byteOrder = menuByteOrder;
    head.game = origin.training.game;
    head.abstraction = origin.training.abstractionHash;
    origin.training.abstraction.copy(head.name, longestName);
    head.seed = origin.training.seed;
    head.iterations = origin.training.steps;
    head.nodes = sets.tree().nodes().size();
    std::ranges::copy(sets.buckets(), head.buckets);
    head.seats = static_cast<uint32_t>(sets.seats());
    head.ownSeat = origin.ownSeat ? static_cast<uint32_t>(*origin.ownSeat) : noOwnSeat;
    head.edges = mostEdgesOf(sets.tree());
    head.menuBytes = static_cast<uint32_t>(origin.menu.size());
    head.menuHash = hashOfMenu(origin.menu);
    head.bytes = sets.numNumbers();
    return head;
}

template <class Value>
void append(std::string& text, const Value& value) {
    text.append(reinterpret_cast<const char*>(&value), sizeof value);
}

} // namespace

bool hasMenuBlueprints(const Game& game) {
    return game.numPlayers > 2 || game.bettingRule == noLimitRule;
}

Status writeMenuBlueprint(const std::string& path, const MenuSets& sets, const MenuOrigin& origin,
                          FileSystem& files) {
    if (origin.training.abstraction.size() > longestName)
        return Error{path + ": the name of the card abstraction is longer than " +
                     std::to_string(longestName) + " bytes: " + origin.training.abstraction};
    assert(origin.menu.size() <= BettingMenu::mostBytes);
    const std::vector<uint8_t> bytes = allPartsOf(sets);
    const auto parts = std::as_bytes(std::span(bytes));
    std::string front;
    append(front, headOf(sets, origin));
    front += origin.menu;
    front.resize(sizeof(MenuHead) + inWholeWords(origin.menu.size()));
    for (size_t block = 0; block < blocksOf(bytes.size()); ++block)
        append(front, sumOfBytes(partsOfBlock(parts, block)));
    append(front, sumOfBytes(std::as_bytes(std::span(front))));

    Result<AtomicFile> file = AtomicFile::create(path, files);
    if (!file)
        return Error{file.error()};
    if (Status written = file->write(front); !written)
        return written;
    if (Status written = file->write(parts); !written)
        return written;
    return file->commit();
}

Result<MenuBlueprint> MenuBlueprint::open(const std::string& path, const Game& game,
                                          FileSystem& files) {
    Result<MappedFile> mapped = MappedFile::open(path, MappedFile::anySize, files);
    if (!mapped)
        return Error{mapped.error()};
    MenuBlueprint file(path, std::move(*mapped));
    if (Status read = file.readHead(game); !read)
        return Error{read.error()};
    if (Status sound = file.checkSums(); !sound)
        return Error{sound.error()};
    file.file_.forgetPages(); // whoever looks up a few probabilities needs few of them
    return file;
}

Status MenuBlueprint::readHead(const Game& game) {
    const std::span<const std::byte> all = file_.bytes();
    MenuHead head{};
    std::copy_n(all.data(), std::min(sizeof head, all.size()), reinterpret_cast<std::byte*>(&head));
    if (std::string_view(head.magic, sizeof head.magic) != menuBlueprintMagic)
        return error("not a blueprint");
    const std::string bytes = "it has " + std::to_string(all.size()) + " bytes";
    if (all.size() >= 16 && head.byteOrder != menuByteOrder)
        return error("made on a machine of another byte order, or damaged");
    if (all.size() >= 16 && head.version != menuBlueprintVersion)
        return error("format " + std::to_string(head.version) + ", not " +
                     std::to_string(menuBlueprintVersion) +
                     (head.version == 1 ? ": a blueprint of limit for two"
                                        : ": made by another version of this program"));
    if (all.size() < sizeof head + sizeof(uint64_t))
        return error("cut short, " + bytes);
    const uint64_t room = all.size() - sizeof head - sizeof(uint64_t);
    const uint64_t menu = inWholeWords(head.menuBytes);
    if (head.menuBytes > BettingMenu::mostBytes || head.bytes > room ||
        menu + blocksOf(head.bytes) * sizeof(uint64_t) != room - head.bytes)
        return error("damaged or cut short, " + bytes);
    std::vector<uint64_t> checksums(blocksOf(head.bytes));
    const size_t front = sizeof head + menu + checksums.size() * sizeof checksums[0];
    uint64_t checksum = 0;
    std::memcpy(&checksum, all.data() + front, sizeof checksum);
    if (checksum != sumOfBytes(all.first(front)))
        return error("damaged, its head does not fit its checksum");
    if (head.game != hashOfGame(game))
        return error("made for another game than this one");
    if (head.seats != game.numPlayers || (head.ownSeat != noOwnSeat && head.ownSeat >= head.seats))
        return error("made for " + std::to_string(head.seats) + " seats or a seat beyond them");
    std::memcpy(checksums.data(), all.data() + sizeof head + menu,
                checksums.size() * sizeof checksums[0]);
    parts_ = all.subspan(front + sizeof checksum);
    head.name[longestName] = 0;
    origin_.training = {head.game,        head.name,
                        head.abstraction, {head.buckets, head.buckets + game.numRounds},
                        head.seed,        head.iterations};
    if (head.ownSeat != noOwnSeat)
        origin_.ownSeat = static_cast<int>(head.ownSeat);
    const std::string text(reinterpret_cast<const char*>(all.data() + sizeof head), head.menuBytes);
    if (Status read = readTree(game, text, head.menuHash); !read)
        return read;
    if (Status fits = checkSize(head.bytes, head.nodes, head.edges); !fits)
        return fits;
    return checkBlocks(checksums);
}

Status MenuBlueprint::readTree(const Game& game, const std::string& text, uint64_t hash) {
    origin_.menu = text;
    if (text.empty() != (game.bettingRule == limitRule))
        return error(text.empty() ? "has no menu, and the game is no-limit"
                                  : "has a menu, and the game is limit");
    try {
        if (text.empty()) {
            tree_ = std::make_unique<MenuTree>(game);
            return {};
        }
        const auto menu = BettingMenu::parse(text, path_ + ", its menu");
        if (!menu)
            return Error{menu.error()};
        if (menu->hash() != hash)
            return error("its menu does not fit its hash");
        tree_ = std::make_unique<MenuTree>(game, *menu, origin_.ownSeat);
    } catch (const std::length_error& tooLarge) {
        return error(tooLarge.what());
    }
    return {};
}

Status MenuBlueprint::checkSize(uint64_t bytes, uint64_t nodes, uint32_t edges) {
    if (nodes != tree_->nodes().size() || edges != mostEdgesOf(*tree_))
        return error("made for a betting tree of " + std::to_string(nodes) + " nodes, not " +
                     std::to_string(tree_->nodes().size()));
    uint64_t wanted = 0;
    for (size_t round = 0; round < origin_.training.buckets.size(); ++round)
        for (size_t seat = 0; seat < MAX_PLAYERS; ++seat) {
            starts_[round][seat] = wanted;
            wanted += uint64_t{origin_.training.buckets[round]} *
                      tree_->numbersOf(static_cast<int>(round), static_cast<int>(seat));
        }
    if (wanted != bytes)
        return error("has " + std::to_string(bytes) + " bytes of probabilities, and its buckets " +
                     "take " + std::to_string(wanted));
    return {};
}

Status MenuBlueprint::checkBlocks(std::span<const uint64_t> checksums) const {
    for (size_t block = 0; block < checksums.size(); ++block)
        if (checksums[block] != sumOfBytes(partsOfBlock(parts_, block)))
            return error("damaged, block " + std::to_string(block + 1) + " of " +
                         std::to_string(checksums.size()) + " does not fit its checksum");
    return {};
}

// A writer that errs has sound checksums.
Status MenuBlueprint::checkSums() const {
    std::optional<std::string> wrong;
    forEachSet(*tree_, origin_.training.buckets, [&](int32_t number, size_t bucket) {
        unsigned sum = 0;
        for (const uint8_t part : parts(number, bucket))
            sum += part;
        if (sum != 255 && !wrong)
            wrong = "the probabilities of bucket " + std::to_string(bucket) + " at node " +
                    std::to_string(number) + " add up to " + std::to_string(sum) + " parts of 255";
    });
    return wrong ? Status(error(*wrong)) : Status();
}

Status MenuBlueprint::madeOver(const AbstractionDescription& description) const {
    const BucketCounts counts = description.counts();
    if (hashOfBuckets(description) != origin_.training.abstractionHash ||
        !std::ranges::equal(counts, origin_.training.buckets))
        return error("trained over other buckets than those that the card abstraction " +
                     origin_.training.abstraction + " has now");
    return {};
}

std::span<const uint8_t> MenuBlueprint::parts(int32_t number, size_t bucket) const {
    const MenuTree::Node& node = tree_->node(number);
    assert(bucket < origin_.training.buckets[node.round]);
    const uint64_t place = starts_[node.round][node.seat] +
                           bucket * tree_->numbersOf(node.round, node.seat) + node.numbers;
    return {reinterpret_cast<const uint8_t*>(parts_.data()) + place, node.numEdges};
}

} // namespace tamarin
