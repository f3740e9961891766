#include "bots/bot.h"

#include "bots/fixed_choice.h"
#include "bots/random_choice.h"
#include "bots/rule_choice.h"

namespace tamarin {

namespace {

class CallBot : public SimpleBot {
public:
    using SimpleBot::SimpleBot;
    void getAction(Action& action) override { action = alwaysCall(); }
};

class RaiseBot : public SimpleBot {
public:
    using SimpleBot::SimpleBot;
    void getAction(Action& action) override { action = alwaysRaise(game, &state.state); }
};

class RandomBot : public SimpleBot {
public:
    RandomBot(const char* gameFile, uint64_t seed, SocketCalls& calls)
        : SimpleBot(gameFile, calls) {
        uint32_t key[] = {static_cast<uint32_t>(seed), static_cast<uint32_t>(seed >> 32)};
        init_by_array(&generator_, key, 2);
    }
    void getAction(Action& action) override {
        action = randomChoice(game, &state.state, &generator_);
    }

private:
    rng_state_t generator_;
};

class RuleBot : public SimpleBot {
public:
    using SimpleBot::SimpleBot;
    void getAction(Action& action) override { action = ruleChoice(game, &state); }
};

} // namespace

const std::vector<BotKind>& botKinds() {
    static const std::vector<BotKind> kinds = {
        {"random", "any legal action, each kind as likely"},
        {"call", "always checks or calls"},
        {"raise", "raises as often as the rules allow, by the least amount"},
        {"rule", "plays its cards by a fixed rule"},
    };
    return kinds;
}

std::string botNames() {
    std::string names;
    for (const BotKind& kind : botKinds())
        names.append(names.empty() ? "" : ", ").append(kind.name);
    return names;
}

std::unique_ptr<PokerAgent> makeBot(const std::string& kind, const char* gameFile, uint64_t seed,
                                    SocketCalls& calls) {
    if (kind == "call")
        return std::make_unique<CallBot>(gameFile, calls);
    if (kind == "raise")
        return std::make_unique<RaiseBot>(gameFile, calls);
    if (kind == "random")
        return std::make_unique<RandomBot>(gameFile, seed, calls);
    if (kind == "rule")
        return std::make_unique<RuleBot>(gameFile, calls);
    return nullptr;
}

} // namespace tamarin
