#include "toolbox/token_option.h"

#include "dealer/greeting.h"
#include "support/file.h"
#include "toolbox/command.h"

namespace tamarin {

namespace {

constexpr const char* whatATokenIs = "1 to 200 printable ASCII characters without a space";

} // namespace

void addTokenOptions(CLI::App& command, TokenOption& option, const std::string& use) {
    CLI::Option* const text =
        command
            .add_option("--token", option.text,
                        use + "; anybody on this machine can see it in the list of processes")
            ->type_name("TEXT");
    command
        .add_option("--token-file", option.file,
                    "The same, from a file that holds nothing else; keep it from others' eyes")
        ->type_name("FILE")
        ->excludes(text);
    // An empty token given on purpose is a mistake, and not the wish for none.
    text->check([](const std::string& given) {
        return isToken(given) ? std::string() : std::string("a token is ") + whatATokenIs;
    });
}

std::string readToken(const TokenOption& option) {
    if (option.file.empty())
        return option.text;
    constexpr size_t largestFile = 4096;
    auto contents = readWholeFile(option.file, largestFile);
    if (!contents)
        throw UsageError("--token-file: " + contents.error());
    std::string token = *contents;
    if (token.ends_with('\n'))
        token.pop_back();
    if (token.ends_with('\r'))
        token.pop_back();
    if (!isToken(token))
        throw UsageError(
            fmt::format("--token-file: {} holds no token, which is {}", option.file, whatATokenIs));
    return token;
}

} // namespace tamarin
