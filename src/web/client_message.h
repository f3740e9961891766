// What a page says over its table's WebSocket: one JSON object a message.
//
//   {"type":"sit","game":"kuhn.limit.3p.game","opponents":["player","rule"]}
//   {"type":"back","table":3}                             take up a table again
//   {"type":"act","hand":12,"actions":3,"action":"r","size":300}
//   {"type":"next","hand":12}                             deal the hand after this finished one
//   {"type":"leave"}                                      end the match
//
// An action names the hand and how many actions were made in it before, so that a message that
// comes twice, or late, does not act in a state that the person has not seen. A no-limit raise
// carries the total that it raises to; nothing else has a size.
#pragma once

#include "game/state.h"
#include "support/result.h"

#include <cstdint>
#include <string>
#include <vector>

namespace tamarin {

struct ClientMessage {
    enum class Kind : uint8_t { sit, back, act, next, leave };
    Kind kind = Kind::leave;
    std::string game;                   // of sit
    std::vector<std::string> opponents; // of sit, one for each other seat
    uint32_t table = 0;                 // of back
    uint32_t hand = 0;                  // of act and next
    uint32_t actions = 0;               // of act
    Action action{actionInvalid, 0};    // of act
};

// Longer messages are refused before they are read.
inline constexpr size_t longestMessage = 4096;

// Any bytes; the error says what is wrong with the message, and quotes none of it.
Result<ClientMessage> readClientMessage(const std::string& text);

} // namespace tamarin
