// SPDX-License-Identifier: Apache-2.0
// Sends messages of flow records by UDP.
#include "datapath/process/exporter.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "datapath/packet.h"
#include "datapath/process/log.h"

#include <policy_generated.h>

namespace qvs::datapath {

int Exporter::socketFor(const Address &source, bool isVersion4) {
    wire::File &file = sockets_[{source, isVersion4}];
    if (file) return file.get();
    file =
        wire::File(::socket(isVersion4 ? AF_INET : AF_INET6, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    const bool given = std::any_of(source.begin(), source.end(), [](uint8_t byte) { return byte != 0; });
    if (!file || !isVersion4 || !given || source.size() != sizeof(in_addr)) return file.get();
    sockaddr_in own{};
    own.sin_family = AF_INET;
    std::memcpy(&own.sin_addr, source.data(), source.size());
    if (bind(file.get(), reinterpret_cast<const sockaddr *>(&own), sizeof own) != 0)
        warn("flow records are not sent from {}.{}.{}.{}: {}; the machine chooses the source address",
             source[0], source[1], source[2], source[3], strerror(errno));
    return file.get();
}

bool Exporter::send(const policy::IpfixT &policy, const policy::CollectorT &collector,
                    std::span<uint8_t> message, uint32_t records) {
    constexpr size_t kMostSessions = 4096;
    constexpr size_t kSequenceAt = 8;
    constexpr size_t kDomainAt = 12;
    union {
        sockaddr any;
        sockaddr_in version4;
        sockaddr_in6 version6;
    } to{};
    const bool isVersion4 = collector.address.size() == sizeof(in_addr);
    if (isVersion4) {
        to.version4.sin_family = AF_INET;
        to.version4.sin_port = htons(collector.port);
        std::memcpy(&to.version4.sin_addr, collector.address.data(), sizeof(in_addr));
    } else if (collector.address.size() == sizeof(in6_addr)) {
        to.version6.sin6_family = AF_INET6;
        to.version6.sin6_port = htons(collector.port);
        std::memcpy(&to.version6.sin6_addr, collector.address.data(), sizeof(in6_addr));
    } else {
        return false;
    }
    const socklen_t length = isVersion4 ? sizeof to.version4 : sizeof to.version6;
    std::string session(reinterpret_cast<const char *>(&to), length);
    session.append(reinterpret_cast<const char *>(message.data()) + kDomainAt, sizeof(uint32_t));
    session.append(policy.source.begin(), policy.source.end());
    if (sequences_.size() >= kMostSessions && !sequences_.contains(session)) sequences_.clear();
    uint32_t &sequence = sequences_[session];
    write32(message.data() + kSequenceAt, sequence);
    if (sendto(socketFor(policy.source, isVersion4), message.data(), message.size(), MSG_DONTWAIT, &to.any,
               length) < 0)
        return false;
    sequence += records;
    return true;
}

}  // namespace qvs::datapath
