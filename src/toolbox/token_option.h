// --token and --token-file: the word by which a dealer knows its players from elsewhere.
#pragma once

#include <string>

#include <CLI/CLI.hpp>

namespace tamarin {

struct TokenOption {
    std::string text;
    std::string file;
};

// Adds both, of which one may be given; use says what the token is for.
void addTokenOptions(CLI::App& command, TokenOption& option, const std::string& use);

// The token; empty when none was asked for. Throws a UsageError for text that is not a token, and
// for a file without one.
std::string readToken(const TokenOption& option);

} // namespace tamarin
