// SPDX-License-Identifier: Apache-2.0
// What nearly every test of the library needs: its functions, those of the state library, bytes and the host.
#pragma once

#include <gtest/gtest.h>
#include <qvs/mesh_public.h>
#include <qvs/qvs.h>

#include <cstdint>
#include <cstring>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "support/bytes.h"
#include "support/host.h"
