#include "training/checkpoint.h"

#include "support/fnv.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <map>
#include <sstream>

namespace tamarin {

namespace {

constexpr char magic[8] = {'t', 'm', 'r', 'n', 'c', 'k', 'p', 't'};
constexpr uint32_t version = 1;
constexpr uint32_t byteOrder = 0x01020304;
constexpr size_t kept = 2;
const std::string prefix = "checkpoint.";

static_assert(sizeof(TrainerNumbers) == 72);

uint64_t hashOf(std::string_view bytes) {
    Fnv1a hash;
    hash.add(bytes);
    return hash.value();
}

template <class T>
void append(std::string& bytes, const T& value) {
    bytes.append(reinterpret_cast<const char*>(&value), sizeof value);
}

class Reader {
public:
    Reader(const std::string& bytes, size_t end) : bytes_(bytes), end_(end) {}
    template <class T>
    bool take(T& value) {
        if (end_ - at_ < sizeof value)
            return false;
        std::memcpy(&value, bytes_.data() + at_, sizeof value);
        at_ += sizeof value;
        return true;
    }
    bool take(std::string& text, uint64_t length) {
        if (end_ - at_ < length)
            return false;
        text = bytes_.substr(at_, length);
        at_ += length;
        return true;
    }
    size_t left() const { return end_ - at_; }

private:
    const std::string& bytes_;
    size_t end_;
    size_t at_ = 0;
};

std::map<std::string, std::string> fieldsOf(const std::string& config) {
    std::map<std::string, std::string> fields;
    std::istringstream lines(config);
    for (std::string line; std::getline(lines, line);) {
        const size_t equals = line.find('=');
        fields[line.substr(0, equals)] =
            equals == std::string::npos ? std::string() : line.substr(equals + 1);
    }
    return fields;
}

// "seed is 1 there and 2 here", for the first field that differs.
std::string difference(const std::string& there, const std::string& here) {
    const auto old = fieldsOf(there);
    auto wanted = fieldsOf(here);
    for (const auto& [field, value] : old)
        if (wanted[field] != value)
            return field + " is " + value + " there and " + wanted[field] + " here";
    return "its configuration has fewer fields";
}

std::string baseName(const std::string& path) {
    return path.substr(path.find_last_of('/') + 1);
}

// Twenty digits, of a number that is one: the largest of 64 bits has as many.
bool isCheckpointName(const std::string& name) {
    static const std::string largest = prefix + std::to_string(UINT64_MAX);
    return name.size() == largest.size() && name.starts_with(prefix) && name <= largest &&
           name.find_first_not_of("0123456789", prefix.size()) == std::string::npos;
}

bool isConfigError(const std::string& error) {
    return error.find(": made with another configuration: ") != std::string::npos;
}

} // namespace

std::string checkpointConfig(const SmallGame& game, const TrainerConfig& config) {
    // One field for each line of the definition: "numPlayers = 3" becomes game.numPlayers.
    std::string result;
    std::istringstream lines(gameAsText(game.game()));
    for (std::string line; std::getline(lines, line);) {
        const size_t equals = line.find(" = ");
        if (equals != std::string::npos)
            result += "game." + line.substr(0, equals) + '=' + line.substr(equals + 3) + '\n';
        else if (line == "limit" || line == "nolimit")
            result += "game.rule=" + line + '\n';
    }
    result += std::string("algorithm=") + algorithmName(config.algorithm) + '\n';
    result += "sampledDeals=" + std::to_string(config.sampledDeals) + '\n';
    result += "seed=" + std::to_string(config.seed) + '\n';
    return result;
}

std::vector<std::string> listCheckpoints(const std::string& directory) {
    std::vector<std::string> found;
    std::error_code error;
    const std::filesystem::directory_iterator end;
    for (std::filesystem::directory_iterator entry(directory, error); !error && entry != end;
         entry.increment(error)) {
        const std::string name = entry->path().filename().string();
        std::error_code kind;
        if (isCheckpointName(name) && entry->is_regular_file(kind))
            found.push_back(entry->path().string());
    }
    std::sort(found.begin(), found.end());
    return found;
}

Status saveCheckpoint(const std::string& directory, const std::string& config,
                      const TrainerState& state, FileSystem& files) {
    std::string bytes(magic, sizeof magic);
    append(bytes, version);
    append(bytes, byteOrder);
    append(bytes, hashOf(config));
    append(bytes, static_cast<uint64_t>(config.size()));
    bytes += config;
    append(bytes, state.iteration);
    append(bytes, state.random);
    append(bytes, static_cast<uint64_t>(state.sets.size()));
    bytes.append(reinterpret_cast<const char*>(state.sets.data()),
                 state.sets.size() * sizeof(TrainerNumbers));
    append(bytes, hashOf(bytes));
    char name[64];
    std::snprintf(name, sizeof name, "/%s%020llu", prefix.c_str(),
                  static_cast<unsigned long long>(state.iteration));
    if (Status written = writeWholeFile(directory + name, bytes, files); !written)
        return written;
    // Only older ones go. A later one, from which the run did not go on, stays until the run has
    // come past it: it may be damaged, and must not push out the good one of the two.
    size_t older = 0;
    std::vector<std::string> all = listCheckpoints(directory);
    for (auto path = all.rbegin(); path != all.rend(); ++path)
        if (baseName(*path) < name + 1 && ++older >= kept)
            files.unlink(path->c_str());
    return {};
}

Result<TrainerState> readCheckpoint(const std::string& path, const std::string& config,
                                    FileSystem& files) {
    const Result<std::string> read = readWholeFile(path, size_t{1} << 36U, files);
    if (!read)
        return Error{read.error()};
    const std::string& bytes = *read;
    const auto damaged = [&](const std::string& what) { return Error{path + ": " + what}; };
    if (bytes.size() < sizeof magic || std::memcmp(bytes.data(), magic, sizeof magic) != 0)
        return damaged("not a checkpoint");
    Reader header(bytes, bytes.size());
    char skipped[sizeof magic];
    uint32_t madeVersion = 0;
    uint32_t order = 0;
    if (!header.take(skipped) || !header.take(madeVersion) || !header.take(order))
        return damaged("cut short, it has " + std::to_string(bytes.size()) + " bytes");
    if (order != byteOrder)
        return damaged("made on a machine of another byte order, or damaged");
    if (madeVersion > version)
        return damaged("made by a newer version of this program, format " +
                       std::to_string(madeVersion));
    uint64_t checksum = 0;
    if (bytes.size() < sizeof checksum + 56)
        return damaged("cut short, it has " + std::to_string(bytes.size()) + " bytes");
    const size_t end = bytes.size() - sizeof checksum;
    std::memcpy(&checksum, bytes.data() + end, sizeof checksum);
    if (checksum != hashOf(std::string_view(bytes).substr(0, end)))
        return damaged("damaged or cut short, its checksum does not fit its " +
                       std::to_string(bytes.size()) + " bytes");
    Reader reader(bytes, end);
    uint64_t configHash = 0;
    uint64_t length = 0;
    uint64_t sets = 0;
    std::string made;
    TrainerState state;
    if (!reader.take(skipped) || !reader.take(madeVersion) || !reader.take(order) ||
        !reader.take(configHash) || !reader.take(length) || !reader.take(made, length) ||
        !reader.take(state.iteration) || !reader.take(state.random) || !reader.take(sets) ||
        reader.left() / sizeof(TrainerNumbers) != sets ||
        reader.left() % sizeof(TrainerNumbers) != 0)
        return damaged("its fields do not fit its " + std::to_string(bytes.size()) + " bytes");
    if (configHash != hashOf(made))
        return damaged("damaged, its configuration does not fit its hash");
    if (made != config)
        return damaged("made with another configuration: " + difference(made, config));
    state.sets.resize(sets);
    if (sets > 0) // memcpy takes no null pointer, whatever the length
        std::memcpy(state.sets.data(), bytes.data() + (end - reader.left()), reader.left());
    return state;
}

Result<TrainerState> newestCheckpoint(const std::string& directory, const std::string& config,
                                      std::vector<std::string>& warnings, FileSystem& files) {
    const std::vector<std::string> all = listCheckpoints(directory);
    for (auto path = all.rbegin(); path != all.rend(); ++path) {
        Result<TrainerState> state = readCheckpoint(*path, config, files);
        if (state || isConfigError(state.error()))
            return state;
        warnings.push_back(state.error());
    }
    return Error{all.empty() ? "no checkpoint in " + directory + " to resume from"
                             : "no checkpoint in " + directory + " can be used"};
}

} // namespace tamarin
