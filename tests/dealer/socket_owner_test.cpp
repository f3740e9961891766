#include "dealer/socket_owner.h"

#include "dealer/child.h"
#include "dealer/fake_player.h"
#include "support/child_process.h"
#include "support/temp_directory.h"

#include <filesystem>
#include <fstream>
#include <linux/netlink.h>
#include <sched.h>
#include <sys/mount.h>

#include <gtest/gtest.h>

namespace tamarin::test {

namespace {

Child shell(const std::string& script, const std::vector<std::string>& arguments) {
    Child::Command command;
    command.file = "/bin/bash";
    command.arguments = {"bash", "-c", script, "bash"};
    command.arguments.insert(command.arguments.end(), arguments.begin(), arguments.end());
    auto child = Child::start(command);
    EXPECT_TRUE(child.ok());
    return std::move(*child);
}

// A port, and what the system says of whoever connects to it next.
class Door {
public:
    Door() : listener_(open()) {}
    std::string port() const { return std::to_string(listener_.port()); }
    uint16_t number() const { return listener_.port(); }

    // Our end of the next connection; the object keeps it open.
    int accept() {
        for (int i = 0; i < 10000; ++i) {
            if (const auto visitor = listener_.accept()) {
                connections_.emplace_back(visitor->fd);
                return visitor->fd;
            }
            pause(1);
        }
        ADD_FAILURE() << "nobody connects";
        return -1;
    }
    SocketOwner ownerOf(int fd, pid_t group, const std::string& proc = "/proc") {
        return ownersOfPeers({&fd, 1}, group, proc).front();
    }
    SocketOwner nextOwner(const Child& child) { return ownerOf(accept(), child.group()); }

private:
    static Listener open() {
        auto listener = Listener::local();
        return std::move(*listener);
    }

    Listener listener_;
    std::vector<Connection> connections_;
};

constexpr const char* connectAndStay = "exec 3<>/dev/tcp/127.0.0.1/$1; read <&3";

// A picture of /proc, to say what the real one cannot be made to say.
class FakeProc {
public:
    FakeProc() {
        std::string name = testing::TempDir() + "proc.XXXXXX";
        EXPECT_NE(mkdtemp(name.data()), nullptr);
        path = name;
        std::filesystem::create_symlink(std::to_string(::getpid()), path + "/self");
        std::filesystem::create_directories(path + "/net");
        write("net/tcp", "  sl  local_address rem_address   st tx_queue rx_queue\n");
        write("net/tcp6", "  sl  local_address\n");
    }
    ~FakeProc() { std::filesystem::remove_all(path); }

    void write(const std::string& name, const std::string& text) const {
        std::ofstream(path + "/" + name, std::ios::app) << text;
    }
    // A process with its open sockets.
    void process(int pid, int parent, int group, const std::vector<int>& inodes,
                 const std::string& name = "(player)", const std::string& state = "S") const {
        const std::string folder = path + "/" + std::to_string(pid);
        std::filesystem::create_directories(folder + "/fd");
        std::ofstream(folder + "/stat")
            << pid << " " << name << " " << state << " " << parent << " " << group << " 1 0\n";
        std::filesystem::create_symlink("/dev/null", folder + "/fd/0");
        for (const int inode : inodes)
            std::filesystem::create_symlink("socket:[" + std::to_string(inode) + "]",
                                            folder + "/fd/" + std::to_string(inode + 1));
    }
    // The other end of our end fd, as the kernel lists it.
    void peer(const std::string& list, int fd, int inode) const {
        sockaddr_in here{};
        sockaddr_in there{};
        socklen_t length = sizeof here;
        ASSERT_EQ(getsockname(fd, reinterpret_cast<sockaddr*>(&here), &length), 0);
        ASSERT_EQ(getpeername(fd, reinterpret_cast<sockaddr*>(&there), &length), 0);
        const char* prefix = list == "tcp6" ? "0000000000000000FFFF0000" : "";
        char line[400];
        std::snprintf(line, sizeof line,
                      "   0: %s%08X:%04X %s%08X:%04X 01 00000000:00000000 00:00000000 00000000  "
                      "1000        0 %d 1 0000000000000000 20 4 30 10 -1\n",
                      prefix, there.sin_addr.s_addr, unsigned{ntohs(there.sin_port)}, prefix,
                      here.sin_addr.s_addr, unsigned{ntohs(here.sin_port)}, inode);
        write("net/" + list, line);
    }

    std::string path;
};

} // namespace

TEST(OwnersOfPeers, KnowsTheProcessItself) {
    Door door;
    const Child child = shell(connectAndStay, {door.port()});
    EXPECT_EQ(door.nextOwner(child), SocketOwner::ours);
}

TEST(OwnersOfPeers, KnowsTheShellsGrandchild) {
    Door door;
    const Child child = shell(
        "(bash -c '" + std::string(connectAndStay) + "; true' bash $1; true); true", {door.port()});
    EXPECT_EQ(door.nextOwner(child), SocketOwner::ours);
}

// A question to the kernel takes the same short time however long the lists are; so it must do
// where they are empty.
TEST(OwnersOfPeers, NeedsNoListsWhereTheKernelAnswers) {
    const int question = ::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, NETLINK_SOCK_DIAG);
    if (question < 0)
        GTEST_SKIP() << "this kernel does not answer";
    ::close(question);
    constexpr int notAllowed = 77;
    const TempDirectory nothing;
    const ChildOutcome outcome = runInChild([&] {
        if (unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0 ||
            mount(nothing.path().c_str(), "/proc/self/net", nullptr, MS_BIND, nullptr) != 0)
            return notAllowed;
        Door door;
        const Child child = shell(connectAndStay, {door.port()});
        return door.nextOwner(child) == SocketOwner::ours ? 0 : 1;
    });
    if (outcome.exited(notAllowed))
        GTEST_SKIP() << "may not mount anything";
    EXPECT_TRUE(outcome.exited(0)) << outcome.status << outcome.errors;
}

// Job control gives every pipeline a group of its own, and setsid even a session.
TEST(OwnersOfPeers, KnowsADescendantInAnotherGroup) {
    Door door;
    const Child jobs =
        shell("set -m; bash -c '" + std::string(connectAndStay) + "; true' bash $1 & wait",
              {door.port()});
    EXPECT_EQ(door.nextOwner(jobs), SocketOwner::ours);
    const Child session = shell(
        "setsid bash -c '" + std::string(connectAndStay) + "; true' bash $1 & wait", {door.port()});
    EXPECT_EQ(door.nextOwner(session), SocketOwner::ours);
}

// The process that connected has handed the connection on and is gone.
TEST(OwnersOfPeers, KnowsAnOrphanOfTheGroup) {
    Door door;
    const Child child = shell(
        "(exec 3<>/dev/tcp/127.0.0.1/$1; (sleep 0.2; read <&3) & ); sleep 100", {door.port()});
    const int fd = door.accept();
    for (int i = 0; i < 20; ++i) {
        EXPECT_EQ(door.ownerOf(fd, child.group()), SocketOwner::ours);
        pause(5);
    }
}

TEST(OwnersOfPeers, CallsEverybodyElseAStranger) {
    Door door;
    const Child child = shell("sleep 1000", {});
    const Child other = shell(connectAndStay, {door.port()});
    const int fd = door.accept();
    EXPECT_EQ(door.ownerOf(fd, child.group()), SocketOwner::stranger);
    EXPECT_EQ(door.ownerOf(fd, other.group()), SocketOwner::ours);
    const Client we(door.number());
    EXPECT_EQ(door.nextOwner(child), SocketOwner::stranger) << "this process, its parent";
}

TEST(OwnersOfPeers, AnswersForManyAtOnce) {
    Door door;
    const Child child = shell(connectAndStay, {door.port()});
    std::vector<int> fds{door.accept()};
    std::vector<std::unique_ptr<Client>> strangers;
    for (int i = 0; i < 30; ++i) {
        strangers.push_back(std::make_unique<Client>(door.number()));
        fds.push_back(door.accept());
    }
    std::swap(fds[0], fds[17]);
    const auto owners = ownersOfPeers(fds, child.group());
    ASSERT_EQ(owners.size(), 31U);
    for (size_t i = 0; i < owners.size(); ++i)
        EXPECT_EQ(owners[i], i == 17 ? SocketOwner::ours : SocketOwner::stranger) << i;
}

// Where the kernel does not answer questions its lists say the same.
TEST(OwnersOfPeers, ReadsTheSystemsLists) {
    Door door;
    const Child child = shell(connectAndStay, {door.port()});
    const int fd = door.accept();
    const Client stranger(door.number());
    const int other = door.accept();
    const std::filesystem::path path = testing::TempDir() + "lists_" + std::to_string(getpid());
    std::filesystem::create_directory(path);
    for (const auto& entry : std::filesystem::directory_iterator("/proc"))
        if (entry.path().filename() != "self")
            std::filesystem::create_symlink(entry.path(), path / entry.path().filename());
    std::filesystem::create_symlink(std::to_string(::getpid()), path / "self");
    EXPECT_EQ(door.ownerOf(fd, child.group(), path), SocketOwner::ours);
    EXPECT_EQ(door.ownerOf(other, child.group(), path), SocketOwner::stranger);
    std::filesystem::remove_all(path);
}

// A player that connects by an IPv6 socket to the IPv4 address, as Java has them.
TEST(OwnersOfPeers, KnowsAnIPv6SocketThatTalksIPv4) {
    const int probe = ::socket(AF_INET6, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (probe < 0)
        GTEST_SKIP() << "no IPv6 here";
    ::close(probe);
    Door door;
    const Child child = shell("exec 3<>/dev/tcp/::ffff:127.0.0.1/$1; read <&3", {door.port()});
    const Child other = shell("sleep 1000", {});
    const int fd = door.accept();
    EXPECT_EQ(door.ownerOf(fd, child.group()), SocketOwner::ours);
    EXPECT_EQ(door.ownerOf(fd, other.group()), SocketOwner::stranger);
}

TEST(OwnersOfPeers, OfAClosedConnectionNothingIsKnown) {
    Door door;
    const Child child = shell("sleep 1000", {});
    auto client = std::make_unique<Client>(door.number());
    const int fd = door.accept();
    client->close();
    EXPECT_EQ(door.ownerOf(fd, child.group()), SocketOwner::unknown);
    Client angry(door.number());
    const int reset = door.accept();
    angry.reset();
    EXPECT_EQ(door.ownerOf(reset, child.group()), SocketOwner::unknown);
}

TEST(OwnersOfPeers, KnowsNothingWhereTheSystemDoesNotTell) {
    Door door;
    const Child child = shell(connectAndStay, {door.port()});
    const int fd = door.accept();
    EXPECT_EQ(door.ownerOf(fd, child.group(), "/nonexistent"), SocketOwner::unknown);
    EXPECT_EQ(door.ownerOf(fd, 0), SocketOwner::unknown);
    EXPECT_EQ(door.ownerOf(-1, child.group()), SocketOwner::unknown);

    const FakeProc other; // lists made for another PID namespace
    other.peer("tcp", fd, 77);
    other.process(child.group(), 1, child.group(), {77});
    EXPECT_EQ(door.ownerOf(fd, child.group(), other.path), SocketOwner::ours);
    std::filesystem::remove(other.path + "/self");
    std::filesystem::create_symlink(std::to_string(::getpid() + 1), other.path + "/self");
    EXPECT_EQ(door.ownerOf(fd, child.group(), other.path), SocketOwner::unknown);
}

TEST(OwnersOfPeers, ReadsTheListsAsTheyAre) {
    Door door;
    const Client client(door.number());
    const int fd = door.accept();
    const auto ask = [&](const FakeProc& proc) { return door.ownerOf(fd, 500, proc.path); };
    {
        const FakeProc proc;
        proc.process(500, 1, 500, {7});
        EXPECT_EQ(ask(proc), SocketOwner::unknown) << "the connection is not listed";
        proc.write("net/tcp", "nonsense\n   1: 0100007F:00ZZ 0100007F:0001 01 a b c d e f 7 1\n");
        proc.peer("tcp", fd, 7);
        EXPECT_EQ(ask(proc), SocketOwner::ours);
    }
    {
        const FakeProc proc; // an IPv6 socket that talks IPv4, as Java has them
        proc.peer("tcp6", fd, 8);
        proc.process(500, 1, 500, {7});
        EXPECT_EQ(ask(proc), SocketOwner::stranger);
        proc.process(501, 1, 500, {8}, "((a) b ) R 9 9)", "R");
        EXPECT_EQ(ask(proc), SocketOwner::ours) << "a name may hold anything";
    }
    {
        const FakeProc proc; // a descendant over several steps; its ancestors in other groups
        proc.peer("tcp", fd, 9);
        proc.process(500, 1, 500, {});
        proc.process(600, 500, 600, {});
        proc.process(400, 600, 400, {9});
        EXPECT_EQ(ask(proc), SocketOwner::ours);
    }
    {
        const FakeProc proc; // parents in a ring, which no system should list
        proc.peer("tcp", fd, 9);
        proc.process(500, 1, 500, {});
        proc.process(600, 601, 600, {9});
        proc.process(601, 600, 600, {});
        EXPECT_EQ(ask(proc), SocketOwner::stranger);
    }
    {
        const FakeProc proc; // the player is not listed at all
        proc.peer("tcp", fd, 9);
        proc.process(600, 1, 600, {9});
        EXPECT_EQ(ask(proc), SocketOwner::unknown);
    }
    {
        const FakeProc proc; // a zombie holds nothing, though its number is still in the list
        proc.peer("tcp", fd, 9);
        proc.process(500, 1, 500, {}, "(sh)", "Z");
        EXPECT_EQ(ask(proc), SocketOwner::unknown);
        proc.process(501, 1, 500, {});
        EXPECT_EQ(ask(proc), SocketOwner::stranger);
    }
    {
        const FakeProc proc; // listed without an owner: the other end was closed
        proc.peer("tcp", fd, 0);
        proc.process(500, 1, 500, {0});
        EXPECT_EQ(ask(proc), SocketOwner::unknown);
    }
}

// Of processes whose descriptors may not be looked at nobody can be called a stranger.
TEST(OwnersOfPeers, ToleratesWhatMayNotBeLookedAt) {
    constexpr uid_t nobody = 65534;
    Door door;
    const Client client(door.number());
    const int fd = door.accept();
    const FakeProc proc;
    std::filesystem::permissions(proc.path, std::filesystem::perms(0755));
    proc.peer("tcp", fd, 7);
    proc.process(500, 1, 500, {});
    const uid_t us = ::geteuid(); // root may look at everything
    const auto ask = [&] {
        EXPECT_EQ(::seteuid(us == 0 ? nobody : us), 0);
        const SocketOwner owner = door.ownerOf(fd, 500, proc.path);
        EXPECT_EQ(::seteuid(us), 0);
        return owner;
    };
    EXPECT_EQ(ask(), SocketOwner::stranger);
    std::filesystem::permissions(proc.path + "/500/fd", std::filesystem::perms::none);
    EXPECT_EQ(ask(), SocketOwner::unknown);
    std::filesystem::permissions(proc.path + "/500/fd", std::filesystem::perms::owner_all);
}

} // namespace tamarin::test
