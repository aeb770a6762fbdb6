// SPDX-License-Identifier: Apache-2.0
// Sends policies to the data path and waits until they are in force.
#include "daemon/network/network.h"

#include <unistd.h>

#include <algorithm>
#include <utility>

#include <fmt/format.h>

#include "daemon/devices/attachments.h"
#include "datapath/protocol.h"

namespace qvs::kernel {

namespace {

using namespace std::chrono_literals;
using std::chrono::steady_clock;

constexpr auto kAnswersWithin = 1000ms;
// A new data path also opens all attachments. Clients wait longer than this.
constexpr auto kBeginsWithin = 8000ms;

template <typename Object>
std::string packed(const Object &object) {
    flatbuffers::FlatBufferBuilder builder;
    builder.Finish(Object::TableType::Pack(builder, &object));
    return {reinterpret_cast<const char *>(builder.GetBufferPointer()), builder.GetSize()};
}

wire::Writer message(datapath::Kind kind) {
    return wire::Writer(static_cast<wire::Kind>(kind));
}

}  // namespace

Network::Network(asio::io_context &io, Model &model, Options options)
    : model_(model),
      options_(std::move(options)),
      process_(io, options_.program,
               {[this] { processStarted(); },
                [this](uint32_t kind, std::string_view payload, int file) { received(kind, payload, file); },
                [this] { processEnded(); }}),
      timer_(io) {}

Network::~Network() {
    process_.stop();
    for (const auto &[name, file] : kept_)
        close(file);
}

uint64_t Network::publish() {
    if (changes_ == model_.changes.generation() && tables_ == model_.tables.generation() &&
        model_.facts.forgotten.empty())
        return 0;
    if (!hasNetwork(model_)) {
        if (on_) end();
        changes_ = model_.changes.generation();
        tables_ = model_.tables.generation();
        return 0;
    }
    if (!on_) {
        begin();
        return generation_;
    }
    // A process that is not there gets everything when it starts.
    return process_.running() ? sendChanges() : 0;
}

void Network::begin() {
    slots_ = std::make_unique<Slots>(model_.facts);
    on_ = true;
    process_.start();
}

void Network::end() {
    on_ = false;
    process_.stop();
    processEnded();
    for (const auto &[name, file] : std::exchange(kept_, {}))
        close(file);
    stored_.clear();
    carriers_.clear();
    for (const uint32_t number : std::exchange(model_.facts.attached, {})) {
        if (Port *port = model_.inventory.findPort(number)) applyCarrier(*port, true);
        takeCheck(number, "");
    }
    slots_.reset();
}

void Network::stop() {
    process_.stop();
}

void Network::processStarted() {
    process_.send(message(datapath::Kind::Start).text(options_.directory).bytes(), slots_->file());
    for (const auto &[name, file] : kept_)
        process_.send(message(datapath::Kind::Kept).text(name).bytes(), file);
    whole_ = true;
    sendChanges();
}

void Network::processEnded() {
    model_.facts.learnt.clear();
    model_.facts.forgotten.clear();
    model_.facts.joined.clear();
    neighbours_.clear();
    owed_.clear();
    timer_.cancel();
    answer(generation_);
}

// Returns the generation that was sent, or 0 if the data path has everything.
uint64_t Network::sendChanges() {
    policy::ConfigurationT configuration;
    configuration.generation = generation_ + 1;
    configuration.whole = whole_;
    const Changes::Touched touched = model_.changes.take(Changes::Reader::Network);
    if (whole_ || touched.anything || !touched.moved.empty() || tables_ != model_.tables.generation()) {
        compileAll(&configuration);
    } else {
        compileTouched(touched, &configuration);
    }
    for (const auto &[learnt, port] : std::exchange(model_.facts.forgotten, {})) {
        auto &forgotten = configuration.forgotten.emplace_back(std::make_unique<policy::ForgottenMacT>());
        forgotten->port = port;
        forgotten->address = std::make_unique<policy::Mac>(macFrom(learnt.address));
        forgotten->vlan = learnt.vlan;
    }
    changes_ = model_.changes.generation();
    tables_ = model_.tables.generation();
    const bool empty = !configuration.whole && configuration.switches.empty() &&
                       configuration.changedPorts.empty() && configuration.removed.empty() &&
                       !configuration.attachmentsGiven && configuration.forgotten.empty();
    if (empty) return 0;
    send(&configuration);
    return generation_;
}

void Network::compileAll(policy::ConfigurationT *configuration) {
    try {
        dropDeadAttachments(model_);
    } catch (const StoreError &) {
        // The policies are not in force. The next change tries again.
    }
    if (whole_) sent_.clear();
    slots_->begin();
    macs_ = compileStaticMacs(model_);
    addAttachments(configuration);
    applyCarriers();
    std::set<uint32_t> present;
    for (const auto &[row, sw] : model_.inventory.switches()) {
        if (sw->portset == nullptr) continue;
        present.insert(sw->portset->number);
        compileInto(*sw, configuration);
    }
    for (auto sent = sent_.begin(); sent != sent_.end();) {
        if (present.contains(sent->first)) {
            ++sent;
            continue;
        }
        configuration->removed.push_back(sent->first);
        sent = sent_.erase(sent);
    }
    slots_->end(configuration->generation);
    // Only carriers changed in the meantime, and the data path knows them.
    model_.changes.take(Changes::Reader::Network);
}

// Adds the switch, or those of its ports that changed.
void Network::compileInto(const Switch &sw, policy::ConfigurationT *configuration) {
    auto head = compileSwitch(model_, sw, macs_, options_.directory, *slots_);
    SentSwitch now{packed(*head), {}};
    for (const auto &[number, port] : sw.ports) {
        auto compiled = compilePort(model_, *port, *slots_);
        now.ports.emplace(number, packed(*compiled));
        head->ports.push_back(std::move(compiled));
    }
    SentSwitch &before = sent_[head->number];
    const bool samePorts =
        std::equal(now.ports.begin(), now.ports.end(), before.ports.begin(), before.ports.end(),
                   [](const auto &a, const auto &b) { return a.first == b.first; });
    if (now.head != before.head || !samePorts) {
        configuration->switches.push_back(std::move(head));
    } else {
        for (auto &port : head->ports) {
            if (now.ports[port->number] == before.ports[port->number]) continue;
            auto &changed =
                configuration->changedPorts.emplace_back(std::make_unique<policy::ChangedPortT>());
            changed->portset = head->number;
            changed->policy = std::move(port);
        }
    }
    before = std::move(now);
}

void Network::compileTouched(const Changes::Touched &touched, policy::ConfigurationT *configuration) {
    std::set<const Switch *> switches(touched.switches.begin(), touched.switches.end());
    for (const Port *port : touched.ports) {
        // Mirror sessions of the switch can be stored at its ports.
        const Switch &sw = *port->owner;
        if (sw.portset == nullptr || switches.contains(&sw)) continue;
        if (packed(*compileSwitch(model_, sw, macs_, options_.directory, *slots_)) !=
            sent_[sw.portset->number].head)
            switches.insert(&sw);
    }
    for (const Switch *sw : switches) {
        if (sw->portset != nullptr) compileInto(*sw, configuration);
    }
    for (const Port *port : std::set<const Port *>(touched.ports.begin(), touched.ports.end())) {
        if (port->owner->portset != nullptr && !switches.contains(port->owner))
            compileInto(*port, configuration);
    }
}

void Network::compileInto(const Port &port, policy::ConfigurationT *configuration) {
    const uint32_t portset = port.owner->portset->number;
    auto changed = std::make_unique<policy::ChangedPortT>();
    changed->portset = portset;
    changed->policy = compilePort(model_, port, *slots_);
    std::string &before = sent_[portset].ports[port.number];
    std::string now = packed(*changed->policy);
    if (now == before) return;
    before = std::move(now);
    configuration->changedPorts.push_back(std::move(changed));
}

void Network::addAttachments(policy::ConfigurationT *configuration) {
    policy::ConfigurationT list;
    list.attachments = compileAttachments(model_, options_.directory);
    const auto before = std::exchange(stored_, {});
    for (const auto &attachment : list.attachments)
        stored_.insert(attachment->port);
    for (const uint32_t number : before) {
        if (!stored_.contains(number)) carriers_.erase(number);
    }
    std::string now = packed(list);
    if (!whole_ && now == sentAttachments_) return;
    sentAttachments_ = std::move(now);
    configuration->attachments = std::move(list.attachments);
    configuration->attachmentsGiven = true;
}

void Network::send(policy::ConfigurationT *configuration) {
    flatbuffers::FlatBufferBuilder builder;
    policy::FinishConfigurationBuffer(builder, policy::Configuration::Pack(builder, configuration));
    const std::string_view bytes(reinterpret_cast<const char *>(builder.GetBufferPointer()),
                                 builder.GetSize());
    process_.send(message(datapath::Kind::Configure).text(bytes).bytes());
    generation_ = configuration->generation;
    const auto limit = whole_ ? kBeginsWithin : kAnswersWithin;
    const auto earliest = owed_.empty() ? steady_clock::time_point() : owed_.back().until;
    owed_.push_back({generation_, std::max(earliest, steady_clock::now() + limit)});
    whole_ = false;
    watch();
}

void Network::wait(uint64_t generation, std::function<void()> then) {
    if (generation <= inForce_ || owed_.empty()) return then();
    waiting_.emplace(generation, std::move(then));
}

// Calls the functions that wait for this generation or an earlier one.
void Network::answer(uint64_t generation) {
    std::vector<std::function<void()>> ready;
    const auto end = waiting_.upper_bound(generation);
    for (auto waiter = waiting_.begin(); waiter != end; ++waiter)
        ready.push_back(std::move(waiter->second));
    waiting_.erase(waiting_.begin(), end);
    for (const auto &then : ready)
        then();
}

// A data path that does not answer in time counts as hung.
void Network::watch() {
    if (owed_.empty()) {
        timer_.cancel();
        return;
    }
    timer_.expires_at(owed_.front().until);
    timer_.async_wait([this](const asio::error_code &error) {
        if (error || owed_.empty() || owed_.front().until > steady_clock::now()) return;
        process_.kill(fmt::format("it did not carry out configuration {} in time", owed_.front().generation));
    });
}

}  // namespace qvs::kernel
