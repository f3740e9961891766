// One page's talk with its table: messages in, messages out, and no sockets.
//
// A page hears of its table only how it is now: what changes while it is busy or away it finds in
// the next news, so nothing has to be kept for it.
#pragma once

#include "web/table_list.h"

#include <functional>
#include <memory>
#include <string>

namespace tamarin {

class TableTalk {
public:
    // wake is called, from any thread, when there are news; it must return at once.
    TableTalk(TableList& tables, std::function<void()> wake)
        : tables_(tables), wake_(std::move(wake)) {}
    TableTalk(const TableTalk&) = delete;
    TableTalk& operator=(const TableTalk&) = delete;
    ~TableTalk() { attach(nullptr); }

    // The reply to a message of any bytes; empty when the news are the reply.
    std::string hear(const std::string& message);
    // The table as it is; empty while there is none.
    std::string news() const { return table_ ? table_->snapshot() : ""; }

private:
    Status doAsTold(const std::string& message);
    void attach(std::shared_ptr<WebTable> table);

    TableList& tables_;
    std::function<void()> wake_;
    std::shared_ptr<WebTable> table_;
    uint64_t watcher_ = 0;
};

} // namespace tamarin
