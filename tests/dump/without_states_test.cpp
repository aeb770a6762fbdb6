// SPDX-License-Identifier: Apache-2.0
// libqvs beside a state library that cannot tell the state of a port: it loads, and no port has a mark.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <qvs/mesh_public.h>
#include <qvs/netdvs.h>

#include <cstdlib>

#include "state_library/snapshot_writer.h"

namespace {

TEST(WithoutStates, NoPortHasAMark) {
    ASSERT_EQ(dlsym(RTLD_DEFAULT, "DVS_PortState"), nullptr);
    qvs::mesh::SnapshotWriter writer;
    writer.addSwitch("id", "vswitch", 8, 105, {}, {});
    for (const uint32_t state : {0u, 1u, 2u, 3u, 4u, 9u})
        writer.addPort(std::to_string(state), state, {});
    const auto blob = writer.finish();
    ASSERT_EQ(DVSState_ConfigDeserialize(blob.data(), static_cast<uint32_t>(blob.size())), HYP_OK);

    char *text = nullptr;
    ASSERT_EQ(NetDVS_Dump(nullptr, &text), HYP_OK);
    EXPECT_STREQ(text,
                 "switch id (vswitch)\n\tmax ports: 8\n\tglobal properties:\n\thost properties:\n"
                 "\tport 0:\n\tport 1:\n\tport 2:\n\tport 3:\n\tport 4:\n\tport 9:\n");
    NetDVS_FreeMemory(text);
}

}  // namespace
