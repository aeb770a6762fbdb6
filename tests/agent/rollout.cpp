// SPDX-License-Identifier: Apache-2.0
// What agents and the coordinator decide, record by record; the model searches their schedules. And the
// documents of a host.
#include <gtest/gtest.h>

#include "agent/rollout/documents.h"
#include "agent/rollout/machine.h"
#include "agent/rollout/view.h"
#include "agent/store/digest.h"
#include "base/failure.h"
#include "config/document/merge.h"
#include "config/document/reader.h"
#include "config/document/write.h"

namespace {

using namespace qvs::fleet;
namespace config = qvs::config;

TEST(Digest, KnownAnswers) {
    EXPECT_EQ(digestOf(""), "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
    EXPECT_EQ(digestOf("abc"), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    EXPECT_EQ(digestOf(std::string(55, 'a')),
              "9f4390f8d30c2dd92ec9f095b65e2b9ae9b0a925a5258e241c9f1e910f734318");
    EXPECT_EQ(digestOf(std::string(56, 'a')),
              "b35439a4ac6f0948b6d6f9e3c6af0f5f590ce20f1bde7090ef7970686ec6738a");
    EXPECT_EQ(digestOf(std::string(1'000'000, 'a')),
              "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0");
}

TEST(Agent, Goals) {
    Manifest manifest;
    manifest.waves = 3;
    struct {
        const char *what;
        Head head;
        std::optional<uint32_t> wave;
        uint64_t applied;
        uint64_t refused;
        bool drained;
        uint64_t goal;
    } cases[] = {
        {"nothing is published", {0, 0, 0, State::Done, ""}, {}, 0, 0, false, 0},
        {"its wave is open", {5, 4, 1, State::Running, ""}, 1, 4, 0, false, 5},
        {"its wave is not open", {5, 4, 0, State::Running, ""}, 1, 4, 0, false, 4},
        {"it catches up with the fleet before its wave", {5, 4, 0, State::Running, ""}, 1, 2, 0, false, 4},
        {"one that joined later is in the last wave", {5, 4, 1, State::Running, ""}, {}, 4, 0, false, 4},
        {"one that joined later, last wave", {5, 4, 2, State::Running, ""}, {}, 0, 0, false, 5},
        {"stopped: what was open stays open", {5, 4, 1, State::Stopped, ""}, 1, 4, 0, false, 5},
        {"stopped: nothing more is opened", {5, 4, 1, State::Stopped, ""}, 2, 4, 0, false, 4},
        {"taken back", {5, 4, 1, State::RollingBack, ""}, 0, 5, 0, false, 4},
        {"taken back where it never was", {5, 4, 1, State::RolledBack, ""}, 1, 4, 0, false, 4},
        {"taken back, and it was away", {5, 4, 1, State::RolledBack, ""}, 0, 3, 0, false, 4},
        {"refused", {5, 4, 1, State::Running, ""}, 0, 4, 5, false, 4},
        {"refused to go back", {5, 4, 1, State::RollingBack, ""}, 0, 5, 4, false, 5},
        {"drained", {5, 4, 1, State::Running, ""}, 0, 4, 0, true, 4},
        {"nothing to go back to", {1, 0, 1, State::RollingBack, ""}, 0, 1, 0, false, 1},
    };
    for (const auto &one : cases) {
        Memory memory;
        memory.applied = one.applied;
        if (one.refused != 0) memory.refused[one.refused] = {"check", "no"};
        const uint64_t wanted = wantedOf(one.head, manifest, one.wave, memory, one.drained);
        EXPECT_EQ(goalOf(wanted, memory), one.goal) << one.what;
        EXPECT_EQ(refusalOf(wanted, one.head, memory), one.refused) << one.what;
    }
}

// Hosts as "a5 b4 c!5 d-": their revision, a refused one, away, without switches (d?4) or not willing to go
// back (d^5); canary a, then b and c.
View viewOf(const Head &head, std::string_view hosts, uint32_t unavailable = 0, bool rollsBack = false) {
    View view;
    view.head = head;
    view.manifest.revision = head.revision;
    view.manifest.waves = 2;
    view.manifest.unavailable = unavailable;
    view.manifest.rollsBack = rollsBack;
    view.plan = {{"a", 0}, {"b", 1}, {"c", 1}};
    for (size_t at = 0; at < hosts.size(); at = std::min(hosts.find(' ', at), hosts.size() - 1) + 1) {
        const std::string word(hosts.substr(at, hosts.find(' ', at) - at));
        Status status;
        if (word[1] == '-') continue;
        status.revision = static_cast<uint64_t>(word.back() - '0');
        if (word[1] == '!') {
            status.refused = status.revision--;
            status.step = "check";
            status.reason = "no";
        }
        if (word[1] == '^') status.refused = head.base;
        if (word[1] == '?') status.problem = "the host does not answer";
        if (word[1] == '~') view.drained.insert(word.substr(0, 1));
        view.statuses[word.substr(0, 1)] = status;
    }
    return view;
}

TEST(Coordinator, Decisions) {
    const Head first{5, 4, 0, State::Running, ""};
    const Head second{5, 4, 1, State::Running, ""};
    const Head back{5, 4, 1, State::RollingBack, "b: check: no"};
    struct {
        const char *what;
        View view;
        std::optional<Head> next;
    } cases[] = {
        {"the canary has not reported", viewOf(first, "a4 b4 c4"), {}},
        {"the canary is done", viewOf(first, "a5 b4 c4"), second},
        {"the canary is away", viewOf(first, "a- b4 c4"), {}},
        {"the canary is away, and may be", viewOf(first, "a- b4 c4", 1), second},
        {"the canary's switches do not answer", viewOf(first, "a?4 b4 c4"), {}},
        {"the canary's switches do not answer, and may do so", viewOf(first, "a?4 b4 c4", 1), second},
        {"the canary's switches do not answer any more", viewOf(first, "a?5 b4 c4"), second},
        {"the canary is drained", viewOf(first, "a~4 b4 c4"), second},
        {"the canary refuses", viewOf(first, "a!5 b4 c4"), Head{5, 4, 0, State::Stopped, "a: check: no"}},
        {"one refuses, one is away", viewOf(second, "a5 b!5 c-", 1),
         Head{5, 4, 1, State::Stopped, "b: check: no"}},
        {"it is taken back", viewOf(second, "a5 b!5 c4", 0, true), back},
        {"not all have gone back", viewOf(back, "a5 b4 c4"), {}},
        {"all have gone back", viewOf(back, "a4 b4 c-"), Head{5, 4, 1, State::RolledBack, "b: check: no"}},
        {"one cannot go back", viewOf(back, "a^5 b4 c4"), Head{5, 4, 1, State::RolledBack, "b: check: no"}},
        {"two are away", viewOf(second, "a5 b- c-", 1), {}},
        {"all are done", viewOf(second, "a5 b5 c5"), Head{5, 5, 1, State::Done, ""}},
        {"one that joined is not done", viewOf(second, "a5 b5 c5 d0"), {}},
        {"one that joined does not keep the canary waiting", viewOf(first, "a5 b4 c4 d0"), second},
        {"nothing is decided when stopped", viewOf({5, 4, 0, State::Stopped, ""}, "a5 b5 c5"), {}},
    };
    for (auto &one : cases)
        EXPECT_EQ(decide(one.view), one.next) << one.what;
    View nothingBefore = viewOf({1, 0, 0, State::Running, ""}, "a!1", 0, true);
    EXPECT_EQ(decide(nothingBefore)->state, State::Stopped);
}

TEST(Coordinator, AStatusThatCannotBeReadKeepsOnlyItsHost) {
    View view = viewOf({5, 4, 0, State::Running, ""}, "a5 b4 c4", 1);
    take(view, {}, {false, {"/qvs/v1/status/a", R"({"revision":"x"})"}});
    EXPECT_EQ(view.statuses["a"].problem,
              "the store has a status that cannot be read: the member revision is no number in its bounds");
    EXPECT_EQ(progressOf(view).away, std::set<std::string>{"a"});
    view.statuses["a"].refused = 5;
    view.statuses["a"].reason = std::string(size_t{1} << 20, 'x');
    EXPECT_EQ(decide(view)->reason.size(), 1000u);
}

TEST(Records, SurviveAndAreRefused) {
    Manifest manifest;
    manifest.revision = UINT64_MAX;
    manifest.documents = {{DocumentOf::Kind::Group, "g", {{"rack", "a"}}, "d1"}};
    manifest.waves = 3;
    manifest.rollsBack = true;
    const Manifest read = readManifest(write(manifest));
    EXPECT_EQ(write(read), write(manifest));
    EXPECT_EQ(read.documents.at(0).labels, (Labels{{"rack", "a"}}));
    const Head head{7, 6, 2, State::RollingBack, "\xff"};
    EXPECT_EQ(readHead(write(head)).state, State::RollingBack);
    EXPECT_EQ(readHead(R"({"state":"done","new":1})").revision, 0u);
    for (const char *text : {"", "[]", "{}", R"({"state":"odd"})", R"({"state":"done","revision":-1})",
                             R"({"state":"done","wave":4294967296})", R"({"state":"done","reason":5})"})
        EXPECT_THROW(readHead(text), qvs::Failure) << text;
}

TEST(Documents, HeadsOfFiles) {
    std::vector<config::Problem> problems;
    const FleetFile file =
        readFleetFile("# rack a\ngroup: a\nlabels: {rack: a,\n  row: \"1\"}\nswitches: {sw1: {mtu: 5}}\n",
                      "f", "name", problems);
    EXPECT_EQ(file.of.name, "a");
    EXPECT_EQ(file.of.labels, (Labels{{"rack", "a"}, {"row", "1"}}));
    ASSERT_EQ(problems.size(), 1u);
    EXPECT_EQ(messageOf(problems[0]), "f:5:23: switches.sw1.mtu: 5 is below 1280");
    EXPECT_TRUE(isFor(file.of, "h", {{"rack", "a"}, {"row", "1"}, {"more", "x"}}));
    EXPECT_FALSE(isFor(file.of, "h", {{"rack", "a"}}));
    for (const char *text :
         {"group: a\nswitches: {}\n", "labels: {a: b}\nswitches: {}\n", "host: a/b\nswitches: {}\n",
          "{host: a, switches: {}}", "host: a\ngroup: b\nlabels: {c: d}\nswitches: {}\n"}) {
        problems.clear();
        readFleetFile(text, "f", "name", problems);
        EXPECT_FALSE(problems.empty()) << text;
    }
}

config::Document documentOf(std::string_view text) {
    std::vector<config::Problem> problems;
    config::Document document = config::readDocument(text, "", problems);
    EXPECT_TRUE(problems.empty()) << messageOf(problems.at(0));
    return document;
}

TEST(Documents, LaterOnesWinSettingBySetting) {
    const std::map<std::string, const char *> texts = {
        {"all", "switches: {sw1: {mtu: 9000, ports: {web: {vlan: {id: 10}}}}}"},
        {"group", "switches: {sw1: {ports: {web: {vlan: {id: 20}}, db: {vlan: {id: 1}}}}}"},
        {"own", "switches: {sw1: {ports: {web: {properties: {com.example.x: YQ==}}}}, sw2: {}}"}};
    const std::vector<DocumentOf> documents = {{DocumentOf::Kind::Host, "h1", {}, "own"},
                                               {DocumentOf::Kind::Group, "g", {{"r", "a"}}, "group"},
                                               {DocumentOf::Kind::Switch, "s", {}, "all"}};
    const auto read = [&](const DocumentOf &of) { return documentOf(texts.at(of.digest)); };
    EXPECT_EQ(
        composed(documents, "h1", {{"r", "a"}}, read),
        documentOf(
            "switches: {sw1: {mtu: 9000, ports: {db: {vlan: {id: 1}}, web: {vlan: {id: 20}, properties: "
            "{com.example.x: YQ==}}}}, sw2: {}}"));
    EXPECT_EQ(composed(documents, "h2", {}, read), documentOf(texts.at("all")));
}

TEST(Documents, WhatIsTakenOut) {
    config::Document document = documentOf(
        "switches: {sw1: {mtu: 9000, ports: {web: {vlan: {id: 10}, security: {promiscuous: allow}}}}}");
    config::subtract(
        document,
        documentOf("switches: {sw1: {mtu: 1500, ports: {web: {vlan: {id: 7}}, gone: {}}}, sw9: {}}"));
    EXPECT_EQ(document, documentOf("switches: {sw1: {ports: {web: {security: {promiscuous: allow}}}}}"));
    EXPECT_EQ(config::disagreements(documentOf("switches: {sw1: {mtu: 9000}}"),
                                    documentOf("switches: {sw1: {mtu: 1500}}")),
              (std::vector<std::string>{"switches.sw1.mtu"}));
    EXPECT_TRUE(
        config::disagreements(documentOf("switches: {sw1: {mtu: 9000}}"), documentOf("switches: {sw1: {}}"))
            .empty());
}

}  // namespace
