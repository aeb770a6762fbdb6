// SPDX-License-Identifier: Apache-2.0
#include "views/scrape.h"

#include <qvs/qvs.h>

#include <array>
#include <chrono>
#include <map>
#include <optional>
#include <set>
#include <string>

#include "access/library.h"
#include "access/opaque.h"
#include "access/overview.h"
#include "access/requests.h"
#include "config/library/host.h"

namespace qvs::cli {
namespace {

// --- what the snapshot holds ---

struct PortCounter {
    size_t metric;
    std::string labels;
};

// The metric and the labels of each of the counters, in their order.
const std::array<PortCounter, kCounters.size()> &portCounters() {
    static const auto table = [] {
        std::array<PortCounter, kCounters.size()> made;
        for (size_t i = 0; i < made.size(); i++) {
            const Counter &counter = kCounters[i];
            const std::string_view kind = counter.kind;
            const std::string_view direction = counter.direction == Direction::In ? "in" : "out";
            if (kind == "dropped" || kind == "exception") {
                made[i] = {kind == "dropped" ? metric("qvs_port_dropped_packets_total")
                                             : metric("qvs_port_exception_packets_total"),
                           labelled({{"direction", direction}})};
            } else {
                made[i] = {std::string_view(counter.unit) == "bytes" ? metric("qvs_port_bytes_total")
                                                                     : metric("qvs_port_packets_total"),
                           labelled({{"direction", direction}, {"kind", kind}})};
            }
        }
        return made;
    }();
    return table;
}

void addPort(Exposition &page, std::string_view alias, const PortFacts &port) {
    const std::string labels = labelled({{"switch", alias}, {"port", port.id}});
    page.add(metric("qvs_port_in_use"), labels, port.inUse);
    page.add(metric("qvs_port_up"), labels, port.linkUp);
    page.add(metric("qvs_port_blocked"), labels, port.kernelBlocked);
    if (!port.counters) return;
    const auto &counters = portCounters();
    for (size_t i = 0; i < counters.size(); i++)
        page.add(counters[i].metric, labels, counters[i].labels, (*port.counters)[i]);
}

void addUplinks(Exposition &page, const SwitchFacts &sw, const std::string &labels) {
    constexpr uint64_t kBytesPerMegabit = 125'000;
    uint64_t up = 0;
    for (const UplinkFacts &uplink : sw.uplinks) {
        const std::string own = labelled({{"switch", sw.name()}, {"uplink", uplink.name}});
        page.add(metric("qvs_uplink_info"), own,
                 labelled({{"port", uplink.portId}, {"nic", uplink.nic.value_or("")}}), 1);
        if (uplink.linkUp) page.add(metric("qvs_uplink_up"), own, *uplink.linkUp);
        if (uplink.lacpUp) page.add(metric("qvs_uplink_lacp_up"), own, *uplink.lacpUp);
        if (uplink.speedMbps)
            page.add(metric("qvs_uplink_speed_bytes_per_second"), own, kBytesPerMegabit * *uplink.speedMbps);
        up += uplink.linkUp.value_or(false) ? 1 : 0;
    }
    page.add(metric("qvs_switch_uplinks"), labels, sw.uplinks.size());
    page.add(metric("qvs_switch_uplinks_up"), labels, up);
}

void addSwitch(Exposition &page, const SwitchFacts &sw, const std::string &labels, PortChoice ports) {
    page.add(metric("qvs_switch_info"), labels,
             labelled({{"class", sw.className},
                       {"version", fmt::to_string(sw.version)},
                       {"portset", sw.portset.value_or("")}}),
             1);
    uint64_t up = 0;
    uint64_t blocked = 0;
    for (const PortFacts &port : sw.ports) {
        up += port.linkUp ? 1 : 0;
        blocked += port.kernelBlocked ? 1 : 0;
        if (ports == PortChoice::All || (ports == PortChoice::Uplinks && port.uplink))
            addPort(page, sw.name(), port);
    }
    page.add(metric("qvs_switch_max_ports"), labels, sw.maxPorts);
    page.add(metric("qvs_switch_ports"), labels, sw.ports.size());
    page.add(metric("qvs_switch_ports_in_use"), labels, sw.portsInUse);
    page.add(metric("qvs_switch_ports_up"), labels, up);
    page.add(metric("qvs_switch_ports_blocked"), labels, blocked);
    if (sw.mtu) page.add(metric("qvs_switch_mtu_bytes"), labels, *sw.mtu);
    addUplinks(page, sw, labels);
}

// --- what the kernel is asked for ---

// A switch that the kernel runs.
struct Running {
    std::string alias;
    std::string portset;
    std::string labels;
};

const FieldValue *fieldNamed(const FieldValues &record, std::string_view name) {
    for (size_t i = 0; i < record.values.size(); i++)
        if ((*record.fields)[i].name == name) return &record.values[i];
    return nullptr;
}

class Scrape {
  public:
    Scrape(const Arguments &arguments, Exposition &page) : arguments_(arguments), page_(page) {}

    Exposition &page() { return page_; }

    // Does what may fail as a part of its own. A host that has not answered once is not asked again: the rest
    // has failed, too.
    template <typename Work>
    void attempt(uint32_t &failures, Work work) {
        try {
            if (!silent_) return work();
        } catch (const Failure &failure) {
            warn("{}", failure.message);
            silent_ = failure.exit == Exit::NoAnswer;
        }
        failures++;
    }

    // The lines of a record. A record without a layout has none; a remark says so once.
    void addRecord(const RecordKind &kind, Bytes record, const std::string &labels) {
        if (const auto fields = fieldsOf(kind, record)) addFields(kind, *fields, labels);
    }

    std::optional<FieldValues> fieldsOf(const RecordKind &kind, Bytes record) {
        const FoundLayout found = findLayout(arguments_, kind, record.size());
        if (found.layout != nullptr) return decodeRecord(*found.layout, record, std::nullopt);
        if (remarked_.insert(kind.name).second)
            page_.remark(fmt::format("{} are left out: {}", kind.label, found.why));
        if (found.isFault) fail(Exit::Usage, "{}: {}", kind.label, found.why);
        return std::nullopt;
    }

  private:
    void addFields(const RecordKind &kind, const FieldValues &record, const std::string &labels) {
        for (const FieldMetric &row : fieldMetrics()) {
            if (row.record != kind.name) continue;
            const FieldValue *value = fieldNamed(record, row.field);
            if (value == nullptr || std::holds_alternative<std::monostate>(value->is)) continue;
            const auto *array = std::get_if<std::vector<FieldValue>>(&value->is);
            if (array == nullptr) {
                page_.add(row.metric, labels, row.label, value->number);
                continue;
            }
            for (size_t i = 0; i < array->size(); i++)
                page_.add(row.metric, labels, labelled({{"kind", fmt::to_string(i)}}), (*array)[i].number);
        }
    }

    const Arguments &arguments_;
    Exposition &page_;
    std::set<std::string_view> remarked_;
    bool silent_ = false;
};

template <auto Query, typename... Arguments>
uint64_t countOf(const Running &sw, size_t entrySize, const char *what, Arguments... arguments) {
    auto ask = [&] { return fetched<Query>(named(sw.alias) + ": " + what, arguments...); };
    return boundedList(ask, entrySize, what).count;
}

template <size_t size, auto Get, typename... Arguments>
std::array<uint8_t, size> statsOf(const std::string &subject, Arguments... arguments) {
    std::array<uint8_t, size> record{};
    require(call<Get>(arguments..., record.data()), subject);
    return record;
}

void macTable(Scrape &scrape, const Running &sw) {
    scrape.page().add(
        metric("qvs_mac_table_entries"), sw.labels,
        countOf<VSHYP_GetMACTable>(sw, VSHYP_MAC_ENTRY_SIZE, "MAC entries", sw.alias.c_str(), uint8_t{0}));
}

void multicastGroups(Scrape &scrape, const Running &sw) {
    for (const MulticastFamily &family : kMulticastFamilies)
        scrape.page().add(metric("qvs_multicast_groups"), sw.labels, labelled({{"type", family.name}}),
                          countOf<VSHYP_GetMcastFilters>(sw, family.size, "multicast filters",
                                                         sw.portset.c_str(), uint32_t{0}, family.type));
}

// A record of statistics that a switch has one of.
template <auto size, auto Function>
void addStatistics(Scrape &scrape, const Running &sw, const RecordKind &kind) {
    const auto stats = statsOf<size, Function>(named(sw.alias) + ": " + kind.label, sw.portset.c_str());
    scrape.addRecord(kind, stats, sw.labels);
}

void learning(Scrape &scrape, const Running &sw) {
    addStatistics<VSHYP_MAC_LEARNING_INFO_SIZE, VSHYP_GetSwitchMACLearningInfo>(
        scrape, sw, {"learning-info", "info", "statistics of MAC learning"});
}

void teaming(Scrape &scrape, const Running &sw) {
    addStatistics<VSHYP_SERVICE_PORT_TEAMING_STATS_SIZE, VSHYP_GetServicePortTeamingStats>(
        scrape, sw, {"teaming-stats", "stats", "statistics of teaming"});
}

void rarp(Scrape &scrape, const Running &sw) {
    addStatistics<VSHYP_RARP_STATS_SIZE, VSHYP_GetRARPStats>(
        scrape, sw, {"rarp-stats", "stats", "statistics of reverse ARP"});
}

void mirrors(Scrape &scrape, const Running &sw) {
    constexpr RecordKind kKind{"mirror-session-stats", "stats", "statistics of mirror sessions"};
    scrape.page().add(metric("qvs_mirror_destinations"), sw.labels,
                      countOf<VSHYP_GetPromiscSessionActiveDsts>(sw, VSHYP_PROMISC_DST_SIZE,
                                                                 "mirror destinations", sw.alias.c_str()));
    auto ask = [&] {
        return fetched<VSHYP_GetDVMirrorSessionIDs>(named(sw.alias) + ": mirror sessions", sw.alias.c_str());
    };
    const KernelList list = boundedList(ask, VSHYP_MIRROR_SESSION_ID_SIZE, "mirror sessions");
    scrape.page().add(metric("qvs_mirror_sessions"), sw.labels, list.count);
    std::set<std::string, std::less<>> ids;
    for (uint32_t i = 0; i < list.count; i++) {
        const std::string id(boundedText(list.entry(i).data(), VSHYP_MIRROR_SESSION_ID_SIZE));
        // The same line twice would spoil the page.
        if (!ids.insert(id).second) continue;
        const auto stats = statsOf<VSHYP_MIRROR_STATS_SIZE, VSHYP_GetDVMirrorSessionStats>(
            fmt::format("{}: mirror session {}", named(sw.alias), inQuotes(id)), sw.alias.c_str(),
            id.c_str());
        scrape.addRecord(kKind, stats, labelled({{"switch", sw.alias}, {"session", id}}));
    }
}

void flows(Scrape &scrape, const Running &sw) {
    constexpr RecordKind kKind{"flow-stats", "stats", "statistics of flow sampling"};
    const auto stats = statsOf<IPFIXHYP_STATS_SIZE, IPFIXHYP_GetIpfixStats>(
        named(sw.alias) + ": " + kKind.label, sw.alias.c_str());
    scrape.addRecord(kKind, stats, sw.labels);
}

void mirrorAgent(Scrape &scrape) {
    constexpr RecordKind kKind{"mirror-agent-stats", "stats", "statistics of the mirror agent"};
    const auto stats = statsOf<VSHYP_MIRROR_AGENT_STATS_SIZE, VSHYP_GetDVMirrorAgentWorldStats>(kKind.label);
    scrape.addRecord(kKind, stats, {});
}

void bfd(Scrape &scrape) {
    constexpr RecordKind kKind{"bfd-stats", "stats", "statistics of forwarding detection"};
    const HeapBuffer stats = fetchRecord<BFD_GetStats>(kKind.label);
    scrape.addRecord(kKind, recordIn(stats, BFD_STATS_SIZE), {});
}

std::string textOf(const FieldValues &record, std::string_view name) {
    fmt::memory_buffer text;
    if (const FieldValue *value = fieldNamed(record, name)) appendText(text, *value);
    return {text.data(), text.size()};
}

// The sessions in a group of the table, and how many are in each of the states that the layout has words for.
void addSessions(Exposition &page, const LayoutFields &fields, const std::vector<FieldValues> &sessions) {
    std::map<std::string, uint64_t> states;
    for (const LayoutField &field : fields)
        if (field.name == "state")
            for (const auto &[number, word] : field.values)
                states[word] = 0;
    std::set<std::string> seen;
    for (const FieldValues &session : sessions) {
        const std::string state = textOf(session, "state");
        states[state]++;
        const std::string labels = labelled({{"session", textOf(session, "number")},
                                             {"local", textOf(session, "local")},
                                             {"remote", textOf(session, "remote")},
                                             {"interface", textOf(session, "interface")}});
        if (seen.insert(labels).second) page.add(metric("qvs_bfd_session_up"), labels, state == "up");
    }
    for (const auto &[state, count] : states)
        page.add(metric("qvs_bfd_sessions"), labelled({{"state", state}}), count);
}

void bfdSessions(Scrape &scrape) {
    constexpr RecordKind kKind{"bfd-sessions", "sessions", "sessions of forwarding detection"};
    const HeapBuffer table = fetchRecord<BFD_GetSessions>(kKind.label, kAllBfdSessions);
    const auto fields = scrape.fieldsOf(kKind, recordIn(table, BFD_SESSIONS_SIZE));
    if (!fields) return;
    for (size_t i = 0; i < fields->values.size(); i++)
        if (const auto *sessions = std::get_if<std::vector<FieldValues>>(&fields->values[i].is))
            return addSessions(scrape.page(), (*fields->fields)[i].fields, *sessions);
}

// What is asked for each switch, and once.
struct Part {
    const char *name;
    void (*ofSwitch)(Scrape &, const Running &);
    void (*ofHost)(Scrape &);
};
constexpr Part kParts[] = {
    {"mac-table", macTable, nullptr},
    {"multicast", multicastGroups, nullptr},
    {"mac-learning", learning, nullptr},
    {"teaming", teaming, nullptr},
    {"rarp", rarp, nullptr},
    {"mirror", mirrors, mirrorAgent},
    {"ipfix", flows, nullptr},
    {"bfd", nullptr, bfd},
    {"bfd-sessions", nullptr, bfdSessions},
};

}  // namespace

uint32_t scrape(const Arguments &arguments, PortChoice ports, Exposition &page) {
    const auto start = std::chrono::steady_clock::now();
    requireHost();
    const std::vector<SwitchFacts> switches = gatherSwitches();
    page.add(metric("qvs_build_info"), labelled({{"version", QVS_VERSION}}), 1);
    page.add(metric("qvs_switches"), {}, switches.size());
    uint32_t all = 0;
    uint32_t gaps = 0;
    std::vector<Running> running;
    std::set<std::string_view> names;
    for (const SwitchFacts &sw : switches) {
        gaps += static_cast<uint32_t>(sw.gaps.size());
        if (!names.insert(sw.name()).second) continue;
        const std::string labels = labelled({{"switch", sw.name()}});
        addSwitch(page, sw, labels, ports);
        if (sw.className == "vswitch" && sw.alias && sw.portset)
            running.push_back({std::string(*sw.alias), std::string(*sw.portset), labels});
    }
    auto addFailures = [&](const char *part, uint32_t failures) {
        page.add(metric("qvs_scrape_failures"), labelled({{"part", part}}), failures);
        all += failures;
    };
    addFailures("overview", gaps);
    Scrape requests(arguments, page);
    for (const Part &part : kParts) {
        uint32_t failures = 0;
        if (part.ofSwitch != nullptr)
            for (const Running &sw : running)
                requests.attempt(failures, [&] { part.ofSwitch(requests, sw); });
        if (part.ofHost != nullptr) requests.attempt(failures, [&] { part.ofHost(requests); });
        addFailures(part.name, failures);
    }
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
    page.addSeconds(metric("qvs_scrape_duration_seconds"), elapsed.count());
    return all;
}

}  // namespace qvs::cli
