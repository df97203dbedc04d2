// program_support.h: the program itself, run in a folder of the test.

#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <signal.h>
#include <sstream>
#include <string>
#include <vector>

namespace orvanel {

/// A fresh folder for each test, in which the program runs.
class ScenarioProgram : public testing::Test {
  protected:
    std::filesystem::path folder =
        std::filesystem::path(testing::TempDir()) / ("scenario" + std::to_string(getpid()));

    void SetUp() override { std::filesystem::create_directories(folder); }
    void TearDown() override { std::filesystem::remove_all(folder); }

    void put(const std::string& name, const std::string& text) const {
        std::ofstream(folder / name, std::ios::binary) << text;
    }

    std::string get(const std::string& name) const {
        std::ostringstream text;
        text << std::ifstream(folder / name, std::ios::binary).rdbuf();
        return text.str();
    }

    /// Starts the program with standard streams from and to files of the folder.
    pid_t start(std::vector<std::string> words) const {
        std::fflush(stdout);
        const pid_t pid = fork();
        if (pid != 0) return pid;
        std::filesystem::current_path(folder);
        if (std::freopen(std::filesystem::exists("in") ? "in" : "/dev/null", "r", stdin) ==
                nullptr ||
            std::freopen("out", "w", stdout) == nullptr ||
            std::freopen("err", "w", stderr) == nullptr)
            _exit(99);
        std::vector<char*> arguments{const_cast<char*>(ORVANEL_PROGRAM)};
        for (std::string& word : words)
            arguments.push_back(word.data());
        arguments.push_back(nullptr);
        execv(ORVANEL_PROGRAM, arguments.data());
        _exit(99);
    }

    static int status_of(pid_t pid) {
        int ending = 0;
        waitpid(pid, &ending, 0);
        return WIFEXITED(ending) ? WEXITSTATUS(ending) : -WTERMSIG(ending);
    }

    int run(const std::vector<std::string>& words) const { return status_of(start(words)); }

    /// Runs a scenario of one file and gives what it prints.
    std::string printed(const std::string& scenario, int expected_status = 0) const {
        put("a.scn", scenario);
        EXPECT_EQ(run({"a.scn"}), expected_status) << get("err");
        return get("out");
    }
};

inline const std::string identify = "send 1B \"?\"\n";
inline const std::string identity = " FF FF 48 F0 00 80 00 01 42\n";

}  // namespace orvanel
