// SPDX-License-Identifier: Apache-2.0
#include "views/metric_table.h"

namespace qvs::cli {
namespace {

constexpr std::string_view kIn = R"(direction="in")";
constexpr std::string_view kOut = R"(direction="out")";

constexpr FieldMetric kFieldMetrics[] = {
    {"learning-info", "learningPorts", metric("qvs_mac_learning_ports")},
    {"learning-info", "learntAddresses", metric("qvs_mac_learning_addresses"), R"(kind="learnt")"},
    {"learning-info", "staticAddresses", metric("qvs_mac_learning_addresses"), R"(kind="static")"},
    {"learning-info", "learnt", metric("qvs_mac_learning_learnt_total")},
    {"learning-info", "aged", metric("qvs_mac_learning_aged_total")},
    {"learning-info", "moved", metric("qvs_mac_learning_moved_total")},
    {"learning-info", "refused", metric("qvs_mac_learning_refused_total")},
    {"learning-info", "flooded", metric("qvs_mac_learning_flooded_frames_total")},
    {"learning-info", "lookups", metric("qvs_mac_learning_lookups_total")},
    {"learning-info", "misses", metric("qvs_mac_learning_misses_total")},

    {"teaming-stats", "moves", metric("qvs_teaming_moves_total")},
    {"teaming-stats", "movesBack", metric("qvs_teaming_moves_back_total")},
    {"teaming-stats", "framesSent", metric("qvs_teaming_frames_total"), kOut},
    {"teaming-stats", "framesReceived", metric("qvs_teaming_frames_total"), kIn},
    {"teaming-stats", "bytesSent", metric("qvs_teaming_sent_bytes_total")},
    {"teaming-stats", "framesDropped", metric("qvs_teaming_dropped_frames_total")},
    {"rarp-stats", "sent", metric("qvs_rarp_sent_total")},
    {"rarp-stats", "lost", metric("qvs_rarp_lost_total")},

    {"mirror-session-stats", "active", metric("qvs_mirror_session_active")},
    {"mirror-session-stats", "framesIngress", metric("qvs_mirror_session_mirrored_frames_total"), kIn},
    {"mirror-session-stats", "framesEgress", metric("qvs_mirror_session_mirrored_frames_total"), kOut},
    {"mirror-session-stats", "bytesIngress", metric("qvs_mirror_session_mirrored_bytes_total"), kIn},
    {"mirror-session-stats", "bytesEgress", metric("qvs_mirror_session_mirrored_bytes_total"), kOut},
    {"mirror-session-stats", "framesSent", metric("qvs_mirror_session_sent_frames_total")},
    {"mirror-session-stats", "bytesSent", metric("qvs_mirror_session_sent_bytes_total")},
    {"mirror-session-stats", "framesCut", metric("qvs_mirror_session_cut_frames_total")},
    {"mirror-session-stats", "droppedNoMemory", metric("qvs_mirror_session_dropped_frames_total"),
     R"(reason="no-memory")"},
    {"mirror-session-stats", "droppedNoDestination", metric("qvs_mirror_session_dropped_frames_total"),
     R"(reason="no-destination")"},
    {"mirror-session-stats", "droppedNoLink", metric("qvs_mirror_session_dropped_frames_total"),
     R"(reason="no-link")"},
    {"mirror-session-stats", "droppedBySampling", metric("qvs_mirror_session_dropped_frames_total"),
     R"(reason="sampling")"},

    {"mirror-agent-stats", "sessions", metric("qvs_mirror_agent_sessions")},
    {"mirror-agent-stats", "wakeups", metric("qvs_mirror_agent_wakeups_total")},
    {"mirror-agent-stats", "framesTaken", metric("qvs_mirror_agent_taken_frames_total")},
    {"mirror-agent-stats", "bytesTaken", metric("qvs_mirror_agent_taken_bytes_total")},
    {"mirror-agent-stats", "framesSent", metric("qvs_mirror_agent_sent_frames_total")},
    {"mirror-agent-stats", "bytesSent", metric("qvs_mirror_agent_sent_bytes_total")},
    {"mirror-agent-stats", "droppedNoMemory", metric("qvs_mirror_agent_dropped_frames_total"),
     R"(reason="no-memory")"},
    {"mirror-agent-stats", "droppedNoRoute", metric("qvs_mirror_agent_dropped_frames_total"),
     R"(reason="no-route")"},
    {"mirror-agent-stats", "droppedNoUplink", metric("qvs_mirror_agent_dropped_frames_total"),
     R"(reason="no-uplink")"},
    {"mirror-agent-stats", "droppedNoAddress", metric("qvs_mirror_agent_dropped_frames_total"),
     R"(reason="no-address")"},

    {"flow-stats", "sampledPorts", metric("qvs_ipfix_sampled_ports")},
    {"flow-stats", "collectors", metric("qvs_ipfix_collectors")},
    {"flow-stats", "flowsInTable", metric("qvs_ipfix_flows")},
    {"flow-stats", "flowsBegun", metric("qvs_ipfix_flows_begun_total")},
    {"flow-stats", "flowsEndedIdle", metric("qvs_ipfix_flows_ended_total"), R"(reason="idle")"},
    {"flow-stats", "flowsEndedActive", metric("qvs_ipfix_flows_ended_total"), R"(reason="active")"},
    {"flow-stats", "flowsEndedForced", metric("qvs_ipfix_flows_ended_total"), R"(reason="forced")"},
    {"flow-stats", "framesSeen", metric("qvs_ipfix_seen_frames_total")},
    {"flow-stats", "bytesSeen", metric("qvs_ipfix_seen_bytes_total")},
    {"flow-stats", "framesSampled", metric("qvs_ipfix_sampled_frames_total")},
    {"flow-stats", "bytesSampled", metric("qvs_ipfix_sampled_bytes_total")},
    {"flow-stats", "framesWithoutFlow", metric("qvs_ipfix_frames_without_flow_total")},
    {"flow-stats", "recordsSent", metric("qvs_ipfix_records_sent_total")},
    {"flow-stats", "templatesSent", metric("qvs_ipfix_templates_sent_total")},
    {"flow-stats", "messagesSent", metric("qvs_ipfix_messages_sent_total")},
    {"flow-stats", "bytesSent", metric("qvs_ipfix_sent_bytes_total")},
    {"flow-stats", "drops", metric("qvs_ipfix_drops_total")},

    {"bfd-stats", "sent", metric("qvs_bfd_packets_total"), kOut},
    {"bfd-stats", "received", metric("qvs_bfd_packets_total"), kIn},
    {"bfd-stats", "malformed", metric("qvs_bfd_malformed_packets_total")},
    {"bfd-stats", "withoutSession", metric("qvs_bfd_packets_without_session_total")},
    {"bfd-stats", "cameUp", metric("qvs_bfd_sessions_came_up_total")},
    {"bfd-stats", "wentDown", metric("qvs_bfd_sessions_went_down_total")},
    {"bfd-stats", "timedOut", metric("qvs_bfd_sessions_timed_out_total")},
    {"bfd-stats", "sendFailures", metric("qvs_bfd_send_failures_total")},
};

}  // namespace

std::span<const FieldMetric> fieldMetrics() {
    return kFieldMetrics;
}

}  // namespace qvs::cli
