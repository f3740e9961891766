// Files that are about to be replaced and that a person may want back.
#pragma once

#include "support/result.h"

#include <string>
#include <vector>

namespace tamarin {

// Each gets a second name (keepBeside() of support/file.h) just before its replacement is written,
// so that at every moment there is one under its own name. Without a call of replaced() the
// destructor takes back the second names of those that have not been replaced.
class KeptFiles {
public:
    KeptFiles() = default;
    KeptFiles(const KeptFiles&) = delete;
    KeptFiles& operator=(const KeptFiles&) = delete;
    ~KeptFiles();

    Status keep(const std::string& path);
    // The new ones are there: says where the old ones are, a line each on standard error.
    void replaced();

private:
    struct Kept {
        std::string path;
        std::string beside;
    };
    std::vector<Kept> files_;
};

} // namespace tamarin
