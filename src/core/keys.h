// Keys that more than one family reads.
#pragma once

namespace qvs::key {

constexpr const char *kAlias = "com.quillon.common.alias";
constexpr const char *kHostPortset = "com.quillon.common.host.portset";
constexpr const char *kPortStatus = "com.quillon.common.port.volatile.status";

}  // namespace qvs::key
