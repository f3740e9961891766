// Runs the real programs from a test: their own process, working directory and pipes.
#pragma once

#include <fcntl.h>
#include <signal.h>
#include <string>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace tamarin::test {

// A child process whose standard output and error go to files in its working directory, so that it
// never waits for a reader. Killed, if it still runs, when the object goes.
class Process {
public:
    Process(const std::vector<std::string>& command, const std::string& directory)
        : out_(directory + "/stdout.txt"), err_(directory + "/stderr.txt") {
        std::vector<char*> arguments;
        for (const std::string& word : command)
            arguments.push_back(const_cast<char*>(word.c_str()));
        arguments.push_back(nullptr);
        unlink(out_.c_str()); // what an earlier process said
        unlink(err_.c_str());
        pid_ = fork();
        if (pid_ == 0) {
            const int mode = 0644;
            const int out = open(out_.c_str(), O_WRONLY | O_CREAT | O_TRUNC, mode);
            const int err = open(err_.c_str(), O_WRONLY | O_CREAT | O_TRUNC, mode);
            const int in = open("/dev/null", O_RDONLY);
            dup2(in, 0);
            dup2(out, 1);
            dup2(err, 2);
            if (chdir(directory.c_str()) != 0)
                _exit(126);
            execvp(arguments[0], arguments.data());
            _exit(127);
        }
    }
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;
    ~Process() {
        if (pid_ > 0) {
            kill(pid_, SIGKILL);
            waitpid(pid_, nullptr, 0);
        }
    }

    pid_t pid() const { return pid_; }

    // The exit status, or 128 + the signal that ended it.
    int wait() {
        int status = 0;
        while (waitpid(pid_, &status, 0) < 0) {
        }
        pid_ = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }

    // Whether it writes the text, on standard output or error, within ten seconds.
    bool says(const std::string& text) const {
        for (int tries = 0; tries < 1000; ++tries) {
            if ((out() + err()).find(text) != std::string::npos)
                return true;
            usleep(10000);
        }
        return false;
    }

    std::string out() const { return contents(out_); }
    std::string err() const { return contents(err_); }

private:
    static std::string contents(const std::string& path) {
        std::string text;
        const int fd = open(path.c_str(), O_RDONLY);
        char buffer[65536];
        for (ssize_t n; fd >= 0 && (n = read(fd, buffer, sizeof buffer)) > 0;)
            text.append(buffer, static_cast<size_t>(n));
        close(fd);
        return text;
    }

    std::string out_;
    std::string err_;
    pid_t pid_ = -1;
};

} // namespace tamarin::test
