// SPDX-License-Identifier: Apache-2.0
#include "config/document/watch.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "config/document/export.h"
#include "config/library/call.h"
#include "config/library/host.h"
#include "config/library/snapshot.h"

namespace qvs::config {
namespace {

std::string linkText(bool up) {
    return up ? "up" : "down";
}

}  // namespace

Watch::Watch(std::vector<std::string> aliases) : aliases_(std::move(aliases)) {
    for (const std::string &alias : aliases_)
        findVswitch(alias);
    requireState(look());
    changes_.clear();
}

bool Watch::watched(const std::string &alias) const {
    return aliases_.empty() || std::find(aliases_.begin(), aliases_.end(), alias) != aliases_.end();
}

// What the loaded snapshot has.
Watch::Seen Watch::read() const {
    Seen seen;
    std::vector<std::string> there;
    std::vector<std::string> ignored;
    forEachSwitch([&](DVSSwitch *sw) {
        const std::optional<std::string_view> alias = findText({Scope::Global, sw}, QVS_KEY_ALIAS);
        if (!alias || std::string_view(DVS_ClassName(sw)) != "vswitch" || !watched(std::string(*alias)))
            return true;
        there.emplace_back(*alias);
        Links &links = seen.links[there.back()];
        forEachPort(sw, [&](DVSPort *port) {
            links.emplace(DVS_PortId(port), portStatus(port).linkUp);
            return true;
        });
        return true;
    });
    // No name stands for all.
    if (!there.empty()) seen.document = exportDocument(there, {}, ignored);
    return seen;
}

void Watch::addLinkChanges(const Seen &now) {
    for (const auto &[alias, links] : now.links) {
        const auto before = seen_.links.find(alias);
        if (before == seen_.links.end()) continue;
        for (const auto &[port, up] : links) {
            const auto earlier = before->second.find(port);
            if (earlier == before->second.end() || earlier->second == up) continue;
            Change change;
            change.alias = alias;
            change.port = port;
            change.scope = Scope::Port;
            change.member = "link";
            change.beforeText = linkText(earlier->second);
            change.afterText = linkText(up);
            change.before = change.beforeText;
            change.after = change.afterText;
            changes_.push_back(std::move(change));
        }
    }
}

HYP_ReturnStatus Watch::look() {
    changes_.clear();
    void *bytes = nullptr;
    uint32_t length = 0;
    const uint64_t begun = bootTime();
    if (const HYP_ReturnStatus status = call<DVSHYP_StateGet>(&bytes, &length); status != HYP_OK)
        return status;
    State state(bytes, std::free);
    if (length == length_ && state_ && std::memcmp(bytes, state_.get(), length) == 0) return HYP_OK;

    // The snapshot is built from the bytes that were compared, so that no change falls between the two.
    snapshotTime = begun;
    require(call<DVSState_ConfigReset>(), "switch state");
    require(call<DVSState_ConfigDeserialize>(bytes, length), "switch state");
    Seen now = read();
    changes_ = compare(seen_.document, now.document, true);
    addLinkChanges(now);
    seen_ = std::move(now);
    state_ = std::move(state);
    length_ = length;
    return HYP_OK;
}

}  // namespace qvs::config
