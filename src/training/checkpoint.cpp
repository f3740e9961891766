#include "training/checkpoint.h"

#include "training/checkpoint_frame.h"

#include <algorithm>
#include <filesystem>

namespace tamarin {

namespace {

constexpr CheckpointKind kind{"tmrnckpt", 2, "a checkpoint"};
constexpr size_t kept = 2;
const std::string prefix = "checkpoint.";

static_assert(sizeof(TrainerNumbers) == 72);

// Twenty digits, of a number that is one: the largest of 64 bits has as many.
bool isCheckpointName(const std::string& name) {
    static const std::string largest = prefix + std::to_string(UINT64_MAX);
    return name.size() == largest.size() && name.starts_with(prefix) && name <= largest &&
           name.find_first_not_of("0123456789", prefix.size()) == std::string::npos;
}

Result<TrainerState> stateIn(const CheckpointFile& file) {
    TrainerState state;
    state.iteration = file.iteration();
    state.sets.resize(file.payloadSize() / sizeof(TrainerNumbers));
    const Status read = file.read({std::as_writable_bytes(std::span(&state.random, 1)),
                                   std::as_writable_bytes(std::span(state.sets))});
    return read ? Result(std::move(state)) : Error{read.error()};
}

} // namespace

std::string checkpointConfig(const SmallGame& game, const TrainerConfig& config) {
    return gameConfig(game.game()) + "algorithm = " + algorithmName(config.algorithm) +
           "\nsampledDeals = " + std::to_string(config.sampledDeals) +
           "\nseed = " + std::to_string(config.seed) + '\n';
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
    const std::string digits = std::to_string(state.iteration);
    const std::string name = prefix + std::string(20 - digits.size(), '0') + digits;
    if (Status written = writeCheckpointFile(
            directory + '/' + name, kind, config, state.iteration,
            {std::as_bytes(std::span(&state.random, 1)), std::as_bytes(std::span(state.sets))},
            files);
        !written)
        return written;
    // Only older ones go. A later one, from which the run did not go on, stays until the run has
    // come past it: it may be damaged, and must not push out the good one of the two.
    size_t older = 0;
    std::vector<std::string> all = listCheckpoints(directory);
    for (auto path = all.rbegin(); path != all.rend(); ++path)
        if (std::filesystem::path(*path).filename() < name && ++older >= kept)
            files.unlink(path->c_str());
    return {};
}

Result<TrainerState> readCheckpoint(const std::string& path, const std::string& config,
                                    FileSystem& files) {
    const Result<CheckpointFile> file = CheckpointFile::open(path, kind, files);
    if (!file)
        return Error{file.error()};
    if (Status same = file->madeWith(config); !same)
        return Error{same.error()};
    return stateIn(*file);
}

Result<TrainerState> newestCheckpoint(const std::string& directory, const std::string& config,
                                      std::vector<std::string>& warnings, FileSystem& files) {
    const std::vector<std::string> all = listCheckpoints(directory);
    for (auto path = all.rbegin(); path != all.rend(); ++path) {
        const Result<CheckpointFile> file = CheckpointFile::open(*path, kind, files);
        if (file)
            if (Status same = file->madeWith(config); !same)
                return Error{same.error()};
        Result<TrainerState> state = file ? stateIn(*file) : Error{file.error()};
        if (state)
            return state;
        warnings.push_back(state.error());
    }
    return Error{all.empty() ? "no checkpoint in " + directory + " to resume from"
                             : "no checkpoint in " + directory + " can be used"};
}

} // namespace tamarin
