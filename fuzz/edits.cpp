// SPDX-License-Identifier: Apache-2.0
// Edits the mirror sessions of a port and the uplinks of a switch in any order. What is stored is what a
// simple model of the lists has.
#include <algorithm>
#include <cstring>
#include <vector>

#include "kernel.h"
#include "qvs/keys.h"
#include "qvs/qvs.h"
#include "support/mirror.h"

namespace {

using namespace qvs::fuzz;
using qvs::test::encode;
using qvs::test::Session;
using qvs::test::u32;

using Sessions = std::vector<Session>;

std::string nameOf(uint8_t byte) {
    return std::string(1 + byte % 3, static_cast<char>('a' + byte / 3 % 4));
}

class Mirrors {
  public:
    void edit(uint8_t operation, Bytes &input) {
        if (operation == 0) {
            const std::string id = nameOf(input.u8());
            const auto found = std::find_if(stored_.begin(), stored_.end(),
                                            [&](const Session &session) { return session.id == id; });
            const uint32_t status = VSDVS_RemoveDVMirrorSession("sw1", "port0", id.c_str());
            require(status == (found != stored_.end() ? HYP_OK : HYP_NOT_FOUND));
            if (found != stored_.end()) stored_.erase(found);
            isStored_ = isStored_ && (status != HYP_OK || !stored_.empty());
        } else if (operation == 1) {
            require(VSDVS_ClearDVMirrorSessions("sw1", "port0") == HYP_OK);
            stored_.clear();
            isStored_ = false;
        } else {
            Sessions more(input.u8() % 4);
            bool clash = false;
            for (Session &session : more) {
                session.id = nameOf(input.u8());
                for (auto *group : {&session.dst, &session.in, &session.out})
                    group->resize(input.u8() % 4);
                const std::string mark(1, static_cast<char>(input.u8()));
                for (auto *group : {&session.dst, &session.in, &session.out})
                    for (std::string &entity : *group)
                        entity = mark + std::to_string(&entity - group->data());
                clash = clash || std::any_of(stored_.begin(), stored_.end(),
                                             [&](const Session &other) { return other.id == session.id; });
            }
            if (operation == 2) {
                require(VSDVS_SetDVMirrorSessions("sw1", "port0", encode(more).data()) == HYP_OK);
                stored_ = more;
                isStored_ = true;
            } else {
                const uint32_t status = VSDVS_AppendDVMirrorSessions("sw1", "port0", encode(more).data());
                require(status == (clash ? HYP_EXISTS : HYP_OK));
                if (!clash) stored_.insert(stored_.end(), more.begin(), more.end());
                isStored_ = isStored_ || !clash;
            }
        }
        const auto &properties = fuzzedKernel().properties;
        const auto found = properties.find(std::string("port0 ") + QVS_KEY_PORT_MIRROR_SESSIONS);
        require((found != properties.end()) == isStored_);
        if (isStored_) require(found->second == encode(stored_));
    }

  private:
    Sessions stored_;
    bool isStored_ = false;
};

class Uplinks {
  public:
    void edit(uint8_t operation, Bytes &input) {
        const std::string name = nameOf(input.u8());
        const bool exists = fuzzedKernel().ports.contains(name);
        if (operation == 0) {
            VSDVS_ClearSwitchUplinkPorts("sw1");
            names_.clear();
        } else if (operation == 1) {
            const uint32_t status = VSDVS_RemoveSwitchUplinkPort("sw1", name.c_str());
            require(status == (exists && !names_.empty() ? HYP_OK : HYP_NOT_FOUND));
            names_.erase(name);
        } else {
            const uint32_t status = VSDVS_AddSwitchUplinkPort("sw1", name.c_str());
            require(status == (exists ? HYP_EXISTS : HYP_OK));
            if (!exists) names_.insert(name);
        }
        const auto &properties = fuzzedKernel().properties;
        require(listed(properties, QVS_KEY_UPLINK_NAMES, 81) == names_);
        require(listed(properties, QVS_KEY_UPLINK_PORTS, 48) == names_);
    }

  private:
    static std::set<std::string> listed(const std::map<std::string, std::string> &properties, const char *key,
                                        size_t size) {
        const auto found = properties.find(std::string(" ") + key);
        std::set<std::string> names;
        if (found == properties.end()) return names;
        for (size_t at = 4; at < found->second.size(); at += size)
            require(names.insert(found->second.c_str() + at).second);
        require(found->second.substr(0, 4) == u32(static_cast<uint32_t>(names.size())));
        require(!names.empty());
        return names;
    }

    std::set<std::string> names_;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    Bytes input(data, size);
    fuzzedKernel() = {};
    // Nothing that is edited is in the snapshot.
    static const bool loaded = (loadSnapshot(), true);
    require(loaded);
    Mirrors mirrors;
    Uplinks uplinks;
    while (!input.empty()) {
        const uint8_t operation = input.u8();
        if (operation % 2 == 0) {
            mirrors.edit(operation / 2 % 4, input);
        } else {
            uplinks.edit(operation / 2 % 4, input);
        }
    }
    return 0;
}
