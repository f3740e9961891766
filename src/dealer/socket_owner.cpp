#include "dealer/socket_owner.h"

#include <algorithm>
#include <arpa/inet.h>
#include <atomic>
#include <cerrno>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <dirent.h>
#include <linux/inet_diag.h>
#include <linux/netlink.h>
#include <linux/sock_diag.h>
#include <map>
#include <memory>
#include <netinet/in.h>
#include <optional>
#include <set>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>

namespace tamarin {

namespace {

struct CloseDirectory {
    void operator()(DIR* directory) const { ::closedir(directory); }
};
using Directory = std::unique_ptr<DIR, CloseDirectory>;

struct CloseFile {
    void operator()(FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<FILE, CloseFile>;

// An address and port as the lists have them: the address's four bytes in memory order.
struct Endpoint {
    uint32_t address = 0;
    uint16_t port = 0;
    auto operator<=>(const Endpoint&) const = default;
};

struct Ends {
    Endpoint local;
    Endpoint remote;
    auto operator<=>(const Ends&) const = default;
};

std::optional<Ends> connectionOf(int socket) {
    const auto end = [&](auto ask) -> std::optional<Endpoint> {
        sockaddr_in address{};
        socklen_t length = sizeof address;
        if (ask(socket, reinterpret_cast<sockaddr*>(&address), &length) != 0 ||
            address.sin_family != AF_INET)
            return std::nullopt;
        return Endpoint{address.sin_addr.s_addr, ntohs(address.sin_port)};
    };
    const auto local = end(::getsockname);
    const auto remote = end(::getpeername);
    if (!local || !remote)
        return std::nullopt;
    return Ends{*local, *remote};
}

// "0100007F:1F90", or with the 24 digits before it that make an IPv6 address of an IPv4 one.
std::optional<Endpoint> parseEndpoint(std::string_view text) {
    constexpr std::string_view mapped = "0000000000000000FFFF0000";
    if (text.starts_with(mapped))
        text.remove_prefix(mapped.size());
    constexpr size_t addressDigits = 8;
    if (text.size() != addressDigits + 5 || text[addressDigits] != ':')
        return std::nullopt;
    Endpoint endpoint;
    const auto read = [](std::string_view digits, auto& value) {
        const auto [end, error] =
            std::from_chars(digits.data(), digits.data() + digits.size(), value, 16);
        return error == std::errc{} && end == digits.data() + digits.size();
    };
    if (!read(text.substr(0, addressDigits), endpoint.address) ||
        !read(text.substr(addressDigits + 1), endpoint.port))
        return std::nullopt;
    return endpoint;
}

using Inodes = std::map<Ends, uint64_t>;

// Adds what a list says of the connections that are asked for.
void readList(const std::string& path, const std::set<Ends>& asked, Inodes& inodes) {
    const File file(std::fopen(path.c_str(), "re"));
    if (!file)
        return;
    char line[512];
    while (std::fgets(line, sizeof line, file.get())) {
        char local[64];
        char remote[64];
        unsigned long long inode = 0;
        //  sl local remote st tx:rx tr:when retransmits uid timeout inode
        if (std::sscanf(line, " %*[^:]: %63s %63s %*s %*s %*s %*s %*s %*s %llu", local, remote,
                        &inode) != 3)
            continue;
        const auto from = parseEndpoint(local);
        const auto to = parseEndpoint(remote);
        if (from && to && asked.contains({*from, *to}))
            inodes[{*from, *to}] = inode;
    }
}

// Asks the kernel for each connection by its addresses, which takes microseconds however many
// connections there are: a crowd that comes and goes leaves tens of thousands in the lists. False
// when this kernel does not answer such questions.
bool askKernel(const std::set<Ends>& asked, Inodes& inodes) {
    const int fd = ::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, NETLINK_SOCK_DIAG);
    if (fd < 0)
        return false;
    bool answers = true;
    for (auto connection = asked.begin(); answers && connection != asked.end(); ++connection) {
        struct {
            nlmsghdr header;
            inet_diag_req_v2 request;
        } question{};
        question.header.nlmsg_len = sizeof question;
        question.header.nlmsg_type = SOCK_DIAG_BY_FAMILY;
        question.header.nlmsg_flags = NLM_F_REQUEST;
        question.request.sdiag_family = AF_INET;
        question.request.sdiag_protocol = IPPROTO_TCP;
        question.request.idiag_states = ~0U;
        inet_diag_sockid& id = question.request.id;
        id.idiag_src[0] = connection->local.address;
        id.idiag_sport = htons(connection->local.port);
        id.idiag_dst[0] = connection->remote.address;
        id.idiag_dport = htons(connection->remote.port);
        id.idiag_cookie[0] = id.idiag_cookie[1] = INET_DIAG_NOCOOKIE;

        alignas(nlmsghdr) char answer[4096];
        ssize_t size = -1;
        if (::send(fd, &question, sizeof question, 0) == static_cast<ssize_t>(sizeof question))
            size = ::recv(fd, answer, sizeof answer, MSG_DONTWAIT); // it is there by now
        nlmsghdr header;
        if (size < static_cast<ssize_t>(sizeof header)) {
            answers = false;
            break;
        }
        std::memcpy(&header, answer, sizeof header);
        inet_diag_msg socket{};
        nlmsgerr error{};
        if (header.nlmsg_type == SOCK_DIAG_BY_FAMILY &&
            size >= static_cast<ssize_t>(NLMSG_HDRLEN + sizeof socket)) {
            std::memcpy(&socket, answer + NLMSG_HDRLEN, sizeof socket);
            inodes[*connection] = socket.idiag_inode;
        } else {
            if (size >= static_cast<ssize_t>(NLMSG_HDRLEN + sizeof error))
                std::memcpy(&error, answer + NLMSG_HDRLEN, sizeof error);
            answers = error.error == -ENOENT; // no such connection, or no such question
        }
    }
    ::close(fd);
    // A kernel that has found one connection finds them all. Before that, nothing found tells
    // nothing.
    static std::atomic<bool> proven{false};
    if (!inodes.empty())
        proven = true;
    return answers && proven;
}

struct Process {
    pid_t parent = 0;
    pid_t group = 0;
    bool gone = false; // a zombie, which holds no descriptors
};

std::optional<Process> readProcess(const std::string& proc, const char* pid) {
    const File file(std::fopen((proc + "/" + pid + "/stat").c_str(), "re"));
    char text[1024];
    if (!file)
        return std::nullopt;
    const size_t size = std::fread(text, 1, sizeof text - 1, file.get());
    text[size] = '\0';
    // "PID (NAME) STATE PARENT GROUP", where the name may hold anything.
    const char* const name = std::strrchr(text, ')');
    Process process;
    char state = 0;
    if (!name || std::sscanf(name + 1, " %c %d %d", &state, &process.parent, &process.group) != 3)
        return std::nullopt;
    process.gone = state == 'Z' || state == 'X';
    return process;
}

// The members of the group, and whoever descends from its leader.
std::vector<pid_t> membersOf(pid_t group, const std::string& proc) {
    std::map<pid_t, Process> processes;
    const Directory directory(::opendir(proc.c_str()));
    while (const dirent* const entry = directory ? ::readdir(directory.get()) : nullptr) {
        const std::string_view name(entry->d_name);
        pid_t pid = 0;
        if (std::from_chars(name.data(), name.data() + name.size(), pid).ec != std::errc{})
            continue;
        if (const auto process = readProcess(proc, entry->d_name))
            processes[pid] = *process;
    }
    std::vector<pid_t> members;
    for (const auto& [pid, process] : processes) {
        bool member = process.group == group;
        pid_t ancestor = pid;
        // A chain is no longer than the list, whatever the list says.
        for (size_t step = 0; !member && step < processes.size(); ++step) {
            const auto found = processes.find(ancestor);
            if (found == processes.end())
                break;
            member = ancestor == group;
            ancestor = found->second.parent;
        }
        if (member && !process.gone)
            members.push_back(pid);
    }
    return members;
}

// The inodes of the sockets that a process has open. False when that may not be looked at.
bool addSockets(const std::string& proc, pid_t pid, std::set<uint64_t>& inodes) {
    const std::string folder = proc + "/" + std::to_string(pid) + "/fd";
    const Directory directory(::opendir(folder.c_str()));
    if (!directory)
        return errno != EACCES && errno != EPERM; // else it has just ended
    while (const dirent* const entry = ::readdir(directory.get())) {
        char target[64];
        const ssize_t size =
            ::readlink((folder + "/" + entry->d_name).c_str(), target, sizeof target - 1);
        if (size < 0 && (errno == EACCES || errno == EPERM))
            return false;
        target[std::max<ssize_t>(size, 0)] = '\0';
        unsigned long long inode = 0;
        if (std::sscanf(target, "socket:[%llu]", &inode) == 1)
            inodes.insert(inode);
    }
    return true;
}

// Whether the lists are of the processes as this one knows them.
bool listsOurNamespace(const std::string& proc) {
    char target[32];
    const ssize_t size = ::readlink((proc + "/self").c_str(), target, sizeof target - 1);
    return size > 0 && std::string(target, static_cast<size_t>(size)) == std::to_string(::getpid());
}

struct Sockets {
    std::set<uint64_t> inodes;
    bool complete = false; // every member was looked at, and there was one
};

Sockets socketsOf(pid_t group, const std::string& proc) {
    Sockets sockets;
    const auto members = membersOf(group, proc);
    sockets.complete = !members.empty();
    for (const pid_t pid : members)
        sockets.complete = addSockets(proc, pid, sockets.inodes) && sockets.complete;
    return sockets;
}

} // namespace

std::vector<SocketOwner> ownersOfPeers(std::span<const int> sockets, pid_t group,
                                       const std::string& proc) {
    std::vector<SocketOwner> owners(sockets.size(), SocketOwner::unknown);
    if (group <= 0 || !listsOurNamespace(proc))
        return owners;

    // The other end is listed with our addresses the other way round.
    std::vector<std::optional<Ends>> peers;
    std::set<Ends> asked;
    for (const int socket : sockets) {
        auto& peer = peers.emplace_back(connectionOf(socket));
        if (peer) {
            std::swap(peer->local, peer->remote);
            asked.insert(*peer);
        }
    }
    Inodes inodes;
    if (proc != systemProcesses || !askKernel(asked, inodes))
        for (const char* const list : {"/net/tcp", "/net/tcp6"})
            if (inodes.size() < asked.size())
                readList(proc + list, asked, inodes);

    const auto inodeOf = [&](size_t i) -> uint64_t {
        const auto found = peers[i] ? inodes.find(*peers[i]) : inodes.end();
        return found == inodes.end() ? 0 : found->second; // 0 belongs to no process
    };
    const auto judge = [&](const Sockets& ours) {
        bool strangers = false;
        for (size_t i = 0; i < owners.size(); ++i) {
            const uint64_t inode = inodeOf(i);
            if (inode == 0 || owners[i] == SocketOwner::ours)
                continue;
            if (ours.inodes.contains(inode))
                owners[i] = SocketOwner::ours;
            else
                owners[i] = ours.complete ? SocketOwner::stranger : SocketOwner::unknown;
            strangers = strangers || owners[i] == SocketOwner::stranger;
        }
        return strangers;
    };
    // Nobody is called a stranger after one look: a process may fork between the list of processes
    // and that of its descriptors.
    if (judge(socketsOf(group, proc)))
        judge(socketsOf(group, proc));
    return owners;
}

} // namespace tamarin
