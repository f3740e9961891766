// What somebody who connects must say before it has a seat:
//
//   #token TEXT      only where the dealer asks for a token
//   VERSION:2.0.0
//
// Of a token somebody guesses at, nothing is ever shown.
#pragma once

#include <string>
#include <string_view>

namespace tamarin {

// 1 to 200 printable ASCII characters without a space.
bool isToken(std::string_view text);

// Whether the two are equal, in a time that depends on what was said and not on how much of it is
// right.
bool sameToken(std::string_view expected, std::string_view said);

class Greeting {
public:
    enum class Outcome { unfinished, welcome, refused };

    // An empty token: none is asked for.
    explicit Greeting(std::string token = "") : token_(std::move(token)) {}

    // The next line, without its end; not to be called again once it was not unfinished.
    Outcome hear(const std::string& line);
    // What is wrong, when refused: "says 'GET / HTTP/1.1' instead of VERSION:2.0.0".
    const std::string& complaint() const { return complaint_; }

private:
    std::string token_; // still to be heard
    std::string complaint_;
};

} // namespace tamarin
