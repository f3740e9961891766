// Runs a tamarin command within the test and catches what it prints.
#pragma once

#include "toolbox/commands.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

struct ToolboxRun {
    int status;
    std::string out;
    std::string err;

    nlohmann::json json() const { return nlohmann::json::parse(out); }
};

inline ToolboxRun callTamarin(const std::vector<std::string>& arguments) {
    std::vector<const char*> argv{"tamarin"};
    for (const std::string& argument : arguments)
        argv.push_back(argument.c_str());
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    const int status =
        tamarin::runToolbox(static_cast<int>(argv.size()), argv.data(), tamarin::allCommands());
    std::fflush(stdout);
    const std::string out = testing::internal::GetCapturedStdout();
    return {status, out, testing::internal::GetCapturedStderr()};
}
