// SPDX-License-Identifier: Apache-2.0
#include "agent/store/store.h"

#include <algorithm>
#include <random>
#include <utility>

#include "agent/store/gateway.h"
#include "base/failure.h"
#include "base/text.h"
#include "config/library/directory.h"

namespace qvs::fleet {
namespace {

// The first line of a file that only its owner may read.
std::string readPassword(const std::string &path) {
    const size_t slash = path.rfind('/');
    const PrivateDirectory directory(slash == std::string::npos ? "." : path.substr(0, slash + 1), false,
                                     {.file = "password file", .most = 4096});
    const auto text = directory.read(slash == std::string::npos ? path : path.substr(slash + 1));
    if (!text) fail(Exit::Usage, "{}: there is no such file", inQuotes(path));
    return text->substr(0, text->find_first_of("\r\n"));
}

}  // namespace

const Entry *Found::find(std::string_view key) const {
    const auto found = std::ranges::find(entries, key, &Entry::key);
    return found == entries.end() ? nullptr : &*found;
}

struct Store::Impl {
    explicit Impl(Access given) : access(std::move(given)), http(access) {}

    Access access;
    Http http;
    size_t current = 0;
    std::string token;
};

Store::Store(Access access) {
    if (access.endpoints.empty())
        fail(Exit::Usage, "the store needs an endpoint, such as http://127.0.0.1:2379");
    for (std::string &endpoint : access.endpoints) {
        if (!endpoint.starts_with("http://") && !endpoint.starts_with("https://"))
            fail(Exit::Usage, "{} is no endpoint; write http://HOST:PORT or https://HOST:PORT",
                 inQuotes(endpoint));
        while (endpoint.ends_with('/'))
            endpoint.pop_back();
    }
    impl_ = std::make_unique<Impl>(std::move(access));
    // A random first member, so that agents that start together do not all use the same one.
    impl_->current = std::random_device()() % impl_->access.endpoints.size();
}

Store::~Store() = default;

const std::string &Store::endpoint() const {
    return impl_->access.endpoints[impl_->current];
}

void Store::authenticate() {
    const Access &access = impl_->access;
    impl_->token.clear();
    const Answer answer =
        impl_->http.post(endpoint() + "/v3/auth/authenticate",
                         authenticationRequest(access.user, readPassword(access.passwordFile)), "");
    if (answer.status == 200) {
        impl_->token = readToken(answer.body);
        return;
    }
    const Refusal refusal = readRefusal(answer.status, answer.body);
    fail(refusal.kind == Refusal::Kind::Unavailable ? Exit::NoAnswer : Exit::Failed, "user {}: {}",
         inQuotes(access.user), refusal.message);
}

const std::string &Store::token() {
    if (!impl_->access.user.empty() && impl_->token.empty()) authenticate();
    return impl_->token;
}

std::string Store::call(const char *path, const std::string &body) {
    std::string reason;
    bool renewed = false;
    const size_t endpoints = impl_->access.endpoints.size();
    for (size_t tried = 0; tried < endpoints;) {
        try {
            requests_++;
            const Answer answer = impl_->http.post(endpoint() + path, body, token());
            if (answer.status == 200) return answer.body;
            const Refusal refusal = readRefusal(answer.status, answer.body);
            if (refusal.kind == Refusal::Kind::TokenExpired && !impl_->access.user.empty() &&
                !std::exchange(renewed, true)) {
                impl_->token.clear();
                continue;
            }
            if (refusal.kind != Refusal::Kind::Unavailable)
                fail(Exit::Failed, "the store refuses the request: {}", refusal.message);
            reason = fmt::format("{}: {}", endpoint(), refusal.message);
        } catch (const Failure &failure) {
            if (failure.exit != Exit::NoAnswer) throw;
            reason = failure.message;
        }
        impl_->current = (impl_->current + 1) % endpoints;
        tried++;
    }
    fail(Exit::NoAnswer, "the store does not answer: {}", reason);
}

Found Store::range(const Keys &keys) {
    return readRange(call("/v3/kv/range", rangeRequest(keys)));
}

bool Store::commit(const Transaction &transaction) {
    const uint64_t revision = readCommitted(call("/v3/kv/txn", transactionRequest(transaction)));
    if (revision != 0) committed_ = revision;
    return revision != 0;
}

uint64_t Store::grant(uint32_t seconds) {
    return readLease(call("/v3/lease/grant", leaseRequest("ID", 0, seconds)));
}

bool Store::keepAlive(uint64_t lease) {
    return readAlive(call("/v3/lease/keepalive", leaseRequest("ID", lease, 0)));
}

void Store::revoke(uint64_t lease) {
    call("/v3/lease/revoke", leaseRequest("ID", lease, 0));
}

Watch::Watch(Store &store) : store_(store), streams_(store.impl_->access), endpoint_(store.endpoint()) {}

Watch::~Watch() = default;

void Watch::follow(const Keys &keys, uint64_t from) {
    streams_.open(endpoint_ + "/v3/watch", watchRequest(keys, from), store_.token());
}

Watch::News Watch::wait(std::span<pollfd> others, std::chrono::milliseconds most) {
    News news;
    std::vector<Streams::Line> lines;
    const std::string ended = streams_.wait(others, most, lines);
    try {
        for (const Streams::Line &line : lines)
            if (!line.text.empty() && news.ended.empty()) news.ended = readWatch(line.text, news.events);
    } catch (const Failure &failure) {
        news.ended = failure.message;
    }
    if (news.ended.empty()) news.ended = ended;
    // A stopped member keeps its connections open. The other requests detect that, not the watch.
    if (news.ended.empty() && store_.endpoint() != endpoint_) news.ended = "another endpoint is used";
    return news;
}

}  // namespace qvs::fleet
