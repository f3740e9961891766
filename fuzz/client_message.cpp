// Any bytes as a page's message and as a question's values: what is read is within its bounds, and
// a refusal says why in words of ours.
#include "web/client_message.h"

#include "fuzz/fuzz.h"
#include "web/queries.h"

#include <string>

using namespace tamarin;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    if (const auto values = queryValues(text))
        for (const auto& [name, value] : *values)
            expect(name.size() + value.size() < text.size(), "decoding never makes a text longer");
    const auto read = readClientMessage(text);
    if (!read) {
        expect(!read.error().empty() && read.error().size() < 100, "a refusal has its reason");
        return 0;
    }
    expect(size <= longestMessage, "a long message is refused");
    using Kind = ClientMessage::Kind;
    if (read->kind == Kind::act) {
        expect(read->action.type >= actionFold && read->action.type <= actionRaise, "an action");
        expect(read->action.size >= 0, "a size is not negative");
        expect(read->action.size == 0 || read->action.type == actionRaise, "of a raise alone");
    }
    if (read->kind == Kind::sit)
        expect(read->opponents.size() < MAX_PLAYERS, "there are so many seats");
    return 0;
}
