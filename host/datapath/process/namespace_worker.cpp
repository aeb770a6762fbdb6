// SPDX-License-Identifier: Apache-2.0
// The process that makes network namespaces and their interfaces for the data path.
#include "datapath/process/namespace_worker.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <linux/if_packet.h>
#include <sched.h>
#include <sys/prctl.h>

#include <cerrno>
#include <csignal>
#include <fstream>
#include <string>
#include <system_error>

#include <fmt/format.h>

#include "datapath/process/interface_features.h"
#include "datapath/process/netlink.h"
#include "datapath/process/packet_socket.h"
#include "wire/descriptors.h"

namespace qvs::datapath {

namespace {

constexpr char kClientInterface[] = "eth0";

bool writeText(const char *path, const std::string &text) {
    const wire::File file(open(path, O_WRONLY | O_CLOEXEC));
    return file && write(file.get(), text.data(), text.size()) == static_cast<ssize_t>(text.size());
}

int numberIn(const char *path, int absent) {
    std::ifstream file(path);
    int number = absent;
    return file >> number ? number : absent;
}

wire::File currentNamespace(const char *kind) {
    return wire::File(open(fmt::format("/proc/self/ns/{}", kind).c_str(), O_RDONLY | O_CLOEXEC));
}

// Names the setting that forbids namespaces, and how to allow them.
std::string whyForbidden(int reason) {
    const std::string text = "this system forbids network namespaces to users: ";
    const struct {
        const char *path;
        int forbids;
        const char *remedy;
    } kSettings[] = {
        {"/proc/sys/kernel/unprivileged_userns_clone", 0, "sysctl kernel.unprivileged_userns_clone=1"},
        {"/proc/sys/kernel/apparmor_restrict_unprivileged_userns", 1,
         "sysctl kernel.apparmor_restrict_unprivileged_userns=0"},
        {"/proc/sys/user/max_user_namespaces", 0, "sysctl user.max_user_namespaces=10000"},
        {"/proc/sys/user/max_net_namespaces", 0, "sysctl user.max_net_namespaces=10000"},
    };
    for (const auto &setting : kSettings) {
        if (numberIn(setting.path, -1) == setting.forbids)
            return text + fmt::format("{} is {}; as root, run \"{}\"", setting.path, setting.forbids,
                                      setting.remedy);
    }
    return text + fmt::format(
                      "{}; in a container, allow unshare and setns (Docker: --security-opt "
                      "seccomp=unconfined), or attach to sockets or capture files instead",
                      std::generic_category().message(reason));
}

// Enters a user namespace and a network namespace of its own. Root can do without the first one.
void makeBase(bool *hasUser) {
    const auto user = geteuid();
    const auto group = getegid();
    *hasUser = unshare(CLONE_NEWUSER | CLONE_NEWNET) == 0;
    if (!*hasUser) {
        const int reason = errno;
        if (user == 0 && unshare(CLONE_NEWNET) == 0) return;
        throw std::runtime_error(whyForbidden(reason));
    }
    // Group ids can be mapped only by a process that cannot change its groups.
    writeText("/proc/self/setgroups", "deny");
    if (!writeText("/proc/self/uid_map", fmt::format("0 {} 1", user)) ||
        !writeText("/proc/self/gid_map", fmt::format("0 {} 1", group)))
        throw std::runtime_error(whyForbidden(errno));
}

void enter(int file, int kind) {
    if (setns(file, kind) != 0)
        throw std::system_error(errno, std::generic_category(), "cannot enter a namespace");
}

class Worker {
  public:
    Worker(int socket, int user, int base) : socket_(socket) {
        bool hasUser = user >= 0;
        if (base >= 0) {
            if (hasUser) enter(user, CLONE_NEWUSER);
            enter(base, CLONE_NEWNET);
        } else {
            makeBase(&hasUser);
        }
        base_ = currentNamespace("net");
        // The switch's ends carry frames and have no protocols of their own.
        for (const char *which : {"all", "default"})
            writeText(fmt::format("/proc/sys/net/ipv6/conf/{}/disable_ipv6", which).c_str(), "1");
        links_.emplace();
        const wire::File userFile = hasUser ? currentNamespace("user") : wire::File();
        if (hasUser)
            reply({}, "", {userFile.get(), base_.get()});
        else
            reply({}, "", {base_.get()});
    }

    [[noreturn]] void serve() {
        for (;;) {
            NamespaceRequest request;
            std::vector<wire::File> files;
            const ssize_t received = wire::receiveWith(socket_, &request, sizeof request, files, 0);
            if (received < 0 && errno == EINTR) continue;
            if (received != static_cast<ssize_t>(sizeof request)) _exit(0);
            try {
                if (request.open)
                    openPort(request, files.empty() ? wire::File() : std::move(files.front()));
                else
                    closePort(request.port);
            } catch (const std::system_error &error) {
                returnToBase();
                reply({}, error.what(), {});
            }
        }
    }

  private:
    static std::string nameOf(uint32_t port) { return fmt::format("p{}", port); }

    void reply(const NamespaceAnswer &answer, const std::string &problem,
               std::initializer_list<int> files) const {
        std::string message(reinterpret_cast<const char *>(&answer), sizeof answer);
        message += problem;
        if (wire::sendWith(socket_, message.data(), message.size(), {files.begin(), files.size()}, 0) < 0)
            _exit(1);
    }

    void returnToBase() const {
        if (setns(base_.get(), CLONE_NEWNET) != 0) _exit(1);
    }

    void closePort(uint32_t port) {
        if (const auto link = links_->find(nameOf(port))) links_->remove(link->index);
        reply({}, "", {});
    }

    void openPort(const NamespaceRequest &request, wire::File client) {
        if (client) {
            enter(client.get(), CLONE_NEWNET);
        } else {
            if (unshare(CLONE_NEWNET) != 0)
                throw std::system_error(errno, std::generic_category(), "cannot make a network namespace");
            client = currentNamespace("net");
        }
        Netlink links;
        auto there = links.find(kClientInterface);
        auto here = links_->find(nameOf(request.port));
        const bool isPair = here && there && there->peer == here->index && here->peer == there->index;
        if (!isPair) {
            if (there) links.remove(there->index);
            // This also removes its other end.
            if (here && links_->find(here->name)) links_->remove(here->index);
            Link near;
            near.name = nameOf(request.port);
            near.mtu = request.mtu;
            Link far;
            far.name = kClientInterface;
            far.mtu = request.mtu;
            far.address = request.address;
            links_->makePair(near, far, client.get());
            here = links_->find(near.name);
            there = links.find(far.name);
            if (!here || !there)
                throw std::system_error(ENODEV, std::generic_category(), "a pair of interfaces");
        }
        there->up = there->up || !isPair;
        there->mtu = request.mtu;
        there->address = request.restored && isPair ? 0 : request.address;
        const wire::File notices = watchLinks();
        links.change(*there);
        if (auto loopback = links.find("lo")) {
            loopback->up = true;
            loopback->address = 0;
            loopback->mtu = 0;
            links.change(*loopback);
        }
        disableUnusualOffloads(kClientInterface);
        const auto state = links.find(kClientInterface);
        returnToBase();

        const wire::File frames = openPacketSocket(here->index);
        here->up = true;
        here->mtu = request.mtu;
        here->address = 0;
        links_->change(*here);
        NamespaceAnswer answer;
        answer.address = state ? state->address : 0;
        answer.index = there->index;
        answer.up = state && state->up;
        answer.promiscuous = state && state->promiscuous;
        reply(answer, "", {frames.get(), notices.get(), client.get()});
    }

    int socket_;
    wire::File base_;
    std::optional<Netlink> links_;  // of the switch's ends
};

}  // namespace

void runNamespaceWorker(int socket, int user, int base) {
    try {
        Worker worker(socket, user, base);
        // Entering a user namespace resets this.
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        worker.serve();
    } catch (const std::exception &error) {
        const NamespaceAnswer answer;
        std::string message(reinterpret_cast<const char *>(&answer), sizeof answer);
        message += error.what();
        wire::sendWith(socket, message.data(), message.size(), {}, 0);
        _exit(1);
    }
}

}  // namespace qvs::datapath
