// A fresh directory for one test, removed with all it holds.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <utility>

#include <gtest/gtest.h>

namespace tamarin::test {

class TempDirectory {
public:
    TempDirectory() {
        std::string pattern = (std::filesystem::temp_directory_path() / "tamarin.XXXXXX").string();
        if (!mkdtemp(pattern.data()))
            ADD_FAILURE() << "could not make " << pattern;
        path_ = pattern;
    }
    TempDirectory(const TempDirectory&) = delete;
    TempDirectory& operator=(const TempDirectory&) = delete;
    ~TempDirectory() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }

    const std::string& path() const { return path_; }
    std::string file(const std::string& name) const { return path_ + "/" + name; }

    std::set<std::string> names() const {
        std::set<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(path_))
            names.insert(entry.path().filename().string());
        return names;
    }

private:
    std::string path_;
};

// Plain reading and writing that share no code with what is tested. An absent file reads as
// "(absent)".
inline std::string contentsOf(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in)
        return "(absent)";
    std::ostringstream contents;
    contents << in.rdbuf();
    return std::move(contents).str();
}

inline void putContents(const std::string& path, const std::string& contents) {
    std::ofstream out(path, std::ios::binary);
    out << contents;
}

} // namespace tamarin::test
