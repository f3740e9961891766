#include "toolbox/numbers.h"

#include "toolbox/commands.h"

#include <cmath>

#include <gtest/gtest.h>

namespace tamarin::test {

namespace {

// What comes back from a validator: empty, and then the text as CLI11 gets it.
struct Checked {
    std::string problem;
    std::string text;
};
Checked check(const CLI::Validator& validator, std::string text) {
    std::string problem = validator(text);
    return {problem, text};
}

// The line on standard error for these arguments, which are wrong usage.
std::string refusal(const std::vector<std::string>& arguments) {
    std::vector<const char*> argv{"tamarin"};
    for (const std::string& argument : arguments)
        argv.push_back(argument.c_str());
    testing::internal::CaptureStderr();
    const int status = runToolbox(static_cast<int>(argv.size()), argv.data(), allCommands());
    const std::string line = testing::internal::GetCapturedStderr();
    return status == exitUsage ? line : "was not refused";
}

} // namespace

TEST(WholeNumber, IsReadInFullAndInRange) {
    const auto validator = wholeNumber(2, 300);
    for (const char* good : {"2", "10", "300"}) {
        EXPECT_EQ(check(validator, good).problem, "");
        EXPECT_EQ(check(validator, good).text, good);
    }
    EXPECT_EQ(check(validator, "010").text, "10"); // which CLI11 would read as 8
    for (const char* bad : {"", "1", "301", "-1", "+3", " 3", "3 ", "3x", "0x10", "1e2", "2.5",
                            "nan", "18446744073709551618", "99999999999999999999999"})
        EXPECT_EQ(check(validator, bad).problem,
                  "'" + std::string(bad) + "' is not a whole number from 2 to 300");
    EXPECT_EQ(check(wholeNumber(0, UINT64_MAX), "18446744073709551615").problem, "");
    EXPECT_NE(check(wholeNumber(0, UINT64_MAX), "18446744073709551616").problem, "");
}

TEST(DecimalNumber, IsFiniteAndInRange) {
    const auto validator = decimalNumber(0.25, 1e6);
    for (const char* good : {"0.25", "1", "1e3", "1000000", "2.5e-1"})
        EXPECT_EQ(check(validator, good).problem, "") << good;
    for (const char* bad : {"", "0.2499", "1000001", "-1", "nan", "-nan", "NaN", "inf", "infinity",
                            "0x1p3", "1e400", " 1", "1s", "1,5"})
        EXPECT_EQ(check(validator, bad).problem,
                  "'" + std::string(bad) + "' is not a number from 0.25 to 1000000");
}

// "--action-limit nan" was once no limit at all, and "--seed -1" another seed.
TEST(NumberOptions, OfEveryCommandRefuseWhatIsNoNumber) {
    CLI::App app;
    int status = 0;
    for (const AddCommand add : allCommands())
        add(app, status);
    size_t numbers = 0;
    for (const CLI::App* command : app.get_subcommands({}))
        for (const CLI::Option* option : command->get_options()) {
            const std::string type = option->get_type_name();
            const std::string what = command->get_name() + " " + option->get_name();
            // CLI11's own names: an option that nobody gave a range.
            for (const char* unchecked : {"INT", "UINT", "FLOAT"})
                EXPECT_EQ(type.find(unchecked), std::string::npos) << what;
            if (type != "N" && type != "SECONDS" && type != "CHIPS")
                continue;
            ++numbers;
            for (const char* bad : {"nan", "inf", "-1", "0x10", "99999999999999999999", "1x", ""}) {
                std::vector<std::string> arguments = {command->get_name()};
                if (option->get_positional()) // the port, which is a bot's last
                    arguments = {"bot", "call", "game", "host", "--"};
                else
                    arguments.push_back(option->get_name());
                arguments.emplace_back(bad);
                const std::string line = refusal(arguments);
                EXPECT_NE(line.find(std::string("'") + bad + "' is not a "), std::string::npos)
                    << what << ": " << line;
                EXPECT_EQ(std::count(line.begin(), line.end(), '\n'), 1) << line;
            }
        }
    EXPECT_GE(numbers, 20U);
}

TEST(NumberOptions, KnowTheirRanges) {
    EXPECT_EQ(refusal({"bot", "call", "game", "host", "70000"}),
              "tamarin: PORT: '70000' is not a whole number from 1 to 65535; try 'tamarin bot "
              "--help'\n");
    EXPECT_EQ(refusal({"match", "game", "--hands", "4294967296"}),
              "tamarin: --hands: '4294967296' is not a whole number from 1 to 4294967295; try "
              "'tamarin match --help'\n");
    EXPECT_EQ(refusal({"train", "game", "--seconds", "0"}),
              "tamarin: --seconds: '0' is not a number from 0.001 to 1000000000; try 'tamarin "
              "train --help'\n");
    for (const char* size : {"-1GB", "nan", "1e3", "99999999999GB", "1XB", ""})
        EXPECT_NE(refusal({"tables", "--dry-run", "--memory", size}), "was not refused") << size;
}

} // namespace tamarin::test
