// The requests of the state library.
#include "daemon/front/state_requests.h"
#include "daemon/devices/busy_ports.h"
#include "daemon/model/text.h"

#include <fmt/format.h>

#include "state_library/property_list.h"
#include "wire/message.h"

namespace qvs::kernel {

namespace {

using wire::Kind;

constexpr Status kIoError = static_cast<Status>(0xbad0008);
constexpr size_t kShared = 64 << 10;

std::string_view scopeName(const StateRequest &request) {
    switch (request.place.scope) {
        case Scope::Global:
            return "GlobalProp";
        case Scope::Host:
            return "HostProp";
        case Scope::Port:
            return "PortData";
    }
    return "";
}

std::string placeText(const StateRequest &request) {
    std::string text = "switch=" + quote(request.place.switchId);
    if (!request.place.portId.empty() || request.place.scope == Scope::Port) {
        text += " port=" + quote(request.place.portId);
    }
    return text;
}

Status addPort(const StateRequest &request, Model &model) {
    if (model.inventory.findSwitch(request.place.switchId) == nullptr) return Status::NotFound;
    const auto unpacked = mesh::unpackProperties(request.value);
    if (!unpacked) return Status::BadParameter;
    std::vector<PropertyView> properties;
    properties.reserve(unpacked->size());
    for (const auto &property : *unpacked) {
        if (property.key.empty()) return Status::BadParameter;
        properties.push_back({property.key, property.value, property.type});
    }
    return model.dataPaths.addPort(request.place.switchId, request.place.portId, properties);
}

Status change(const StateRequest &request, Model &model) {
    const Place &place = request.place;
    switch (request.kind) {
        case Kind::PropSet:
            return model.properties.set(place, {request.key, request.value, request.type});
        case Kind::PropClear:
            return model.properties.clear(place, request.key);
        case Kind::SwitchAdd:
            return model.dataPaths.addSwitch(place.switchId, request.key, request.type, request.version);
        case Kind::SwitchAssociate:
            return model.dataPaths.associate(place.switchId);
        case Kind::SwitchDissociate:
            return model.dataPaths.dissociate(place.switchId);
        case Kind::SwitchRemove:
            return model.dataPaths.removeSwitch(place.switchId);
        case Kind::PortAdd:
            return addPort(request, model);
        case Kind::PortRemove:
            return model.dataPaths.removePort(place.switchId, place.portId);
        default:
            return Status::Failure;
    }
}

bool readsValue(Kind kind) {
    return kind == Kind::StateGet || kind == Kind::PropGet;
}

}  // namespace

bool isStateRequest(Kind kind) {
    return kind >= Kind::StateGet && kind <= Kind::PortRemove;
}

std::optional<StateRequest> parseStateRequest(Kind kind, std::string_view payload) {
    StateRequest request;
    request.kind = kind;
    wire::Reader reader(payload);
    const bool isProperty = kind == Kind::PropGet || kind == Kind::PropSet || kind == Kind::PropClear;
    const bool isPort = isProperty || kind == Kind::PortAdd || kind == Kind::PortRemove;
    if (isProperty) {
        const uint8_t scope = reader.u8();
        if (scope > static_cast<uint8_t>(Scope::Port)) return std::nullopt;
        request.place.scope = static_cast<Scope>(scope);
    }
    if (kind == Kind::StateGet) request.asFile = reader.u8() != 0;
    if (kind != Kind::StateGet) request.place.switchId = reader.text();
    if (isPort) request.place.portId = reader.text();
    if (isProperty || kind == Kind::SwitchAdd) request.key = reader.text();
    if (kind == Kind::PropSet || kind == Kind::PortAdd) request.value = reader.text();
    if (kind == Kind::PropSet || kind == Kind::SwitchAdd) request.type = reader.u32();
    if (kind == Kind::SwitchAdd) request.version = reader.u32();
    if (!reader.complete()) return std::nullopt;
    return request;
}

std::string describe(const StateRequest &request) {
    const std::string place = placeText(request);
    switch (request.kind) {
        case Kind::StateGet:
            return "state StateGet";
        case Kind::PropGet:
            return fmt::format("state {}Get {} key={}", scopeName(request), place, quote(request.key));
        case Kind::PropSet:
            return fmt::format("state {}Set {} key={} length={} type={}", scopeName(request), place,
                               quote(request.key), request.value.size(), request.type);
        case Kind::PropClear:
            return fmt::format("state {}Clear {} key={}", scopeName(request), place, quote(request.key));
        case Kind::SwitchAdd:
            return fmt::format("state SwitchAdd {} class={} maxPorts={} version={}", place,
                               quote(request.key), request.type, request.version);
        case Kind::SwitchAssociate:
            return "state SwitchAssociate " + place;
        case Kind::SwitchDissociate:
            return "state SwitchDissociate " + place;
        case Kind::SwitchRemove:
            return "state SwitchRemove " + place;
        case Kind::PortAdd:
            return fmt::format("state PortAdd switch={} port={} length={}", quote(request.place.switchId),
                               quote(request.place.portId), request.value.size());
        case Kind::PortRemove:
            return fmt::format("state PortRemove switch={} port={}", quote(request.place.switchId),
                               quote(request.place.portId));
        default:
            return "state ?";
    }
}

std::string describe(const StateAnswer &answer) {
    std::string text = fmt::format(" -> {:#x}", static_cast<uint32_t>(answer.status));
    if (answer.hasValue && answer.status == Status::Ok) {
        text += fmt::format(" length={}", answer.blob.owner ? answer.blob.bytes.size() : answer.value.size());
    }
    return text;
}

StateAnswer execute(const StateRequest &request, Kernel &kernel) try {
    StateAnswer answer;
    answer.hasValue = readsValue(request.kind);
    if (request.kind == Kind::StateGet) {
        lookAtAll(kernel.model);
        answer.blob = kernel.snapshot.get();
        if (answer.blob.owner == nullptr) answer.status = Status::NoMemory;
    } else if (request.kind == Kind::PropGet) {
        lookAt(kernel.model, request.place, request.key);
        // However many clients ask for a large value, and take their time to read it, there is one of it.
        const PropertyRef stored = kernel.model.properties.stored(request.place, request.key);
        if (stored != nullptr && stored->value.size() >= kShared) {
            answer.blob = {stored, stored->value};
        } else {
            answer.status = kernel.model.properties.get(request.place, request.key, &answer.value);
        }
    } else {
        answer.status = change(request, kernel.model);
    }
    return answer;
} catch (const StoreError &error) {
    logStoreFailure(kernel.store, error);
    return failed(request, error.full() ? Status::NoSpace : kIoError);
}

StateAnswer failed(const StateRequest &request, Status status) {
    StateAnswer answer;
    answer.status = status;
    answer.hasValue = readsValue(request.kind);
    return answer;
}

void changeValue(const Effect &effect, StateAnswer *answer) {
    if (!effect.changesOutput() || !answer->hasValue) return;
    if (answer->blob.owner != nullptr) {
        answer->value = answer->blob.bytes;
        answer->blob = {};
    }
    effect.change(&answer->value, wire::kMaxRequest);
}

}  // namespace qvs::kernel
