// The driver of a fuzz entry point for compilers without libFuzzer.
//
//   replay_NAME FILE-OR-FOLDER...
//
// Runs every file, then, since seeds are short, every prefix of it and a handful of changes at
// every byte. The parsers' own messages are dropped, except for a single file; an input that ends
// the process is named.
#include "fuzz/fuzz.h"

#include <algorithm>
#include <array>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <unistd.h>
#include <vector>

namespace fs = std::filesystem;

namespace {

using Bytes = std::vector<uint8_t>;

constexpr size_t longestChanged = 1024; // longer files are run as they are
std::array<char, 4096> running{};       // what the signal handler prints
int errors = STDERR_FILENO;             // where standard error led at the start

extern "C" void nameTheInput(int signal) {
    const char* parts[] = {"\nended by this input: ", running.data(),
                           "\nrun it alone to see the messages\n"};
    for (const char* part : parts)
        [[maybe_unused]] const ssize_t written = write(errors, part, std::strlen(part));
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

void runOne(const std::string& name, const Bytes& input) {
    std::snprintf(running.data(), running.size(), "%s", name.c_str());
    // A copy of exactly this size lets the address sanitizer see a read past the end.
    const Bytes exact(input);
    LLVMFuzzerTestOneInput(exact.data(), exact.size());
}

size_t runChanges(const std::string& name, const Bytes& seed) {
    size_t runs = 0;
    for (size_t length = 0; length < seed.size(); ++length, ++runs)
        runOne(name + ", its first " + std::to_string(length) + " bytes",
               Bytes(seed.begin(), seed.begin() + static_cast<std::ptrdiff_t>(length)));
    for (size_t at = 0; at < seed.size(); ++at) {
        const std::string where = name + ", byte " + std::to_string(at);
        const uint8_t old = seed[at];
        // "0", "9", ":", "/", "|" and "-" mean something to the parsers.
        for (const int value : {0, 48, 57, 58, 47, 124, 45, 255, old ^ 1, old ^ 32}) {
            Bytes changed = seed;
            changed[at] = static_cast<uint8_t>(value);
            runOne(where + " set to " + std::to_string(value), changed);
            ++runs;
        }
        const auto here = static_cast<std::ptrdiff_t>(at);
        Bytes changed = seed;
        changed.insert(changed.begin() + here, old);
        runOne(where + " doubled", changed);
        changed.erase(changed.begin() + here, changed.begin() + here + 2);
        runOne(where + " left out", changed);
        runs += 2;
    }
    return runs;
}

} // namespace

int main(int argc, char** argv) {
    std::vector<fs::path> files;
    for (int i = 1; i < argc; ++i) {
        if (fs::is_directory(argv[i])) {
            for (const auto& entry : fs::directory_iterator(argv[i]))
                files.push_back(entry.path());
        } else {
            files.emplace_back(argv[i]);
        }
    }
    if (files.empty()) {
        std::fprintf(stderr, "usage: %s FILE-OR-FOLDER...\n", argv[0]);
        return 2;
    }
    std::sort(files.begin(), files.end());

    const bool alone = files.size() == 1;
    if (!alone) {
        errors = dup(STDERR_FILENO);
        const int nowhere = open("/dev/null", O_WRONLY);
        dup2(nowhere, STDERR_FILENO);
        close(nowhere);
    }
    std::signal(SIGABRT, nameTheInput);
    std::signal(SIGSEGV, nameTheInput);
    std::signal(SIGFPE, nameTheInput);

    size_t runs = 0;
    for (const fs::path& path : files) {
        std::ifstream file(path, std::ios::binary);
        if (!file) {
            dprintf(errors, "cannot read %s\n", path.c_str());
            return 1;
        }
        const Bytes seed{std::istreambuf_iterator<char>(file), {}};
        runOne(path.string(), seed);
        ++runs;
        if (!alone && seed.size() <= longestChanged)
            runs += runChanges(path.string(), seed);
    }
    std::printf("%zu inputs from %zu files\n", runs, files.size());
    return 0;
}
