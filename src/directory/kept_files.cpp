#include "directory/kept_files.h"

#include "directory/notice.h"
#include "support/file.h"

#include <filesystem>

namespace tamarin {

KeptFiles::~KeptFiles() {
    std::error_code failed; // then it stays under both names, or under its second
    for (const Kept& file : files_)
        if (std::filesystem::equivalent(file.path, file.beside, failed))
            std::filesystem::remove(file.beside, failed);
        else if (!std::filesystem::exists(file.path, failed))
            std::filesystem::rename(file.beside, file.path, failed);
}

Status KeptFiles::keep(const std::string& path) {
    auto beside = keepBeside(path);
    if (!beside)
        return Error{beside.error()};
    files_.push_back({path, std::move(*beside)});
    return {};
}

void KeptFiles::replaced() {
    for (const Kept& file : files_)
        complain("the {} that was there is kept as {}", file.path, file.beside);
    files_.clear();
}

} // namespace tamarin
