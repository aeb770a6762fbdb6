// SPDX-License-Identifier: Apache-2.0
// The metrics of qvs metrics: one table of their names, labels and meanings, and the fields of records that
// they come from.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace qvs::cli {

// A counter when its name ends with "_total", and a gauge otherwise.
struct Metric {
    std::string_view name;
    std::string_view labels;  // their names, with blanks between
    std::string_view help;

    constexpr bool isCounter() const { return name.ends_with("_total"); }
    constexpr std::string_view type() const { return isCounter() ? "counter" : "gauge"; }
};

// In the order of the output.
inline constexpr Metric kMetrics[] = {
    {"qvs_build_info", "version", "The version of qvs that answered; always 1."},
    {"qvs_switches", "", "Number of switches on the host."},

    {"qvs_switch_info", "switch class version portset", "What a switch is; always 1."},
    {"qvs_switch_max_ports", "switch", "Number of ports that a switch has room for."},
    {"qvs_switch_ports", "switch", "Number of ports of a switch, with those of its uplinks."},
    {"qvs_switch_ports_in_use", "switch", "Number of ports that a client or a NIC uses."},
    {"qvs_switch_ports_up", "switch", "Number of ports that have a link."},
    {"qvs_switch_ports_blocked", "switch", "Number of ports that the kernel blocks."},
    {"qvs_switch_uplinks", "switch", "Number of uplinks of a switch."},
    {"qvs_switch_uplinks_up", "switch", "Number of uplinks that have a link."},
    {"qvs_switch_mtu_bytes", "switch", "The MTU of a switch."},

    {"qvs_uplink_info", "switch uplink port nic", "The port and the NIC of an uplink; always 1."},
    {"qvs_uplink_up", "switch uplink", "Whether an uplink has a link."},
    {"qvs_uplink_lacp_up", "switch uplink", "Whether LACP holds the link of an uplink."},
    {"qvs_uplink_speed_bytes_per_second", "switch uplink", "Speed of the link of an uplink."},

    {"qvs_port_in_use", "switch port", "Whether a client or a NIC uses a port."},
    {"qvs_port_up", "switch port", "Whether a port has a link."},
    {"qvs_port_blocked", "switch port", "Whether the kernel blocks a port."},
    {"qvs_port_packets_total", "switch port direction kind", "Packets that passed a port."},
    {"qvs_port_bytes_total", "switch port direction kind", "Bytes that passed a port."},
    {"qvs_port_dropped_packets_total", "switch port direction", "Packets that a port dropped."},
    {"qvs_port_exception_packets_total", "switch port direction",
     "Packets that a port handled as exceptions."},

    {"qvs_mac_table_entries", "switch", "Number of entries in the MAC table of a switch."},
    {"qvs_multicast_groups", "switch type", "Number of multicast groups that the kernel lets in."},

    {"qvs_mac_learning_ports", "switch", "Number of ports that learn MAC addresses."},
    {"qvs_mac_learning_addresses", "switch kind", "Number of MAC addresses, learnt and static."},
    {"qvs_mac_learning_learnt_total", "switch", "MAC addresses that were learnt."},
    {"qvs_mac_learning_aged_total", "switch", "MAC addresses that were forgotten because of their age."},
    {"qvs_mac_learning_moved_total", "switch", "MAC addresses that moved to another port."},
    {"qvs_mac_learning_refused_total", "switch", "MAC addresses that a limit kept from being learnt."},
    {"qvs_mac_learning_flooded_frames_total", "switch", "Frames to unknown addresses that were flooded."},
    {"qvs_mac_learning_lookups_total", "switch", "Lookups in the MAC table."},
    {"qvs_mac_learning_misses_total", "switch", "Lookups in the MAC table that found nothing."},

    {"qvs_teaming_moves_total", "switch", "Moves of service ports to another uplink."},
    {"qvs_teaming_moves_back_total", "switch", "Moves of service ports back to their uplink."},
    {"qvs_teaming_frames_total", "switch direction", "Frames that service ports sent and received."},
    {"qvs_teaming_sent_bytes_total", "switch", "Bytes that service ports sent."},
    {"qvs_teaming_dropped_frames_total", "switch", "Frames that were dropped, for example during a move."},
    {"qvs_rarp_sent_total", "switch", "Announcements that were sent by reverse ARP."},
    {"qvs_rarp_lost_total", "switch", "Announcements by reverse ARP that were lost."},

    {"qvs_mirror_sessions", "switch", "Number of mirror sessions that the kernel runs for a switch."},
    {"qvs_mirror_destinations", "switch", "Number of active destinations of the promiscuous session."},
    {"qvs_mirror_session_active", "switch session", "Whether a mirror session is active."},
    {"qvs_mirror_session_mirrored_frames_total", "switch session direction", "Frames of the sources."},
    {"qvs_mirror_session_mirrored_bytes_total", "switch session direction", "Bytes of the sources."},
    {"qvs_mirror_session_sent_frames_total", "switch session", "Frames sent to the destinations."},
    {"qvs_mirror_session_sent_bytes_total", "switch session", "Bytes sent to the destinations."},
    {"qvs_mirror_session_cut_frames_total", "switch session", "Frames that were cut to the snap length."},
    {"qvs_mirror_session_dropped_frames_total", "switch session reason", "Frames that were not mirrored."},
    {"qvs_mirror_agent_sessions", "", "Number of mirror sessions of all switches."},
    {"qvs_mirror_agent_wakeups_total", "", "Times that the mirror agent was woken."},
    {"qvs_mirror_agent_taken_frames_total", "", "Frames that the mirror agent took."},
    {"qvs_mirror_agent_taken_bytes_total", "", "Bytes that the mirror agent took."},
    {"qvs_mirror_agent_sent_frames_total", "", "Frames that the mirror agent sent."},
    {"qvs_mirror_agent_sent_bytes_total", "", "Bytes that the mirror agent sent."},
    {"qvs_mirror_agent_dropped_frames_total", "reason", "Frames that the mirror agent dropped."},

    {"qvs_ipfix_sampled_ports", "switch", "Number of ports whose flows are sampled."},
    {"qvs_ipfix_collectors", "switch", "Number of collectors."},
    {"qvs_ipfix_flows", "switch", "Number of flows in the flow table."},
    {"qvs_ipfix_flows_begun_total", "switch", "Flows that began."},
    {"qvs_ipfix_flows_ended_total", "switch reason", "Flows that ended."},
    {"qvs_ipfix_seen_frames_total", "switch", "Frames at the sampled ports."},
    {"qvs_ipfix_seen_bytes_total", "switch", "Bytes at the sampled ports."},
    {"qvs_ipfix_sampled_frames_total", "switch", "Frames that were sampled."},
    {"qvs_ipfix_sampled_bytes_total", "switch", "Bytes that were sampled."},
    {"qvs_ipfix_frames_without_flow_total", "switch", "Sampled frames that belong to no flow."},
    {"qvs_ipfix_records_sent_total", "switch", "Flow records sent to collectors."},
    {"qvs_ipfix_templates_sent_total", "switch", "Templates sent to collectors."},
    {"qvs_ipfix_messages_sent_total", "switch", "Messages sent to collectors."},
    {"qvs_ipfix_sent_bytes_total", "switch", "Bytes sent to collectors."},
    {"qvs_ipfix_drops_total", "switch kind", "Drops, by the kernel's number of their kind."},

    {"qvs_bfd_sessions", "state", "Number of forwarding-detection sessions, by state."},
    {"qvs_bfd_session_up", "session local remote interface", "Whether a session is up."},
    {"qvs_bfd_packets_total", "direction", "Packets of all sessions, in and out."},
    {"qvs_bfd_malformed_packets_total", "", "Packets that were malformed."},
    {"qvs_bfd_packets_without_session_total", "", "Packets that belong to no session."},
    {"qvs_bfd_sessions_came_up_total", "", "Sessions that came up."},
    {"qvs_bfd_sessions_went_down_total", "", "Sessions that went down."},
    {"qvs_bfd_sessions_timed_out_total", "", "Sessions that went down because no packets came."},
    {"qvs_bfd_send_failures_total", "", "Packets that could not be sent."},

    {"qvs_scrape_duration_seconds", "", "Time that qvs took to gather the metrics."},
    {"qvs_scrape_failures", "part", "Number of requests of a part that failed in this scrape."},
};

// The place of a metric in the table. A name that is not there does not compile.
consteval size_t metric(std::string_view name) {
    for (size_t i = 0; i < std::size(kMetrics); i++)
        if (kMetrics[i].name == name) return i;
    throw "no such metric";
}

// A metric that is a field of a record of the kernel, which a layout file names. An array has one line for
// each value, with its number as the label `kind`.
struct FieldMetric {
    std::string_view record;
    std::string_view field;
    size_t metric;
    std::string_view label = {};  // one that the field stands for, as it is written
};
std::span<const FieldMetric> fieldMetrics();

}  // namespace qvs::cli
