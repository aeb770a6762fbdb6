// SPDX-License-Identifier: Apache-2.0
// The store against a real etcd, and the texts of its gateway that a healthy one seldom sends.
#include "agent/store/store.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <fstream>

#include "agent/etcd.h"
#include "agent/store/gateway.h"
#include "base/failure.h"

namespace {

using namespace qvs::fleet;
using namespace std::chrono_literals;
using qvs::test::Etcd;

#define NEEDS_ETCD() \
    if (!Etcd::isInstalled()) GTEST_SKIP() << "etcd-server and etcd-client are not installed"

Access accessTo(const std::string &url) {
    Access access;
    access.endpoints = {url};
    access.limit = 2000ms;
    return access;
}

std::string failureOf(const std::function<void()> &body) {
    try {
        body();
    } catch (const qvs::Failure &failure) {
        return failure.message;
    }
    return "no failure";
}

TEST(Gateway, WhatIsLeftOutIsZeroOrFalse) {
    EXPECT_EQ(readCommitted(R"({"header":{"revision":"7"}})"), 0u);
    EXPECT_EQ(readCommitted(R"({"header":{"revision":"7"},"succeeded":true})"), 7u);
    EXPECT_EQ(readRange(R"({"header":{"revision":"18446744073709551615"}})").revision, 18446744073709551615u);
    EXPECT_EQ(readRange(R"({"kvs":[{"key":"YQ=="}]})").entries.at(0).modified, 0u);
    EXPECT_FALSE(readAlive(R"({"result":{"header":{},"ID":"5"}})"));
    EXPECT_TRUE(readAlive("{\"result\":{\"ID\":\"5\",\"TTL\":\"3\"}}\n"));
}

TEST(Gateway, Garbage) {
    for (const char *text :
         {"", "[]", "{", "<html>", R"({"header":{"revision":"x"}})", R"({"kvs":[{"key":"!"}]})"})
        EXPECT_THROW(readRange(text), qvs::Failure) << text;
}

TEST(Gateway, EndsOfWatches) {
    struct {
        const char *line;
        const char *why;
    } cases[] = {
        {R"({"result":{"header":{"revision":"5"},"created":true}})", ""},
        {R"({"result":{"canceled":true,"compact_revision":"9"}})",
         "the store was compacted up to revision 9"},
        {R"({"result":{"canceled":true,"cancel_reason":"no"}})", "no"},
        {R"({"error":{"grpc_code":16,"message":"invalid auth token"}})", "invalid auth token"},
        {R"({"error":"denied","code":7})", "denied"},
    };
    for (const auto &one : cases) {
        std::vector<Event> events;
        EXPECT_EQ(readWatch(one.line, events), one.why) << one.line;
    }
}

TEST(Gateway, Refusals) {
    using Kind = Refusal::Kind;
    struct {
        long status;
        const char *text;
        Kind kind;
    } cases[] = {
        {503, R"({"error":"etcdserver: leader changed","code":14})", Kind::Unavailable},
        {504, "gateway", Kind::Unavailable},
        {401, R"({"error":"etcdserver: invalid auth token","code":16})", Kind::TokenExpired},
        {400, R"({"message":"etcdserver: revision of auth store is old","code":3})", Kind::TokenExpired},
        {403, R"({"message":"etcdserver: permission denied","code":7})", Kind::Refused},
        {401, R"({"error":{"grpc_code":16,"http_code":401,"message":"etcdserver: invalid auth token"}})",
         Kind::TokenExpired},
        {404, "not found", Kind::Refused},
    };
    for (const auto &one : cases)
        EXPECT_EQ(readRefusal(one.status, one.text).kind, one.kind) << one.text;
}

TEST(Store, TransactionsCompareRevisions) {
    NEEDS_ETCD();
    const Etcd etcd;
    Store store(accessTo(etcd.url()));
    const std::string bytes("\0\xff\n\"", 4);
    const Comparison absent{"k", Comparison::What::Created, 0};
    EXPECT_TRUE(store.commit({{absent}, {{"k", bytes}, {"k2", "other"}}, {}}));
    EXPECT_FALSE(store.commit({{absent}, {{"k", "second"}}, {}}));
    const Found found = store.range({"k", true});
    ASSERT_EQ(found.entries.size(), 2u);
    EXPECT_EQ(found.find("k")->value, bytes);
    EXPECT_EQ(found.find("k")->modified, found.revision);
    EXPECT_TRUE(store.commit({{{"k", Comparison::What::Modified, found.revision}}, {{"k", "3"}}, {{"k2"}}}));
    EXPECT_FALSE(store.commit({{{"k", Comparison::What::Modified, found.revision}}, {{"k", "4"}}, {}}));
    EXPECT_EQ(store.range({"k"}).entries.at(0).value, "3");
    EXPECT_EQ(store.range({"k2"}).entries.size(), 0u);
}

TEST(Store, KeysEndWithTheirLease) {
    NEEDS_ETCD();
    const Etcd etcd;
    Store store(accessTo(etcd.url()));
    const uint64_t lease = store.grant(30);
    EXPECT_TRUE(store.commit({{}, {{"s", "v", lease}}, {}}));
    EXPECT_EQ(store.range({"s"}).entries.at(0).lease, lease);
    EXPECT_TRUE(store.keepAlive(lease));
    store.revoke(lease);
    EXPECT_FALSE(store.keepAlive(lease));
    EXPECT_EQ(store.range({"s"}).entries.size(), 0u);
    EXPECT_NE(failureOf([&] { (void)store.commit({{}, {{"s", "v", lease}}, {}}); }), "no failure");
}

TEST(Store, WatchesSeeWhatWasBeforeAndEndAtACompaction) {
    NEEDS_ETCD();
    const Etcd etcd;
    Store store(accessTo(etcd.url()));
    EXPECT_TRUE(store.commit({{}, {{"a/1", "x"}}, {}}));
    const uint64_t first = store.range({"a/1"}).revision;
    EXPECT_TRUE(store.commit({{}, {{"a/1", "y"}, {"b", "z"}}, {}}));
    EXPECT_TRUE(store.commit({{}, {}, {{"a/", true}}}));
    Watch watch(store);
    watch.follow({"a/", true}, first + 1);
    watch.follow({"b"}, first + 1);
    std::vector<Event> events;
    for (int i = 0; i < 50 && events.size() < 3; i++) {
        const auto news = watch.wait({}, 100ms);
        EXPECT_EQ(news.ended, "");
        events.insert(events.end(), news.events.begin(), news.events.end());
    }
    ASSERT_EQ(events.size(), 3u);
    for (const Event &event : events)
        EXPECT_EQ(event.entry.value, event.entry.key == "b" ? "z" : event.removed ? "" : "y");

    EXPECT_TRUE(etcd.control("compact " + std::to_string(first + 2)));
    Watch late(store);
    late.follow({"a/", true}, first);
    std::string ended;
    for (int i = 0; i < 50 && ended.empty(); i++)
        ended = late.wait({}, 100ms).ended;
    EXPECT_EQ(ended, "the store was compacted up to revision " + std::to_string(first + 2));
}

TEST(Store, EndpointsThatDoNotAnswerAreLeft) {
    NEEDS_ETCD();
    Etcd etcd;
    Access access = accessTo(etcd.url());
    access.limit = 1000ms;
    // Nobody serves this port. A free one could be taken by a test that runs beside this one.
    access.endpoints.push_back("http://127.0.0.1:1");
    Store store(access);
    for (int i = 0; i < 4; i++)
        EXPECT_TRUE(store.commit({{}, {{"k", std::to_string(i)}}, {}}));
    EXPECT_EQ(store.endpoint(), etcd.url());
    etcd.signal(SIGSTOP);
    EXPECT_EQ(failureOf([&] { store.range({"k"}); }).rfind("the store does not answer: ", 0), 0u);
    etcd.signal(SIGCONT);
    EXPECT_EQ(store.range({"k"}).entries.at(0).value, "3");
}

TEST(Store, TokensAreRenewedAndRolesHold) {
    NEEDS_ETCD();
    const Etcd etcd({"--auth-token-ttl", "1"});
    for (const char *words :
         {"user add root:r", "user grant-role root root", "role add agent",
          "role grant-permission agent read f/ --prefix", "user add h1:secret",
          "role grant-permission agent readwrite f/status/h1", "user grant-role h1 agent", "auth enable"})
        ASSERT_TRUE(etcd.control(words)) << words;
    ASSERT_EQ(mkdir("private", 0700), 0);
    std::ofstream("private/password") << "secret\n";
    Access access = accessTo(etcd.url());
    EXPECT_NE(failureOf([&] { Store(access).range({"f/"}); }).find("user name is empty"), std::string::npos);
    access.user = "h1";
    access.passwordFile = "private/password";
    Store store(access);
    EXPECT_TRUE(store.commit({{}, {{"f/status/h1", "ok"}}, {}}));
    EXPECT_NE(failureOf([&] {
                  (void)store.commit({{}, {{"f/head", "1"}}, {}});
              }).find("permission denied"),
              std::string::npos);
    std::this_thread::sleep_for(3s);
    EXPECT_EQ(store.range({"f/", true}).entries.size(), 1u);
}

TEST(Store, TlsVerifiesBothSides) {
    NEEDS_ETCD();
    // One certificate is the authority, the server's and the client's.
    ASSERT_EQ(std::system(
                  "openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes -keyout key "
                  "-out certificate -days 2 -subj /CN=store -addext subjectAltName=IP:127.0.0.1 2>/dev/null"),
              0);
    const Etcd etcd({"--cert-file", "certificate", "--key-file", "key", "--client-cert-auth",
                     "--trusted-ca-file", "certificate"},
                    "https");
    const auto attempt = [&](const char *ca, const char *certificate, const char *key) {
        Access access = accessTo(etcd.url());
        access.caFile = ca;
        access.certificateFile = certificate;
        access.keyFile = key;
        return failureOf([&] { Store(access).range({"k"}); });
    };
    EXPECT_EQ(attempt("certificate", "certificate", "key"), "no failure");
    EXPECT_NE(attempt("", "certificate", "key").find("certificate"), std::string::npos);
    EXPECT_NE(attempt("certificate", "", "").find("the store does not answer"), std::string::npos);
}

}  // namespace
