#include "dealer/child.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tamarin {

namespace {

struct Pipe {
    int ends[2] = {-1, -1};
    ~Pipe() {
        for (const int end : ends)
            if (end >= 0)
                ::close(end);
    }
    bool open() { return ::pipe2(ends, O_CLOEXEC) == 0; }
    int give(int which) { return std::exchange(ends[which], -1); }
};

// What the child does between fork and exec. Tells through report which step failed.
[[noreturn]] void becomeProgram(const Child::Command& command, char* const* arguments,
                                const std::string& path, pid_t dealer, int output, int report) {
    const auto giveUp = [&](char step) {
        const int error = errno;
        char message[1 + sizeof error];
        message[0] = step;
        std::memcpy(message + 1, &error, sizeof error);
        if (::write(report, message, sizeof message) < 0) {
            // Nobody is left to tell.
        }
        ::_exit(127);
    };
    ::setpgid(0, 0);
    ::prctl(PR_SET_PDEATHSIG, SIGTERM);
    if (::getppid() != dealer)
        ::_exit(127);
    // Ignored signals stay ignored across exec; a player decides for itself.
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGPIPE, SIGXFSZ})
        ::signal(signal, SIG_DFL);
    const int nothing = ::open("/dev/null", O_RDONLY);
    if (nothing < 0 || ::dup2(nothing, 0) < 0 || ::dup2(output, 1) < 0 || ::dup2(output, 2) < 0)
        giveUp('o');
    if (::chdir(command.directory.c_str()) != 0)
        giveUp('d');
    if (!path.empty())
        ::setenv("PATH", path.c_str(), 1);
    ::execv(command.file.c_str(), arguments);
    giveUp('x');
    ::_exit(127);
}

} // namespace

Result<Child> Child::start(const Command& command) {
    Pipe output;
    Pipe report;
    if (!output.open() || !report.open())
        return Error{std::string{"could not open a pipe: "} + std::strerror(errno)};

    std::vector<char*> arguments;
    for (const std::string& argument : command.arguments)
        arguments.push_back(const_cast<char*>(argument.c_str()));
    arguments.push_back(nullptr);
    std::string path;
    if (!command.firstPath.empty()) {
        const char* inherited = std::getenv("PATH");
        path = command.firstPath + ":" + (inherited ? inherited : "/usr/bin:/bin");
    }

    std::fflush(nullptr);
    const pid_t dealer = ::getpid();
    const pid_t pid = ::fork();
    if (pid < 0)
        return Error{std::string{"could not start a process: "} + std::strerror(errno)};
    if (pid == 0)
        becomeProgram(command, arguments.data(), path, dealer, output.ends[1], report.ends[1]);

    // In both processes, so that the group exists whoever comes first.
    ::setpgid(pid, pid);
    Child child;
    child.pid_ = pid;
    fcntl(output.ends[0], F_SETFL, O_NONBLOCK);
    child.output_ = PlayerOutput(output.give(0), command.mirror);

    ::close(report.give(1));
    char message[1 + sizeof(int)];
    ssize_t length;
    do {
        length = ::read(report.ends[0], message, sizeof message);
    } while (length < 0 && errno == EINTR);
    if (length == static_cast<ssize_t>(sizeof message)) {
        int error;
        std::memcpy(&error, message + 1, sizeof error);
        const std::string cause = std::strerror(error);
        if (message[0] == 'd')
            return Error{"could not enter " + command.directory + ": " + cause};
        return Error{"could not start " + command.file + ": " + cause};
    }
    return child;
}

Child::Child(Child&& other) noexcept
    : pid_(std::exchange(other.pid_, -1)), output_(std::move(other.output_)), ended_(other.ended_),
      killed_(other.killed_), status_(other.status_) {}

Child& Child::operator=(Child&& other) noexcept {
    if (this != &other) {
        release();
        pid_ = std::exchange(other.pid_, -1);
        output_ = std::move(other.output_);
        ended_ = other.ended_;
        killed_ = other.killed_;
        status_ = other.status_;
    }
    return *this;
}

Child::~Child() {
    release();
}

void Child::release() {
    if (pid_ > 0) {
        // What the player has left running goes with it.
        signalGroup(SIGKILL);
        while (::waitpid(pid_, nullptr, 0) < 0 && errno == EINTR) {
        }
    }
    pid_ = -1;
}

bool Child::ended() {
    if (!ended_ && pid_ > 0) {
        // The process stays on the system's list until release(), so that its number, which is also
        // that of the group we signal, cannot pass to somebody else.
        siginfo_t info{};
        if (::waitid(P_PID, static_cast<id_t>(pid_), &info, WEXITED | WNOHANG | WNOWAIT) == 0 &&
            info.si_pid == pid_) {
            ended_ = true;
            killed_ = info.si_code != CLD_EXITED;
            status_ = info.si_status;
        }
    }
    return ended_;
}

std::string Child::describe() {
    if (!ended())
        return "is running";
    if (killed_)
        return "was killed by signal " + std::to_string(status_) + " (" + strsignal(status_) + ")";
    return "ended with status " + std::to_string(status_);
}

std::string Child::explain() {
    std::string text = describe();
    output_.takeRest(); // what it wrote before it ended is there by now
    const auto& lines = output_.lastLines();
    if (lines.empty())
        return text + " and no output";
    text += "; its last output: ";
    for (size_t i = 0; i < lines.size(); ++i)
        text += (i == 0 ? "" : " | ") + lines[i];
    return text;
}

void Child::signalGroup(int signal) {
    if (pid_ > 0)
        ::kill(-pid_, signal);
}

} // namespace tamarin
