// Properties that more than one family reads.
#pragma once

#include "core/keys.h"
#include "dvs/property.h"

namespace qvs {

constexpr Property kVersion{"com.quillon.common.version", Scope::Global, DVS_PROP_CONFIG};
constexpr Property kPortSecurity{"com.quillon.vswitch.port.security", Scope::Port, DVS_PROP_CONFIG};

}  // namespace qvs
