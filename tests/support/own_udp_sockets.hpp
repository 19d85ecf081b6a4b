// The UDP sockets this process has open (in a test: Cyclone's, for the
// participants it made), read from /proc, and datagrams sent to them on
// loopback as any peer could.
#pragma once

#include <arpa/inet.h>
#include <dirent.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace vexar_test {

struct UdpSocketState {
    int port;
    unsigned long waitingBytes;  // received, not yet read by the process
    unsigned long drops;         // datagrams the kernel dropped: the buffer was full
};

inline std::set<unsigned long> ownSocketInodes() {
    std::set<unsigned long> inodes;
    DIR *fds = opendir("/proc/self/fd");
    if (fds == nullptr) return inodes;
    while (const dirent *entry = readdir(fds)) {
        char target[64] = {};
        const std::string path = std::string("/proc/self/fd/") + entry->d_name;
        unsigned long inode = 0;
        if (readlink(path.c_str(), target, sizeof target - 1) > 0 && std::sscanf(target, "socket:[%lu]", &inode) == 1) {
            inodes.insert(inode);
        }
    }
    closedir(fds);
    return inodes;
}

// IPv4 UDP sockets of this process, from /proc/self/net/udp (which lists the
// whole network namespace: the socket inodes pick ours).
inline std::vector<UdpSocketState> ownUdpSockets() {
    const std::set<unsigned long> inodes = ownSocketInodes();
    std::vector<UdpSocketState> sockets;
    std::ifstream table("/proc/self/net/udp");
    std::string line;
    std::getline(table, line);  // the column names
    while (std::getline(table, line)) {
        std::istringstream fields(line);
        std::string slot, local, remote, state, queues, timer, retransmits, uid, timeout, references, pointer;
        unsigned long inode = 0, drops = 0;
        fields >> slot >> local >> remote >> state >> queues >> timer >> retransmits >> uid >> timeout >> inode >>
            references >> pointer >> drops;
        if (!fields || inodes.count(inode) == 0) continue;
        const int port = std::stoi(local.substr(local.find(':') + 1), nullptr, 16);
        const unsigned long waiting = std::stoul(queues.substr(queues.find(':') + 1), nullptr, 16);
        sockets.push_back({port, waiting, drops});
    }
    return sockets;
}

// Waits until the process has read every datagram its UDP sockets received.
inline bool allReceivedRead(std::chrono::milliseconds timeout) {
    const auto deadline = std::chrono::steady_clock::now() + timeout;
    for (;;) {
        bool waiting = false;
        for (const UdpSocketState &socket : ownUdpSockets()) waiting = waiting || socket.waitingBytes > 0;
        if (!waiting) return true;
        if (std::chrono::steady_clock::now() > deadline) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
}

// Sends `bytes` `times` times to 127.0.0.1:`port`.
inline void sendDatagrams(int port, std::string_view bytes, int times) {
    const int sender = socket(AF_INET, SOCK_DGRAM, 0);
    sockaddr_in to{};
    to.sin_family = AF_INET;
    to.sin_port = htons(static_cast<uint16_t>(port));
    to.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    for (int sent = 0; sent < times; ++sent) {
        sendto(sender, bytes.data(), bytes.size(), 0, reinterpret_cast<const sockaddr *>(&to), sizeof to);
    }
    close(sender);
}

}  // namespace vexar_test
