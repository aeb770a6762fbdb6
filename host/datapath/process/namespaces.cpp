// SPDX-License-Identifier: Apache-2.0
// The network namespaces of clients, from the data path's side: the worker's start, its answers, descriptors.
#include "datapath/process/namespaces.h"

#include <fcntl.h>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <sys/wait.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>

#include "datapath/process/log.h"
#include "datapath/process/loop.h"
#include "wire/descriptors.h"

namespace qvs::datapath {

namespace {

// The names under which the kernel keeps descriptors.
constexpr char kUserName[] = "user";
constexpr char kBaseName[] = "net";
constexpr std::string_view kClientPrefix = "client ";

std::string keptName(const std::string &client) {
    return std::string(kClientPrefix) + client;
}

// Closes every descriptor from 3 on but these.
void closeOthers(std::vector<int> keep) {
    std::sort(keep.begin(), keep.end());
    unsigned next = 3;
    for (const int file : keep) {
        if (file < 3) continue;
        if (static_cast<unsigned>(file) > next) close_range(next, static_cast<unsigned>(file) - 1, 0);
        next = static_cast<unsigned>(file) + 1;
    }
    close_range(next, ~0u, 0);
}

}  // namespace

Namespaces::Namespaces(Loop &loop, std::function<void(const std::string &name, int file)> keep)
    : loop_(loop), keep_(std::move(keep)) {}

Namespaces::~Namespaces() {
    if (worker_) loop_.forget(worker_.get());
}

void Namespaces::restore(const std::string &name, wire::File file) {
    if (name == kUserName) {
        user_ = std::move(file);
    } else if (name == kBaseName) {
        base_ = std::move(file);
    } else if (name.starts_with(kClientPrefix)) {
        clients_[name.substr(kClientPrefix.size())] = {std::move(file), true};
    }
}

void Namespaces::start() {
    int ends[2];
    if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0)
        throw AttachmentError(fmt::format("cannot make a socket: {}", strerror(errno)));
    worker_ = wire::File(ends[0]);
    const wire::File other(ends[1]);
    process_ = fork();
    if (process_ == 0) {
        signal(SIGTERM, SIG_DFL);
        closeOthers({other.get(), user_.get(), base_.get()});
        runNamespaceWorker(other.get(), user_.get(), base_.get());
    }
    if (process_ < 0) {
        worker_.reset(-1);
        throw AttachmentError(fmt::format("cannot make a process: {}", strerror(errno)));
    }
    fcntl(worker_.get(), F_SETFL, O_NONBLOCK);
    loop_.watch(worker_.get(), EPOLLIN, [this](uint32_t) { receive(); });
}

// Fails all requests to the worker. The next request starts another worker.
void Namespaces::ended(const std::string &problem) {
    loop_.forget(worker_.get());
    worker_.reset(-1);
    waitpid(process_, nullptr, 0);
    based_ = false;
    std::deque<Pending> failed;
    failed.swap(pending_);
    std::move(waiting_.begin(), waiting_.end(), std::back_inserter(failed));
    waiting_.clear();
    for (Pending &each : failed) {
        if (!each.opened) continue;
        OpenedNamespace none;
        none.problem = problem;
        each.opened(std::move(none));
    }
}

void Namespaces::open(const std::string &client, const NamespaceRequest &request, Opened opened) {
    for (const auto &[port, name] : ports_) {
        if (name == client)
            throw AttachmentError(fmt::format(
                "the namespace {} is attached already; detach it first, or name another one", client));
    }
    if (!worker_) start();
    // An attachment that changed keeps its interface, with all its addresses.
    const auto closing = closing_.find(request.port);
    if (closing != closing_.end() && closing->second == client) closing_.erase(closing);
    removeClosed();
    ports_[request.port] = client;
    send({request, client, std::move(opened)});
}

void Namespaces::close(uint32_t port) {
    const auto found = ports_.find(port);
    if (found == ports_.end()) return;
    closing_[port] = found->second;
    ports_.erase(found);
    for (auto *queue : {&waiting_, &pending_}) {
        for (Pending &each : *queue) {
            if (each.request.port == port) each.opened = nullptr;
        }
    }
    loop_.later([this] { removeClosed(); });
}

void Namespaces::removeClosed() {
    for (const auto &[port, client] : closing_) {
        if (!worker_) break;
        NamespaceRequest request;
        request.port = port;
        request.open = false;
        send({request, {}, {}});
    }
    closing_.clear();
}

// One request is under way at a time, because the namespace that one makes is what the next one needs.
void Namespaces::send(Pending pending) {
    waiting_.push_back(std::move(pending));
    sendNext();
}

void Namespaces::sendNext() {
    if (!based_ || !pending_.empty() || waiting_.empty()) return;
    pending_.push_back(std::move(waiting_.front()));
    waiting_.pop_front();
    Pending &next = pending_.back();
    std::vector<int> files;
    if (const auto found = clients_.find(next.client); next.request.open && found != clients_.end()) {
        files.push_back(found->second.file.get());
        next.request.restored = found->second.restored;
    }
    if (wire::sendWith(worker_.get(), &next.request, sizeof next.request, files, 0) < 0)
        warn("the process that makes namespaces does not listen: {}", strerror(errno));
}

void Namespaces::receive() {
    char buffer[4096];
    std::vector<wire::File> files;
    const ssize_t received = wire::receiveWith(worker_.get(), buffer, sizeof buffer, files, MSG_DONTWAIT);
    if (received < 0 && (errno == EAGAIN || errno == EINTR)) return;
    NamespaceAnswer head;
    if (received < static_cast<ssize_t>(sizeof head))
        return ended("the process that makes namespaces ended; detach and attach again");
    memcpy(&head, buffer, sizeof head);
    const std::string problem(buffer + sizeof head, static_cast<size_t>(received) - sizeof head);
    if (!based_ && !problem.empty()) return ended(problem);
    if (!based_) {
        learnBase(files);
    } else {
        answer(head, problem, files);
    }
    sendNext();
}

void Namespaces::learnBase(std::vector<wire::File> &files) {
    based_ = true;
    // Those that were restored are kept already.
    if (base_ || files.empty()) return;
    base_ = std::move(files.back());
    keep_(kBaseName, base_.get());
    if (files.size() < 2) return;
    user_ = std::move(files.front());
    keep_(kUserName, user_.get());
}

void Namespaces::answer(const NamespaceAnswer &head, const std::string &problem,
                        std::vector<wire::File> &files) {
    if (pending_.empty()) return;
    const Pending asked = std::move(pending_.front());
    pending_.pop_front();
    OpenedNamespace opened;
    opened.problem = problem;
    if (problem.empty() && files.size() != 3)
        opened.problem = "the data path has no more descriptors; raise the limit of open files (ulimit -n)";
    if (files.size() == 3) {
        opened.frames = std::move(files[0]);
        opened.links = std::move(files[1]);
        if (!clients_.contains(asked.client)) {
            keep_(keptName(asked.client), files[2].get());
            clients_[asked.client].file = std::move(files[2]);
        }
        // Later changes of the address come from the user.
        clients_[asked.client].restored = false;
    }
    opened.client = head;
    if (asked.opened) asked.opened(std::move(opened));
}

void Namespaces::retain(const std::vector<std::string> &clients) {
    for (auto each = clients_.begin(); each != clients_.end();) {
        const bool stays = std::find(clients.begin(), clients.end(), each->first) != clients.end();
        if (!stays) keep_(keptName(each->first), -1);
        each = stays ? std::next(each) : clients_.erase(each);
    }
}

std::vector<std::string> Namespaces::names() const {
    std::vector<std::string> names;
    for (const auto &[name, client] : clients_)
        names.push_back(name);
    return names;
}

std::vector<int> Namespaces::descriptors(const std::string &client) const {
    const auto found = clients_.find(client);
    if (found == clients_.end()) return {};
    if (!user_) return {found->second.file.get()};
    return {user_.get(), found->second.file.get()};
}

}  // namespace qvs::datapath
