// SPDX-License-Identifier: Apache-2.0
// The table of control operations.
#include "daemon/front/control.h"

#include <unistd.h>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "daemon/devices/attachments.h"
#include "daemon/devices/device_request.h"
#include "daemon/devices/mirror_sessions.h"
#include "daemon/devices/network_counters.h"
#include "daemon/front/lab.h"
#include "daemon/model/text.h"
#include "daemon/network/network.h"
#include "wire/json.h"

namespace qvs::kernel {

namespace {

using nlohmann::json;

json describeSwitch(const Model &model, const Switch &sw) {
    auto uplinks = json::array();
    for (const Nic *nic : model.inventory.boundNics(sw))
        uplinks.push_back({{"nic", nic->name}, {"port", nic->port->id}});
    return {{"id", sw.id},
            {"alias", sw.alias()},
            {"class", sw.className},
            {"version", sw.version},
            {"maxPorts", sw.maxPorts},
            {"portset", sw.portset == nullptr ? json() : json(sw.portset->name)},
            {"ports", sw.ports.size()},
            {"uplinks", uplinks}};
}

json describeNic(const Nic &nic) {
    return {{"name", nic.name},
            {"link", nic.link && nic.carrier ? "up" : "down"},
            {"admin", nic.admin ? "up" : "down"},
            {"speedMbps", nic.speedMbps},
            {"mtu", nic.mtu},
            {"mac", hexDigits(bytesOf(nic.mac), ":")},
            {"switch", nic.port == nullptr ? json() : json(nic.port->owner->id)},
            {"port", nic.port == nullptr ? json() : json(nic.port->id)}};
}

json status(Members &, Server &server) {
    const Kernel &kernel = server.kernel();
    const Model &model = kernel.model;
    auto switches = json::array();
    for (const auto &[row, sw] : model.inventory.switches())
        switches.push_back(describeSwitch(model, *sw));
    auto portsets = json::array();
    for (const auto &[number, portset] : model.inventory.portsets()) {
        portsets.push_back({{"name", portset->name},
                            {"number", number},
                            {"capacity", portset->capacity},
                            {"mtu", portset->mtu},
                            {"switch", portset->owner == nullptr ? json() : json(portset->owner->id)}});
    }
    auto nics = json::array();
    for (const auto &nic : model.inventory.nics())
        nics.push_back(describeNic(*nic));
    json answer = {{"pid", getpid()},
                   {"uptimeSeconds", server.uptime().count()},
                   {"state", server.options().directory},
                   {"staysWithoutLease", !server.options().whileLeased},
                   {"leases", server.leases()},
                   {"trace", kernel.trace.files()},
                   {"traceDropped", kernel.trace.dropped()},
                   {"switches", switches},
                   {"ports", model.inventory.portCount()},
                   {"portsets", portsets},
                   {"nics", nics},
                   {"faults", kernel.faults.list()}};
    answer["network"] = server.network().describe();
    for (const DevicePart *part : deviceParts()) {
        if (part->describe != nullptr) part->describe(model, &answer);
    }
    return answer;
}

json reset(Members &members, Server &server) {
    members.finish();
    server.kernel().model.reset();
    server.kernel().faults.clear();
    return json::object();
}

json seed(Members &members, Server &server) {
    const json *lab = members.any("lab");
    if (lab == nullptr) members.fail("lab", "is missing");
    members.finish();
    applyLab(parseLab(*lab), server.kernel().model, server.kernel().store);
    return json::object();
}

json traceFile(Members &members, Server &server) {
    const std::string path = members.text("path");
    members.finish();
    if (const auto problem = server.kernel().trace.openFile(path))
        throw JsonError(fmt::format("cannot open the trace {}: {}", path, *problem));
    return json::object();
}

// Only answers. The caller ends the daemon after the answer is sent.
json nothing(Members &, Server &) {
    return json::object();
}

json addFault(Members &members, Server &server) {
    return {{"id", server.kernel().faults.add(&members)}};
}

json listFaults(Members &, Server &server) {
    return {{"faults", server.kernel().faults.list()}};
}

json clearFaults(Members &members, Server &server) {
    members.finish();
    server.kernel().faults.clear();
    return json::object();
}

// Returns the port that a request names by its identifier or, for an uplink, by its NIC.
Port &attachedPort(Members &members, Model &model) {
    const Switch &sw = switchOf(members, model);
    const std::string name = members.text("port");
    const Port *port = findByName(model, sw, name);
    if (port == nullptr) members.fail("port", "is neither a port nor a NIC of the switch: " + name);
    return *model.inventory.findPort(port->number);
}

json attach(Members &members, Server &server) {
    Model &model = server.kernel().model;
    Port &port = attachedPort(members, model);
    const Attachment attachment = readAttachment(members);
    const auto mac = members.maybeMac("mac");
    members.finish();
    if (mac && port.nic != nullptr)
        members.fail("mac", "cannot be given for an uplink, which has the address of its NIC");
    Transaction transaction(model.store);
    if (mac) setClientMac(model, port, *mac);
    if (attachPort(model, port, attachment) != Status::Ok)
        members.fail("name", "is not a valid name of a client: " + attachment.name);
    transaction.commit();
    return json::object();
}

json detach(Members &members, Server &server) {
    Model &model = server.kernel().model;
    Port &port = attachedPort(members, model);
    members.finish();
    if (detachPort(model, port) == Status::NotFound) members.fail("port", "has no attachment");
    return json::object();
}

// Lists the reasons for which ports dropped frames, of all switches or of one, or of one of its ports.
json drops(Members &members, Server &server) {
    Model &model = server.kernel().model;
    const Port *only = nullptr;
    const Switch *of = nullptr;
    if (members.any("port") != nullptr) {
        only = &attachedPort(members, model);
    } else if (members.any("switch") != nullptr) {
        of = &switchOf(members, model);
    }
    members.finish();
    json list = json::array();
    for (const auto &[row, sw] : model.inventory.switches()) {
        for (const auto &[number, port] : sw->ports) {
            if ((only != nullptr && only != port.get()) || (of != nullptr && of != sw.get())) continue;
            for (size_t reason = 0; reason < std::size(datapath::kDropNames); ++reason) {
                const auto frames =
                    slotValue(model, portSlot(number), dropValue(static_cast<datapath::Drop>(reason)));
                if (frames == 0) continue;
                list.push_back({{"switch", sw->alias()},
                                {"port", port->id},
                                {"client", port->clientName()},
                                {"reason", datapath::kDropNames[reason]},
                                {"frames", frames}});
            }
        }
    }
    return {{"drops", list}};
}

json network(Members &members, Server &server) {
    const bool enabled = members.maybeFlag("enabled").value_or(true);
    members.finish();
    enableNetwork(server.kernel().model, enabled);
    return json::object();
}

constexpr struct {
    std::string_view name;
    json (*run)(Members &members, Server &server);
} kOperations[] = {
    {"status", status},         {"reset", reset},
    {"stop", nothing},          {"seed", seed},
    {"trace.file", traceFile},  {"fault.add", addFault},
    {"fault.list", listFaults}, {"fault.clear", clearFaults},
    {"attach", attach},         {"detach", detach},
    {"network", network},       {"drops", drops},
};

json perform(const json &request, Server &server, bool *stops) {
    Members members(request, "request");
    const std::string name = members.text("op");
    for (const auto &operation : kOperations) {
        if (operation.name != name) continue;
        json reply = operation.run(members, server);
        // Checks the operations that have no other members.
        members.finish();
        *stops = name == "stop";
        return reply;
    }
    members.fail("op", "is not an operation: " + name);
}

}  // namespace

ControlAnswer runControl(std::string_view request, Server &server) {
    ControlAnswer answer;
    json reply;
    try {
        reply = perform(wire::parseJson(request), server, &answer.stops);
        reply["ok"] = true;
    } catch (const StoreError &error) {
        logStoreFailure(server.kernel().store, error);
        reply = {{"ok", false}, {"error", error.what()}};
    } catch (const std::exception &error) {
        reply = {{"ok", false}, {"error", error.what()}};
    }
    // Names can contain any bytes, but JSON must be UTF-8.
    answer.json = reply.dump(-1, ' ', false, json::error_handler_t::replace);
    return answer;
}

}  // namespace qvs::kernel
