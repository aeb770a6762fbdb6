// SPDX-License-Identifier: Apache-2.0
// clients SERVER reads|writes CLIENTS SECONDS PORTS: clients that stay connected read or set the VLAN of one
// port after the other, each as fast as it can. SERVER is "qvs" for the host of the environment, which has a
// switch sw, or the path of the socket of an ovsdb-server. Prints the number of operations a second, and in
// microseconds the latency that 50, 99 and 99.9 % of them do not exceed and the largest one.
#include <qvs/qvs.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

[[noreturn]] void give(const char *why) {
    fprintf(stderr, "clients: %s\n", why);
    exit(1);
}

struct Work {
    std::string server;
    bool writes;
    int clients;
    double seconds;
    unsigned ports;
};

// What one client measured, in memory that its parent sees.
struct Latencies {
    static constexpr size_t kMost = 4 << 20;
    size_t count;
    float microseconds[kMost];
};

void operateLibrary(const Work &work, unsigned turn) {
    const std::string port = "port" + std::to_string(turn % work.ports);
    if (work.writes) {
        const auto vlan = static_cast<uint16_t>(turn % 4000 + 1);
        if (VSDVS_SetPortVLANPolicy("sw", port.c_str(), vlan, VSDVS_NO_PRIORITY, 0, 0, nullptr, 0) != HYP_OK)
            give("a VLAN was not set");
        return;
    }
    void *policy = nullptr;
    uint32_t priority = 0;
    // A port without a VLAN is answered, too.
    const HYP_ReturnStatus status = VSDVS_GetPortVLANPolicy("sw", port.c_str(), &policy, &priority);
    if (status != HYP_OK && status != HYP_NOT_FOUND) give("a VLAN was not read");
    free(policy);
}

// One transaction of the database protocol (RFC 7047). The reply has ended when its braces have.
void operateDatabase(int connection, const Work &work, unsigned turn) {
    char text[400];
    const int length =
        snprintf(text, sizeof text,
                 R"({"method":"transact","id":0,"params":["Open_vSwitch",{"op":"%s","table":"Port",)"
                 R"("where":[["name","==","p%u"]],%s}]})",
                 work.writes ? "update" : "select", turn % work.ports,
                 work.writes ? (R"("row":{"tag":)" + std::to_string(turn % 4000 + 1) + "}").c_str()
                             : R"("columns":["tag"])");
    if (write(connection, text, static_cast<size_t>(length)) != length) give("a transaction was not sent");
    std::string reply;
    for (int open = 0; reply.empty() || open != 0;) {
        char piece[4096];
        const ssize_t size = read(connection, piece, sizeof piece);
        if (size <= 0) give("a transaction was not answered");
        for (const char letter : std::string_view(piece, static_cast<size_t>(size)))
            open += letter == '{' ? 1 : letter == '}' ? -1 : 0;
        reply.append(piece, static_cast<size_t>(size));
    }
    if (reply.find(R"("error":null)") == std::string::npos || reply.find(R"("details")") != std::string::npos)
        give(reply.c_str());
}

int connectDatabase(const std::string &path) {
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path) give("the path of the socket is too long");
    memcpy(address.sun_path, path.c_str(), path.size());
    const int connection = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (connect(connection, reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0)
        give("no connection");
    return connection;
}

void runClient(const Work &work, unsigned number, Latencies *latencies) {
    const bool library = work.server == "qvs";
    const int connection = library ? -1 : connectDatabase(work.server);
    if (library && DVSLoadConfig() != HYP_OK) give("the snapshot was not loaded");
    const auto end = Clock::now() + std::chrono::duration<double>(work.seconds);
    auto begin = Clock::now();
    // Each client begins at a port of its own.
    for (unsigned turn = number * 997; begin < end && latencies->count < Latencies::kMost; ++turn) {
        library ? operateLibrary(work, turn) : operateDatabase(connection, work, turn);
        const auto now = Clock::now();
        latencies->microseconds[latencies->count++] =
            std::chrono::duration<float, std::micro>(now - begin).count();
        begin = now;
    }
}

void report(std::vector<float> all, double seconds) {
    if (all.empty()) give("nothing was done");
    std::sort(all.begin(), all.end());
    const auto atMost = [&](double part) {
        return static_cast<double>(all[static_cast<size_t>(part * static_cast<double>(all.size() - 1))]);
    };
    printf("%.0f %.1f %.1f %.1f %.1f\n", static_cast<double>(all.size()) / seconds, atMost(0.5), atMost(0.99),
           atMost(0.999), atMost(1));
}

}  // namespace

int main(int argc, char **argv) {
    if (argc != 6) give("usage: clients SERVER reads|writes CLIENTS SECONDS PORTS");
    const Work work = {argv[1], strcmp(argv[2], "writes") == 0, atoi(argv[3]), atof(argv[4]),
                       static_cast<unsigned>(atoi(argv[5]))};
    const size_t size = sizeof(Latencies) * static_cast<size_t>(work.clients);
    void *shared =
        mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (shared == MAP_FAILED || work.ports == 0) give("no memory, or no ports");
    auto *latencies = static_cast<Latencies *>(shared);
    for (int i = 0; i < work.clients; ++i) {
        if (fork() != 0) continue;
        runClient(work, static_cast<unsigned>(i), &latencies[i]);
        _exit(0);
    }
    int status = 0;
    for (int i = 0; i < work.clients; ++i) {
        if (wait(&status) < 0 || status != 0) give("a client failed");
    }
    std::vector<float> all;
    for (int i = 0; i < work.clients; ++i)
        all.insert(all.end(), latencies[i].microseconds, latencies[i].microseconds + latencies[i].count);
    report(std::move(all), work.seconds);
    return 0;
}
