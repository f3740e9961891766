// Files that are flushed to the disk and put in their places while the work goes on: most of what a
// table costs once it is counted is the wait for the disk.
#pragma once

#include "support/file.h"

#include <future>
#include <vector>

namespace tamarin {

class BackgroundCommits {
public:
    // The file is written; what is left is to finish and to commit it. A commit under way ends with
    // the object, whether anybody asks how.
    void add(AtomicFile file) {
        commits_.push_back(std::async(
            std::launch::async, [file = std::move(file)]() mutable { return file.commit(); }));
    }

    // Until all are done; the first that failed.
    Status wait() {
        Status status;
        for (std::future<Status>& commit : commits_)
            if (Status committed = commit.get(); !committed && status)
                status = std::move(committed);
        commits_.clear();
        return status;
    }

private:
    std::vector<std::future<Status>> commits_;
};

} // namespace tamarin
