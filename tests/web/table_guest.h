// A person for tests: reads the news of a table and plays by a rule of its own.
#pragma once

#include "support/tree_paths.h"
#include "toolbox/tamarin_process.h"
#include "web/table_list.h"

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace tamarin::test {

using Json = nlohmann::ordered_json;

inline Programs builtPrograms() {
    return {inBuild("bin/tamarin"), inBuild("bin")};
}

// Waits for what is told, at most for so long that a test which waits longer has failed.
class NewsBell {
public:
    void ring() {
        const std::lock_guard lock(mutex_);
        ++rings_;
        rung_.notify_all();
    }
    bool wait(const std::function<bool()>& enough) {
        constexpr auto patience = std::chrono::seconds(30);
        const auto end = std::chrono::steady_clock::now() + patience;
        for (;;) {
            uint64_t before = 0;
            {
                const std::lock_guard lock(mutex_);
                before = rings_;
            }
            if (enough())
                return true;
            std::unique_lock lock(mutex_);
            if (!rung_.wait_until(lock, end, [&] { return rings_ != before; }))
                return false;
        }
    }

private:
    std::mutex mutex_;
    std::condition_variable rung_;
    uint64_t rings_ = 0;
};

// Whether the person is asked, or a finished hand waits for it.
inline bool waitsForPerson(const Json& news) {
    return news["phase"] == "between" || news["phase"] == "over" ||
           (!news["hand"].is_null() && !news["hand"]["options"].is_null());
}

} // namespace tamarin::test
