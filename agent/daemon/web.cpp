// SPDX-License-Identifier: Apache-2.0
#include "agent/daemon/web.h"

#include <arpa/inet.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <iterator>

#include "base/failure.h"
#include "base/text.h"
#include "views/http.h"

namespace qvs::fleet {
namespace {

constexpr int kMostClients = 16;

void appendMetrics(fmt::memory_buffer &page, const Numbers &numbers) {
    struct Row {
        const char *name;
        const char *type;
        const char *help;
        uint64_t value;
    };
    const Row rows[] = {
        {"qvs_agent_goal_revision", "gauge", "The published revision.", numbers.goal},
        {"qvs_agent_revision", "gauge", "The revision that the host has.", numbers.revision},
        {"qvs_agent_lag", "gauge", "Revisions between both.",
         numbers.goal > numbers.revision ? numbers.goal - numbers.revision : 0},
        {"qvs_agent_applies_total", "counter", "Revisions that were carried out.", numbers.applies},
        {"qvs_agent_failures_total", "counter", "Revisions that were refused.", numbers.failures},
        {"qvs_agent_drift", "gauge", "Differences between the host and its revision.", numbers.drift},
        {"qvs_agent_corrections_total", "counter", "Times that such differences were undone.",
         numbers.corrections},
        {"qvs_agent_store_up", "gauge", "Whether the store answers.", numbers.storeAnswers ? 1u : 0u},
        {"qvs_agent_store_requests_total", "counter", "Requests to the store.", numbers.requests},
        {"qvs_agent_coordinator", "gauge", "Whether this agent coordinates rollouts.",
         numbers.coordinates ? 1u : 0u},
    };
    for (const Row &row : rows)
        fmt::format_to(std::back_inserter(page), "# HELP {0} {1}\n# TYPE {0} {2}\n{0} {3}\n", row.name,
                       row.help, row.type, row.value);
    constexpr const char *kPhase = "qvs_agent_phase_seconds";
    if (numbers.seconds.empty()) return;
    fmt::format_to(std::back_inserter(page),
                   "# HELP {0} Time of each phase of the last change.\n# TYPE {0} gauge\n", kPhase);
    for (const auto &[phase, seconds] : numbers.seconds)
        fmt::format_to(std::back_inserter(page), "{}{{phase=\"{}\"}} {:.6f}\n", kPhase, phase, seconds);
}

}  // namespace

Web::Web(const std::string &listen) {
    if (listen == "none") return;
    const size_t colon = listen.rfind(':');
    const auto port = colon == std::string::npos ? std::nullopt : parseNumber(listen.substr(colon + 1));
    sockaddr_in address{};
    address.sin_family = AF_INET;
    if (!port || *port > 65535 || inet_pton(AF_INET, listen.substr(0, colon).c_str(), &address.sin_addr) != 1)
        fail(Exit::Usage, "listen: {} is not ADDRESS:PORT, such as 127.0.0.1:9476, or none",
             inQuotes(listen));
    address.sin_port = htons(static_cast<uint16_t>(*port));
    descriptor_ = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    const int on = 1;
    setsockopt(descriptor_, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    if (bind(descriptor_, reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0 ||
        ::listen(descriptor_, kMostClients) != 0)
        fail(Exit::Usage, "listen: {}: {}", listen, std::strerror(errno));
}

Web::~Web() {
    if (descriptor_ >= 0) close(descriptor_);
}

void Web::reap() {
    while (children_ > 0 && waitpid(-1, nullptr, WNOHANG) > 0)
        children_--;
}

void Web::serve(const Numbers &numbers) {
    reap();
    const int client = accept4(descriptor_, nullptr, nullptr, SOCK_CLOEXEC);
    if (client < 0) return;
    const pid_t child = children_ < kMostClients ? fork() : -1;
    if (child == 0) {
        dup2(client, STDIN_FILENO);
        dup2(client, STDOUT_FILENO);
        const cli::Resource resources[] = {
            {"/metrics", cli::kMetricsType, [&](fmt::memory_buffer &page) { appendMetrics(page, numbers); }},
            {"/health", "text/plain; charset=utf-8",
             [&](fmt::memory_buffer &page) {
                 if (!numbers.problem.empty()) throw Failure{Exit::Failed, numbers.problem};
                 page.append(std::string_view("ok\n"));
             }},
        };
        cli::answerRequest(resources);
        _exit(0);
    }
    if (child > 0) children_++;
    close(client);
}

}  // namespace qvs::fleet
