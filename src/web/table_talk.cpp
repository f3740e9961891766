#include "web/table_talk.h"

#include "web/client_message.h"
#include "web/hand_view.h"

namespace tamarin {

std::string TableTalk::hear(const std::string& message) {
    const Status done = doAsTold(message);
    return done ? "" : wireText({{"type", "refused"}, {"problem", done.error()}});
}

Status TableTalk::doAsTold(const std::string& message) {
    const auto read = readClientMessage(message);
    if (!read)
        return Error{read.error()};
    using Kind = ClientMessage::Kind;
    if (read->kind == Kind::sit) {
        auto opened = tables_.open(read->game, read->opponents);
        if (!opened)
            return Error{opened.error()};
        attach(std::move(*opened));
        return {};
    }
    if (read->kind == Kind::back) {
        auto found = tables_.find(read->table);
        if (!found)
            return Error{"there is no such table any more"};
        attach(std::move(found));
        return {};
    }
    if (!table_)
        return Error{"sit down first"};
    if (read->kind == Kind::act)
        return table_->act(read->hand, read->actions, read->action);
    if (read->kind == Kind::next)
        return table_->next(read->hand);
    tables_.close(table_->id());
    return {};
}

void TableTalk::attach(std::shared_ptr<WebTable> table) {
    if (table_)
        table_->unwatch(watcher_);
    table_ = std::move(table);
    if (!table_)
        return;
    watcher_ = table_->watch(wake_);
    wake_();
}

} // namespace tamarin
