// SPDX-License-Identifier: Apache-2.0
// Documents are carried out as a whole or not at all: whichever request fails, and wherever the run ends.
#include "config/apply/apply.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <functional>
#include <iterator>

#include "config/documents.h"
#include "config/library/snapshot.h"
#include "support/host.h"

namespace qvs::test {
namespace {

using config::ApplyOptions;
using config::ApplyResult;
using config::Document;
using Outcome = config::ApplyResult::Outcome;

constexpr const char *kStart = R"(
switches:
  hall:
    uplinks: [left]
    mtu: 2000
    properties: {com.example.gone: AAEC}
    ports:
      kept: {vlan: {id: 5}, properties: {com.example.x: {class: 8, value: AAEC}}}
      gone: {vlan: {trunk: [1-9], priority: 3}, nestedVlan: on}
  yard:
    ports: {p: {vlan: {id: 7}}}
)";

// With --prune this creates, changes and removes one of everything.
constexpr const char *kWanted = R"(
switches:
  hall:
    uplinks: [right]
    mtu: 9000
    privateVlans: [{primary: 100, secondary: 101, type: isolated}]
    host: {macLearning: {aging: 300, limit: 1024}}
    ports:
      kept: {vlan: {trunk: [20-30]}, properties: {com.example.x: AAED}, blocked: on}
      added: {vlan: {id: 9, priority: 2}}
  attic:
    maxPorts: 16
    uplinks: [u]
    ports: {q: {vlan: {id: 8}}}
)";

ApplyResult applyText(const char *text) {
    ApplyOptions options;
    options.prune = true;
    return config::applyDocument(documentOf(text), options);
}

// The state of the configuration: without what the kernel counts, and in the order of names.
std::string stateAfter(const char *text) {
    resetHost();
    EXPECT_EQ(applyText(text).outcome, Outcome::Applied);
    return hostState();
}

std::string journal() {
    return std::getenv("QVS_HOST_STATE") + std::string("/qvs.journal");
}
bool hasJournal() {
    struct stat found;
    return lstat(journal().c_str(), &found) == 0;
}

// The change that waits for its confirmation.
void applyAndWait(uint32_t seconds = 60) {
    ApplyOptions options;
    options.prune = true;
    options.confirmSeconds = seconds;
    ASSERT_EQ(config::applyDocument(documentOf(kWanted), options).outcome, Outcome::Applied);
}

TEST(Apply, SecondChangesNothing) {
    const std::string state = stateAfter(kWanted);
    EXPECT_EQ(applyText(kWanted).outcome, Outcome::Unchanged);
    EXPECT_EQ(hostState(), state);
    EXPECT_EQ(applyText(kStart).outcome, Outcome::Applied);
    EXPECT_EQ(applyText(kStart).outcome, Outcome::Unchanged);
    EXPECT_FALSE(hasJournal());
}

// What is stored of MAC learning repeats a part of the security of the port, whatever the order of the
// changes.
TEST(Apply, StoresAgainWhatRepeatsAnotherSetting) {
    for (const char *security : {"security: {macChange: allow}", "security: {macChange: deny}", ""}) {
        const std::string text =
            std::string("switches: {sw1: {ports: {p: {macLearning: {learning: on}, ") + security + "}}}}";
        EXPECT_EQ(applyText(text.c_str()).outcome, Outcome::Applied) << text;
        EXPECT_EQ(applyText(text.c_str()).outcome, Outcome::Unchanged) << text;
    }
}

struct Way {
    const char *match;
    const char *action;
};
constexpr Way kWays[] = {{"state ", R"("status":"0xbad00d7")"}, {"shell ", R"("exit":1)"}};

// One request fails, each in turn, or all from then on until the host is healed.
TEST(Apply, UndoesWhateverFails) {
    const std::string start = stateAfter(kStart);
    for (const Way &way : kWays) {
        for (const int count : {1, kFromThenOn}) {
            for (int nth = 1;; nth++) {
                ASSERT_LT(nth, 500);
                SCOPED_TRACE(std::string(way.match) + std::to_string(nth) +
                             (count == 1 ? "" : ", from then on"));
                addFault(way.match, way.action, nth, count);
                Outcome outcome = Outcome::Undone;
                try {
                    outcome = applyText(kWanted).outcome;
                } catch (const Failure &) {
                    // Refused before anything was changed.
                }
                if (outcome == Outcome::Applied) break;
                clearFaults();
                if (count == kFromThenOn && outcome == Outcome::NotUndone) {
                    ASSERT_TRUE(hasJournal());
                    const config::Restored restored = config::recover();
                    ASSERT_TRUE(restored.complete()) << restored.left[0] << restored.problem;
                } else {
                    ASSERT_EQ(outcome, Outcome::Undone);
                }
                ASSERT_FALSE(hasJournal());
                ASSERT_EQ(hostState(), start);
            }
            EXPECT_FALSE(hasJournal());
            EXPECT_EQ(hostState(), stateAfter(kWanted));
            ASSERT_EQ(stateAfter(kStart), start);
        }
    }
}

TEST(Apply, SaysWhatIsLeft) {
    stateAfter("switches: {sw1: {ports: {a: {properties: {com.example.x: AAEC}}}}}");
    addFault("PortDataSet*com.example.z", R"("status":"0xbad0004")");
    addFault("PortRemove", R"("status":"0xbad0004")", 1, kFromThenOn);
    addFault("PortDataClear", R"("status":"0xbad0004")", 1, kFromThenOn);
    const ApplyResult result = config::applyDocument(
        documentOf("switches: {sw1: {ports: {a: {properties: {com.example.y: AA==}}, b: {properties: "
                   "{com.example.z: AA==}}}}}"),
        {});
    EXPECT_EQ(result.outcome, Outcome::NotUndone);
    EXPECT_EQ(result.problem, "switch 'sw1': port 'b': com.example.z: Busy (0xbad0004)");
    const std::vector<std::string> left = {"switch 'sw1': port 'a': property 'com.example.y' is still stored",
                                           "switch 'sw1': port 'b' is still there"};
    EXPECT_EQ(result.undone.left, left);
    clearFaults();
    EXPECT_EQ(config::pendingJournal(), config::Pending::Interrupted);
    EXPECT_EQ(config::settlePending(), "a change that an earlier run did not finish was undone");
    EXPECT_EQ(config::pendingJournal(), config::Pending::Nothing);
}

TEST(Apply, StopsBetweenSteps) {
    const std::string start = stateAfter(kStart);
    ApplyOptions options;
    options.interrupted = [looks = 0]() mutable { return ++looks == 3 ? "SIGTERM" : nullptr; };
    const ApplyResult result = config::applyDocument(documentOf(kWanted), options);
    EXPECT_EQ(result.outcome, Outcome::Undone);
    EXPECT_EQ(result.problem, "SIGTERM came in before switch 'attic': port 'q'");
    EXPECT_EQ(hostState(), start);
}

TEST(Apply, RefusesWhatCannotBe) {
    const std::string start = stateAfter(kStart);
    struct Case {
        const char *document, *message;
    };
    const Case cases[] = {
        {"switches: {hall: {maxPorts: 7}}",
         "switch 'hall': maxPorts is 128 and cannot become 7; remove what has it first"},
        {"switches: {new: {portset: yard}}",
         "switch 'new': portset 'yard' exists in the kernel; name another one, or remove it first"},
    };
    for (const Case &each : cases) {
        try {
            config::applyDocument(documentOf(each.document), {});
            ADD_FAILURE() << each.document;
        } catch (const Failure &failure) {
            EXPECT_EQ(failure.message, each.message);
        }
        EXPECT_EQ(hostState(), start);
        EXPECT_FALSE(hasJournal());
    }
}

TEST(Confirm, KeepsOrUndoes) {
    const std::string start = stateAfter(kStart);
    EXPECT_FALSE(config::confirm());
    for (const bool confirmed : {false, true}) {
        applyAndWait();
        EXPECT_EQ(config::pendingJournal(), config::Pending::Waits);
        EXPECT_TRUE(config::recover(config::Recover::NotWhatWaits).complete());
        EXPECT_THROW(applyText(kStart), Failure);
        if (confirmed) {
            EXPECT_TRUE(config::confirm());
        } else {
            EXPECT_TRUE(config::recover().complete());
            EXPECT_EQ(hostState(), start);
        }
        EXPECT_EQ(config::pendingJournal(), config::Pending::Nothing);
    }
    EXPECT_EQ(hostState(), stateAfter(kWanted));
}

TEST(Confirm, ComesTooLate) {
    const std::string start = stateAfter(kStart);
    applyAndWait(1);
    sleep(2);
    EXPECT_EQ(config::pendingJournal(), config::Pending::Expired);
    EXPECT_THROW(config::confirm(), Failure);
    EXPECT_EQ(hostState(), start);
    EXPECT_FALSE(hasJournal());
}

// --- the file ---

// What a run that was killed while it wrote the journal has left is in nobody's way.
TEST(Journal, UnfinishedIsRemoved) {
    stateAfter(kStart);
    const std::string unfinished = journal() + ".new";
    std::ofstream(unfinished) << "{";
    EXPECT_TRUE(config::recover().complete());
    EXPECT_NE(access(unfinished.c_str(), F_OK), 0);
    std::ofstream(unfinished) << "{";
    EXPECT_EQ(applyText(kWanted).outcome, Outcome::Applied);
    EXPECT_NE(access(unfinished.c_str(), F_OK), 0);
    ASSERT_EQ(mkdir(unfinished.c_str(), 0700), 0);
    try {
        applyText(kStart);
        ADD_FAILURE() << "applied";
    } catch (const Failure &failure) {
        EXPECT_EQ(failure.message, "journal '" + unfinished + "': Is a directory");
    }
    EXPECT_TRUE(config::recover().complete());
    rmdir(unfinished.c_str());
}

std::string contents() {
    std::ifstream file(journal(), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}
void write(const std::string &text) {
    unlink(journal().c_str());
    std::ofstream(journal(), std::ios::binary) << text;
    chmod(journal().c_str(), 0600);
}
std::string refusal() {
    try {
        config::pendingJournal();
    } catch (const Failure &failure) {
        return failure.message.substr(failure.message.rfind("': ") + 3);
    }
    return "";
}

// A later version reads what an earlier one has left.
TEST(Journal, KeepsItsFormat) {
    write(R"({"qvsJournal":1,"bootId":"","deadline":0}
{"sum":"62f211377b28be2a"}
)");
    EXPECT_EQ(config::pendingJournal(), config::Pending::Interrupted);
    EXPECT_TRUE(config::recover().complete());
    EXPECT_FALSE(hasJournal());
}

TEST(Journal, IsForItsOwnerAlone) {
    stateAfter(kStart);
    applyAndWait();
    struct stat found;
    ASSERT_EQ(stat(journal().c_str(), &found), 0);
    EXPECT_EQ(found.st_mode, S_IFREG | 0600u);
    EXPECT_EQ(found.st_uid, geteuid());
    EXPECT_TRUE(config::confirm());
}

TEST(Journal, IsNotTrustedWhenItIsNoJournal) {
    stateAfter(kStart);
    applyAndWait();
    const std::string text = contents();
    const std::string state = hostState();

    // Cut anywhere, or with one byte changed, it is no journal.
    for (size_t length = 0; length < text.size(); length += 1 + text.size() / 50) {
        write(text.substr(0, length));
        EXPECT_TRUE(refusal().starts_with("it is damaged: ")) << length << refusal();
        std::string changed = text;
        changed[length] = static_cast<char>(changed[length] ^ 1);
        write(changed);
        EXPECT_NE(refusal(), "") << length;
    }
    write(R"({"qvsJournal":2,"more":[]})"
          "\n");
    EXPECT_EQ(refusal(), "it is of version 2, and this program knows 1; use the newer program");
    write(text);
    chmod(journal().c_str(), 0666);
    EXPECT_EQ(refusal(), "other users may write to it; move it away");
    write(text);
    ASSERT_EQ(link(journal().c_str(), "other"), 0);
    EXPECT_EQ(refusal(), "it is no file of its own; move it away");
    unlink(journal().c_str());
    if (geteuid() == 0) {
        write(text);
        ASSERT_EQ(chown(journal().c_str(), 4711, 4711), 0);
        EXPECT_EQ(refusal(), "it belongs to another user; move it away");
        unlink(journal().c_str());
    }
    ASSERT_EQ(symlink("other", journal().c_str()), 0);
    EXPECT_EQ(refusal(), "it is a symbolic link; move it away");
    // Nothing of this changed anything.
    EXPECT_THROW(config::settlePending(), Failure);
    EXPECT_EQ(hostState(), state);
    unlink(journal().c_str());
    write(text);
    EXPECT_TRUE(config::confirm());
}

}  // namespace
}  // namespace qvs::test
