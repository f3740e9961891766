#include "driver/strategy_files.h"

#include "support/file.h"
#include "support/util.h"

#include <cstdio>
#include <filesystem>
#include <iostream>

namespace tamarin {

namespace {

void keepAside(const std::string& path) {
    const Result<std::string> aside = setAsideBadFile(path);
    std::fprintf(stderr, "ERROR: %s is no strategy of this game: %s\n", path.c_str(),
                 aside ? ("rebuilding it, the bad file is kept as " + *aside).c_str()
                       : aside.error().c_str());
}

} // namespace

bool loadStrategy(CFR& solver, const std::string& path, const std::function<bool(CFR&)>& fits) {
    if (file_exist(path)) {
        if (solver.load(path) && (!fits || fits(solver)))
            return true;
        keepAside(path);
    }
    std::cout << "Warning: could not load strategy from disk!" << std::endl;
    return false;
}

void makeDirectoryOf(const std::string& path) {
    const Status made = makeDirectories(std::filesystem::path(path).parent_path().string());
    if (!made)
        std::cout << "Warning: " << made.error() << std::endl;
}

} // namespace tamarin
