// SPDX-License-Identifier: Apache-2.0
// A switch with the frames that it sends, and a small language for what happens.
#include "datapath/network.h"

#include <flatbuffers/idl.h>
#include <flatbuffers/util.h>

#include <algorithm>
#include <cctype>
#include <map>
#include <regex>
#include <sstream>
#include <stdexcept>

namespace qvs::test {
namespace {

constexpr uint16_t kTag = 0x8100;

void put16(Bytes &bytes, uint64_t value) {
    bytes.push_back(static_cast<uint8_t>(value >> 8));
    bytes.push_back(static_cast<uint8_t>(value));
}

void putMac(Bytes &bytes, uint64_t mac) {
    for (int shift = 32; shift >= 0; shift -= 16)
        put16(bytes, mac >> shift);
}

Bytes packetTo(char group, size_t length) {
    Bytes packet = bytesOf(std::string("450000000000000040110000") + "0a000001" +
                           (group == 'm' ? "ef010101" : "e0000009"));
    packet[2] = static_cast<uint8_t>(length >> 8);
    packet[3] = static_cast<uint8_t>(length);
    packet.resize(length);
    return packet;
}

// "[10][5.0]" for the tags of a frame, and what is left of it without them.
std::string tagsOf(const Bytes &bytes, Bytes &rest) {
    std::string tags;
    size_t at = 12;
    for (; bytes.size() >= at + 4 && bytes[at] == kTag >> 8 && bytes[at + 1] == 0; at += 4) {
        const int priority = bytes[at + 2] >> 5;
        const int vlan = (bytes[at + 2] & 0xf) << 8 | bytes[at + 3];
        tags += "[" + (priority != 0 ? std::to_string(priority) + "." : "") + std::to_string(vlan) + "]";
    }
    rest.assign(bytes.begin(), bytes.begin() + 12);
    rest.insert(rest.end(), bytes.begin() + static_cast<ptrdiff_t>(at), bytes.end());
    return tags;
}

std::string textOf(const std::vector<Sent> &sent) {
    std::vector<std::string> words;
    for (const Sent &frame : sent) {
        Bytes rest;
        words.push_back(std::to_string(frame.port) + tagsOf(frame.bytes, rest));
    }
    std::sort(words.begin(), words.end());
    std::string text;
    for (const std::string &word : words)
        text += (text.empty() ? "" : " ") + word;
    return text;
}

// The values of a slot by name.
const std::map<std::string, uint32_t> &counterNames() {
    static const std::map<std::string, uint32_t> names = {
        {"in", 0},           {"in-bytes", 1},
        {"in-group", 2},     {"in-all", 4},
        {"out", 6},          {"out-group", 8},
        {"out-all", 10},     {"in-dropped", 12},
        {"out-dropped", 13}, {"exception", 14},
        {"uplink", 16},      {"moves", 17},
        {"learnt", 18},      {"moved", 19},
        {"expired", 20},     {"blocked", 21},
        {"malformed", 22},   {"long", 23},
        {"vlan", 24},        {"private", 25},
        {"forged", 26},      {"changed", 27},
        {"limit", 28},       {"no-uplink", 29},
        {"reflected", 30},   {"mirror", 31},
        {"busy", 32},        {"arp-sent", 0},
        {"arp-failed", 1},   {"failovers", 2},
        {"failbacks", 3},    {"reports", 4},
        {"leaves", 5},       {"queries", 6},
        {"copies", 0},       {"copy-bytes", 1},
        {"not-copied", 2},   {"cut", 3},
        {"matched", 0},      {"filtered", 2},
        {"flooded", 33},     {"taken-in", 4},
        {"taken-out", 6},    {"no-link", 9},
        {"skipped", 10},     {"lookups", 7},
        {"misses", 8},       {"begun", 0},
        {"idle", 1},         {"active", 2},
        {"flows", 4},        {"seen", 5},
        {"sampled", 7},      {"without-flow", 9},
        {"records", 10},     {"templates", 11},
        {"messages", 12},    {"message-bytes", 13},
        {"no-packet", 14},   {"not-sent", 16},
    };
    return names;
}

std::string trimmed(const std::string &text) {
    const size_t begin = text.find_first_not_of(" \t");
    return begin == std::string::npos ? "" : text.substr(begin, text.find_last_not_of(" \t") + 1 - begin);
}

// "check@8=10,11/1500" for the VLANs and the MTU that were found, "neighbour@8=LENGTH" for the parts of a
// message.
std::string told(uint32_t port, datapath::Topic topic, std::span<const uint8_t> state) {
    const bool isCheck = topic == datapath::Topic::Check;
    std::string text = (isCheck ? "check@" : "neighbour@") + std::to_string(port) + "=";
    if (!isCheck) return text + std::to_string(state.size()) + " ";
    std::string between;
    for (size_t bit = 0; state.size() == 514 && bit < 4096; ++bit) {
        if ((state[bit / 8] >> bit % 8 & 1) == 0) continue;
        text += between + std::to_string(bit);
        between = ",";
    }
    return state.empty() ? text + " " : text + "/" + std::to_string(state[512] | state[513] << 8) + " ";
}

}  // namespace

Bytes bytesOf(const std::string &hex) {
    Bytes bytes;
    for (size_t at = 0; at + 1 < hex.size(); at += 2)
        bytes.push_back(static_cast<uint8_t>(std::stoi(hex.substr(at, 2), nullptr, 16)));
    return bytes;
}

std::string hexOf(std::span<const uint8_t> bytes) {
    std::string text;
    for (const uint8_t byte : bytes)
        for (const int digit : {byte >> 4, byte & 0xf})
            text += "0123456789abcdef"[digit];
    return text;
}

std::unique_ptr<policy::SwitchT> policyOf(const std::string &json) {
    static const std::regex mac("\"(..):(..):(..):(..):(..):(..)\"");
    std::string text;
    auto from = json.cbegin();
    for (std::sregex_iterator found(json.begin(), json.end(), mac), end; found != end; ++found) {
        text.append(from, (*found)[0].first);
        text += "{bytes:[";
        for (size_t part = 1; part <= 6; ++part)
            text += std::to_string(std::stoi((*found)[part].str(), nullptr, 16)) + (part < 6 ? "," : "]}");
        from = (*found)[0].second;
    }
    text.append(from, json.cend());
    std::string schema;
    flatbuffers::Parser parser;
    if (!flatbuffers::LoadFile(QVS_POLICY, false, &schema) || !parser.Parse(schema.c_str()) ||
        !parser.SetRootType("qvs.policy.Switch") || !parser.Parse(text.c_str()))
        throw std::runtime_error(parser.error_ + text);
    auto policy = std::make_unique<policy::SwitchT>();
    flatbuffers::GetRoot<policy::Switch>(parser.builder_.GetBufferPointer())->UnPackTo(policy.get());
    return policy;
}

uint64_t macOfName(char name) {
    if (name == '*') return 0xffffffffffff;
    if (name == 'm') return 0x01005e010101;
    if (name == 'n') return 0x01005e000009;
    if (name == 's') return 0x0180c2000003;
    return 0x020000000000 | static_cast<uint64_t>(std::isdigit(name) ? name - '0' : name);
}

Bytes frameOf(const std::string &text) {
    static const std::regex part(R"(\[(?:(\d+)\.)?(\d+)\]|\((\d+)\))");
    Bytes bytes;
    putMac(bytes, macOfName(text.at(2)));
    putMac(bytes, macOfName(text.at(0)));
    size_t length = 46;
    for (std::sregex_iterator found(text.begin(), text.end(), part), end; found != end; ++found) {
        const std::smatch &match = *found;
        if (match[3].matched) {
            length = std::stoul(match[3]);
            continue;
        }
        put16(bytes, kTag);
        put16(bytes, (match[1].matched ? std::stoul(match[1]) << 13 : 0) | std::stoul(match[2]));
    }
    const bool isIp = text.at(2) == 'm' || text.at(2) == 'n';
    put16(bytes, isIp ? 0x0800 : 0x88b5);
    const Bytes packet = isIp ? packetTo(text.at(2), length) : Bytes(length, 0xda);
    bytes.insert(bytes.end(), packet.begin(), packet.end());
    return bytes;
}

Network::Network()
    : switch_({[this](uint32_t port, const datapath::Frame &frame) {
                   if (port == busy_) return false;
                   sent_.push_back({port, Bytes(frame.bytes.begin(), frame.bytes.end()), frame.offload});
                   return true;
               },
               [this](uint64_t mac, uint16_t vlan, uint32_t port, bool here) {
                   const auto last = static_cast<char>(mac & 0xff);
                   events_ += (here ? "+" : "-") + std::string(1, last) + "@" + std::to_string(port) + "/" +
                              std::to_string(vlan) + " ";
               },
               [this](uint32_t port, std::span<const uint8_t> group, bool joined) {
                   events_ +=
                       (joined ? "+" : "-") + std::to_string(group[0]) + "@" + std::to_string(port) + " ";
               },
               slots_.get(),
               [this](uint32_t port, datapath::Topic topic, std::span<const uint8_t> state) {
                   events_ += told(port, topic, state);
               },
               [this](const policy::IpfixT &policy, const policy::CollectorT &, std::span<uint8_t> message,
                      uint32_t) {
                   if (policy.domainName == "refused") return false;
                   reports_.emplace_back(message.begin(), message.end());
                   return true;
               },
               [] { return uint64_t{1'700'000'000'000}; }}) {}

std::vector<Sent> Network::receive(uint32_t port, const Bytes &bytes, uint64_t now,
                                   datapath::Offload offload) {
    sent_.clear();
    // A block of its own, so that sanitizers see every byte that is read beyond.
    const std::unique_ptr<uint8_t[]> copy(new uint8_t[bytes.size()]);
    std::copy(bytes.begin(), bytes.end(), copy.get());
    switch_.receive(port, {{copy.get(), bytes.size()}, offload}, now);
    return takeSent();
}

std::string Network::checkFrame(const std::string &line, const std::string &expected) {
    const size_t colon = line.find(':');
    const std::string text = trimmed(line.substr(colon + 1));
    Bytes bytes;
    if (text.starts_with("hex ")) {
        bytes = bytesOf(text.substr(4));
    } else {
        bytes = frameOf(text);
    }
    const std::vector<Sent> sent = receive(static_cast<uint32_t>(std::stoul(line)), bytes, now_);
    Bytes original;
    if (bytes.size() >= 14) tagsOf(bytes, original);
    for (const Sent &frame : sent) {
        Bytes rest;
        tagsOf(frame.bytes, rest);
        if (rest != original) return "the frame to port " + std::to_string(frame.port) + " has changed";
    }
    const std::string actual = textOf(sent);
    return actual == expected ? "" : "went to \"" + actual + "\"";
}

std::string Network::check(const std::string &line) {
    const size_t arrow = line.find("->");
    const std::string expected = arrow == std::string::npos ? "" : trimmed(line.substr(arrow + 2));
    std::istringstream words(line.substr(0, arrow));
    std::string verb;
    words >> verb;
    uint32_t number = 0;
    if (std::isdigit(verb[0])) return checkFrame(trimmed(line.substr(0, arrow)), expected);
    if (verb == "events") {
        const std::string actual = trimmed(takeEvents());
        return actual == trimmed(line.substr(6)) ? "" : "happened: " + actual;
    }
    words >> number;
    sent_.clear();
    if (verb == "up" || verb == "down") {
        switch_.setCarrier(number, verb == "up", now_);
    } else if (verb == "busy") {
        setBusy(number);
    } else if (verb == "asks") {
        switch_.setPromiscuous(number, true, now_);
    } else if (verb == "forget") {
        char name = 0;
        words >> name;
        switch_.forget(number, macOfName(name), 0, now_);
    } else if (verb == "mac") {
        char name = 0;
        words >> name;
        switch_.setAddress(number, name == '-' ? 0 : macOfName(name), now_);
    } else if (verb == "at") {
        now_ = number;
        if (switch_.tick(now_) <= now_) return "tick asks for the past";
    } else if (verb == "count") {
        std::string name;
        uint64_t wanted = 0;
        while (words >> name >> wanted)
            if (const uint64_t actual = value(number, counterNames().at(name)); actual != wanted)
                return name + " is " + std::to_string(actual);
        return "";
    } else {
        return "unknown word";
    }
    const std::string actual = textOf(sent_);
    return actual == expected ? "" : "sent to \"" + actual + "\"";
}

std::string Network::run(const std::string &script) {
    std::istringstream lines(script);
    std::string problems;
    for (std::string line; std::getline(lines, line);) {
        line = trimmed(line);
        if (line.empty()) continue;
        const std::string problem = check(line);
        if (!problem.empty()) problems += line + "   # " + problem + "\n";
    }
    return problems;
}

}  // namespace qvs::test
