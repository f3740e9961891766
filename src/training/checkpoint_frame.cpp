#include "training/checkpoint_frame.h"

#include <algorithm>
#include <cassert>
#include <cstring>
#include <sstream>

namespace tamarin {

namespace {

constexpr uint32_t byteOrder = 0x01020304;
constexpr size_t pieceSize = size_t{16} << 20U;
constexpr size_t checksumSize = sizeof(uint64_t);

struct Head {
    char magic[8];
    uint32_t version;
    uint32_t byteOrder;
    uint64_t iteration;
    uint64_t configLength;
    uint64_t payloadLength;
};
static_assert(sizeof(Head) == 40);

// Calls body(piece) for one piece of the bytes after the other. pieceSize is a number of words, so
// that a checksum does not depend on the pieces.
template <class Body>
void inPieces(std::span<const std::byte> bytes, const Body& body) {
    for (size_t at = 0; at < bytes.size(); at += pieceSize)
        body(bytes.subspan(at, std::min(pieceSize, bytes.size() - at)));
}

uint64_t wordAt(std::span<const std::byte> bytes, size_t at) {
    uint64_t word = 0;
    std::memcpy(&word, bytes.data() + at, sizeof word);
    return word;
}

// "seed is 1 there and 2 here", for the first line that differs.
std::string difference(std::string_view there, std::string_view here) {
    size_t start = 0;
    for (size_t i = 0; i < there.size() && i < here.size() && there[i] == here[i]; ++i)
        if (there[i] == '\n')
            start = i + 1;
    const auto lineOf = [start](std::string_view text) {
        return std::string(text.substr(start, text.find('\n', start) - start));
    };
    const std::string made = lineOf(there);
    const std::string wanted = lineOf(here);
    const size_t value = made.find(" = ") + 3;
    if (value < 3 || wanted.compare(0, value, made, 0, value) != 0)
        return '"' + made + "\" there and \"" + wanted + "\" here";
    return made.substr(0, value - 3) + " is " + made.substr(value) + " there and " +
           wanted.substr(value) + " here";
}

} // namespace

std::string gameConfig(const Game& game) {
    std::string result;
    std::istringstream lines(gameAsText(game));
    for (std::string line; std::getline(lines, line);) {
        if (line.find(" = ") != std::string::npos)
            result += "game." + line + '\n';
        else if (line == "limit" || line == "nolimit")
            result += "game.rule = " + line + '\n';
    }
    return result;
}

Status writeCheckpointFile(const std::string& path, const CheckpointKind& kind,
                           const std::string& config, uint64_t iteration,
                           std::initializer_list<std::span<const std::byte>> payload,
                           FileSystem& files) {
    Head head{{}, kind.version, byteOrder, iteration, config.size(), 0};
    assert(kind.magic.size() == sizeof head.magic);
    kind.magic.copy(head.magic, sizeof head.magic);
    for (const auto& part : payload) {
        assert(part.size() % sizeof(uint64_t) == 0);
        head.payloadLength += part.size();
    }
    Result<AtomicFile> file = AtomicFile::create(path, files);
    if (!file)
        return Error{file.error()};
    WordChecksum checksum;
    bool written = true;
    const auto put = [&](std::span<const std::byte> bytes) {
        inPieces(bytes, [&](std::span<const std::byte> piece) {
            checksum.add(piece);
            written = written && file->write(piece).ok();
        });
    };
    const auto putChecksum = [&] {
        const uint64_t sum = checksum.value();
        put(std::as_bytes(std::span(&sum, 1)));
    };
    put(std::as_bytes(std::span(&head, 1)));
    put(std::as_bytes(std::span(config)));
    putChecksum();
    for (const auto& part : payload)
        put(part);
    putChecksum();
    // A failed write fails every later call with its message, so that commit() reports it.
    return file->commit();
}

Result<CheckpointFile> CheckpointFile::open(const std::string& path, const CheckpointKind& kind,
                                            FileSystem& files) {
    Result<MappedFile> mapped = MappedFile::open(path, MappedFile::anySize, files);
    if (!mapped)
        return Error{mapped.error()};
    CheckpointFile file(path, std::move(*mapped));
    const std::span<const std::byte> all = file.file_.bytes();
    const std::string bytes = std::to_string(all.size()) + " bytes";
    Head head{};
    std::copy_n(all.data(), std::min(sizeof head, all.size()), reinterpret_cast<std::byte*>(&head));
    if (std::string_view(head.magic, sizeof head.magic) != kind.magic)
        return file.error(std::string("not ") + kind.name);
    const std::string format = "version of this program, format " + std::to_string(head.version);
    // The oldest formats have no byte order, so the version comes first.
    if (all.size() >= offsetof(Head, byteOrder) && head.version < kind.version)
        return file.error("made by an older " + format);
    if (all.size() < sizeof head + 2 * checksumSize)
        return file.error("cut short, it has " + bytes);
    if (head.byteOrder != byteOrder)
        return file.error("made on a machine of another byte order, or damaged");
    if (head.version > kind.version)
        return file.error("made by a newer " + format);
    const size_t room = all.size() - sizeof head - 2 * checksumSize;
    if (head.configLength > room || head.payloadLength != room - head.configLength)
        return file.error("damaged or cut short, its fields do not fit its " + bytes);
    const size_t before = sizeof head + head.configLength;
    file.checksum_.add(all.first(sizeof head));
    file.checksum_.add(all.subspan(sizeof head, head.configLength));
    if (wordAt(all, before) != file.checksum_.value())
        return file.error("damaged, its head does not fit its checksum");
    file.checksum_.add(all.subspan(before, checksumSize));
    file.iteration_ = head.iteration;
    file.config_ = {reinterpret_cast<const char*>(all.data()) + sizeof head, head.configLength};
    file.payload_ = all.subspan(before + checksumSize, head.payloadLength);
    return file;
}

Status CheckpointFile::madeWith(const std::string& config) const {
    if (config_ == config)
        return {};
    return error("made with another configuration: " + difference(config_, config));
}

Status CheckpointFile::read(std::initializer_list<std::span<std::byte>> parts) const {
    size_t size = 0;
    for (const auto& part : parts)
        size += part.size();
    if (payload_.size() != size)
        return error("its numbers do not fit its " + std::to_string(file_.size()) + " bytes");
    // The pages are given back on the way, or the file would be in memory beside the numbers.
    WordChecksum checksum = checksum_;
    inPieces(payload_, [&](std::span<const std::byte> piece) {
        checksum.add(piece);
        file_.forgetPages();
    });
    if (wordAt(file_.bytes(), file_.size() - checksumSize) != checksum.value())
        return error("damaged, its checksum does not fit");
    size_t at = 0;
    for (const auto& part : parts) {
        std::byte* to = part.data();
        inPieces(payload_.subspan(at, part.size()), [&](std::span<const std::byte> piece) {
            to = std::copy(piece.begin(), piece.end(), to);
            file_.forgetPages();
        });
        at += part.size();
    }
    return {};
}

} // namespace tamarin
