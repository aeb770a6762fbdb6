// SPDX-License-Identifier: Apache-2.0
// The data of a fleet in its store: the keys below a prefix, and their records in JSON. docs/fleet.md
// describes them for other programs.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace qvs::fleet {

inline constexpr const char *kDefaultPrefix = "/qvs/v1/";

struct KeyNames {
    std::string prefix = kDefaultPrefix;

    std::string head() const { return prefix + "head"; }
    std::string coordinator() const { return prefix + "coordinator"; }
    std::string revisions() const { return prefix + "revisions/"; }
    std::string revision(uint64_t number) const;
    std::string results() const { return prefix + "results/"; }
    std::string result(uint64_t number) const;
    std::string documents() const { return prefix + "documents/"; }
    std::string document(const std::string &digest) const { return documents() + digest; }
    std::string plan(const std::string &digest) const { return prefix + "plans/" + digest + '/'; }
    std::string statuses() const { return prefix + "status/"; }
    std::string status(const std::string &host) const { return statuses() + host; }
    std::string hosts() const { return prefix + "hosts/"; }
    std::string host(const std::string &name) const { return hosts() + name; }
    std::string drains() const { return prefix + "drained/"; }
    std::string drain(const std::string &host) const { return drains() + host; }
};

// Names of hosts and groups are parts of keys: letters, digits, dots, dashes and underscores, at most 253.
bool isName(std::string_view name);

enum class State { Running, Stopped, Done, RollingBack, RolledBack };
const char *wordOf(State state);

// The one record that all agents watch: the desired revision, and the progress of its rollout.
struct Head {
    uint64_t revision = 0;
    uint64_t base = 0;  // the last revision that was rolled out to the end; 0: none
    uint32_t wave = 0;  // the last wave that is open, from 0
    State state = State::Done;
    std::string reason;  // why it was stopped or rolled back

    bool isUnderWay() const { return state == State::Running || state == State::RollingBack; }
    friend bool operator==(const Head &, const Head &) = default;
};

using Labels = std::map<std::string, std::string, std::less<>>;

// A document of a revision: for all hosts, for those with all the labels of a group, or for one host.
struct DocumentOf {
    enum class Kind { Switch, Group, Host };
    Kind kind = Kind::Switch;
    std::string name;
    Labels labels;  // of a group
    std::string digest;
};

// A revision, which never changes. It names its documents. The wave of a host is under plan/HOST.
struct Manifest {
    uint64_t revision = 0;
    std::string message;
    std::string author;
    std::string time;  // in UTC
    std::vector<DocumentOf> documents;
    std::string plan;  // the digest of the waves
    uint32_t waves = 1;
    uint32_t unavailable = 0;  // how many hosts may be away when a wave is over
    bool rollsBack = false;
    bool prunes = false;
    uint64_t copies = 0;  // the revision whose documents these are, of a rollback
};

// The report of a host about itself. The key expires with the lease of its agent.
struct Status {
    std::string host;
    uint64_t revision = 0;  // what the host has; 0: nothing of the fleet yet
    uint64_t trying = 0;
    uint64_t refused = 0;  // the wanted or published revision, if the host has refused it
    std::string step;      // that failed
    std::string reason;
    std::string problem;                   // why the agent cannot do its work; empty: it can
    uint32_t drift = 0;                    // differences between the host and its revision
    std::vector<std::string> differences;  // the first of them
    std::string time;
    std::string version;

    friend bool operator==(const Status &, const Status &) = default;
};

// How a rollout ended.
struct Result {
    State state = State::Done;
    std::string reason;
    std::string time;
};

// Each `read` throws Failure for invalid records, and ignores unknown members.
std::string write(const Head &head);
std::string write(const Manifest &manifest);
std::string write(const Status &status);
std::string write(const Result &result);
std::string writeLabels(const Labels &labels);
Head readHead(std::string_view text);
Manifest readManifest(std::string_view text);
Status readStatus(std::string_view text);
Result readResult(std::string_view text);
Labels readLabels(std::string_view text);

// The number under plan/HOST; nothing if it is not a number.
std::optional<uint32_t> parseWave(std::string_view text);

}  // namespace qvs::fleet
