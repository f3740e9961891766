// What somebody who connects must say before it has a seat:
//
//   #token TEXT      only where the dealer asks for a token
//   VERSION:2.0.0
//
// A token, right or wrong, is never shown.
#pragma once

#include <string>
#include <string_view>

namespace tamarin {

// 1 to 200 printable ASCII characters without a space.
bool isToken(std::string_view text);

// Whether the two are equal. The time it takes depends on what was said, not on how much is right.
bool sameToken(std::string_view expected, std::string_view said);

class Greeting {
public:
    enum class Outcome { unfinished, welcome, refused };

    // With an empty token nobody is asked for one.
    explicit Greeting(std::string token = "") : token_(std::move(token)) {}

    // Takes the next line, without its end. Do not call it again after welcome or refused.
    Outcome hear(const std::string& line);
    // What is wrong, when refused: "says 'GET / HTTP/1.1' instead of VERSION:2.0.0".
    const std::string& complaint() const { return complaint_; }

private:
    std::string token_; // still to be heard
    std::string complaint_;
};

} // namespace tamarin
