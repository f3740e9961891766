#include "clustering/checked_file.h"

#include "support/file.h"
#include "support/word_checksum.h"

#include <cassert>

namespace tamarin {

namespace {

constexpr uint32_t byteOrder = 0x01020304;
constexpr size_t checksumSize = sizeof(uint64_t);

struct Head {
    char magic[8];
    uint32_t version;
    uint32_t byteOrder;
    uint64_t length;
};
static_assert(sizeof(Head) == 24);

uint64_t checksumOf(std::string_view bytes) {
    WordChecksum checksum;
    checksum.add(std::as_bytes(std::span(bytes)));
    return checksum.value();
}

} // namespace

Status writeCheckedFile(const std::string& path, const CheckedKind& kind,
                        const std::string& payload) {
    Head head{{}, kind.version, byteOrder, payload.size()};
    assert(kind.magic.size() == sizeof head.magic);
    kind.magic.copy(head.magic, sizeof head.magic);
    std::string bytes(reinterpret_cast<const char*>(&head), sizeof head);
    bytes += payload;
    const uint64_t checksum = checksumOf(bytes);
    bytes.append(reinterpret_cast<const char*>(&checksum), sizeof checksum);
    return writeWholeFile(path, bytes);
}

Result<std::string> readCheckedFile(const std::string& path, const CheckedKind& kind) {
    Result<std::string> read = readWholeFile(path);
    if (!read)
        return Error{read.error()};
    const std::string_view bytes = *read;
    const auto error = [&](const std::string& what) { return Error{path + ": " + what}; };
    Head head{};
    if (bytes.substr(0, sizeof head.magic) != kind.magic)
        return error(std::string("not ") + kind.name);
    if (bytes.size() < sizeof head + checksumSize)
        return error("cut short, it has " + std::to_string(bytes.size()) + " bytes");
    std::memcpy(&head, bytes.data(), sizeof head);
    if (head.byteOrder != byteOrder)
        return error("made on a machine of another byte order, or damaged");
    if (head.version != kind.version)
        return error("made by another version of this program, format " +
                     std::to_string(head.version) + ", not " + std::to_string(kind.version));
    const size_t end = bytes.size() - checksumSize;
    uint64_t checksum = 0;
    std::memcpy(&checksum, bytes.data() + end, sizeof checksum);
    if (head.length != end - sizeof head || checksum != checksumOf(bytes.substr(0, end)))
        return error("damaged or cut short, its checksum does not fit");
    return std::string(bytes.substr(sizeof head, head.length));
}

} // namespace tamarin
