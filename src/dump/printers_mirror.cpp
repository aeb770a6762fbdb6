// SPDX-License-Identifier: Apache-2.0
// The printer of mirror session lists, in both layouts.
#include "dump/printers.h"
#include "qvs/vsdvs.h"

namespace qvs {
namespace {

constexpr uint64_t kSessions = sizeof(VSDVS_MirrorHeader);
constexpr uint64_t kSessionSize = sizeof(VSDVS_MirrorSession);
constexpr uint64_t kEntitySize = sizeof(VSDVS_MirrorEntity);
constexpr uint64_t kValue = offsetof(VSDVS_MirrorEntity, value);
constexpr size_t kValueSize = sizeof(VSDVS_MirrorEntity::value);

const char *typeName(uint32_t type) {
    constexpr const char *kNames[] = {"MIXDST",      "DVPORT",       "RMIRROR_SRC",
                                      "RMIRROR_DST", "ERMIRROR_SRC", "LOGICAL_SPAN"};
    return type < std::size(kNames) ? kNames[type] : "NOT_SUPPORTED_TYPE";
}

// Prints " NAME" for each bit that is set, then the end of the line.
template <size_t N>
void printBits(const PrintJob &job, uint32_t bits, const char *const (&names)[N]) {
    for (size_t i = 0; i < N; ++i) {
        if ((bits >> i & 1) != 0) job.print<" %s">(names[i]);
    }
    job.print<"\n">();
}

// Prints a destination. The type of the session determines the format of the value.
void printDestination(const PrintJob &job, uint32_t type, uint64_t value) {
    const uint64_t address = value + offsetof(VSDVS_MirrorAddress, address);
    switch (type) {
        case VSDVS_MIRROR_RMIRROR_SRC:
            job.print<" %s">(job.record.text(value, VSDVS_MIRROR_TEXT_SIZE));
            return;
        case VSDVS_MIRROR_ERMIRROR_SRC:
            job.print<" %s">((job.record.at<VSDVS_MirrorAddress>(value).isIPv6 != 0
                                  ? AddressText::ofIPv6(job.record, address)
                                  : AddressText::ofIPv4(job.record, address))
                                 .view());
            return;
        case VSDVS_MIRROR_LOGICAL_SPAN:
            job.print<" %s">(AddressText::ofMac(job.record, value).view());
            return;
        default:
            job.print<" %s">(job.record.text(value, kValueSize));
    }
}

void printSource(const PrintJob &job, uint32_t type, uint64_t value) {
    if (type == VSDVS_MIRROR_RMIRROR_DST) {
        job.print<" %u">(job.record.at<uint16_t>(value));
    } else {
        job.print<" %s">(job.record.text(value, kValueSize));
    }
}

// Iterates over the entities of all sessions. It prints at most as many entities as the record contains, even
// if the sessions claim more.
class Entities {
  public:
    Entities(const PrintJob &job, const VSDVS_MirrorHeader &header)
        : job_(job),
          start_(kSessions + kSessionSize * header.sessionCount),
          left_(job.record.entries(header.entityCount, start_, kEntitySize)) {}

    // Prints `count` entities from an index on, each through `print`, and ends the line.
    template <typename Print>
    void printGroup(uint64_t first, uint32_t count, Print print) {
        for (uint64_t i = first; i < first + count && left_ != 0; ++i, --left_) {
            const uint64_t entity = start_ + kEntitySize * i;
            if (entity >= job_.record.length()) break;
            print(entity + kValue);
        }
        job_.print<"\n">();
    }

  private:
    const PrintJob &job_;
    uint64_t start_;
    uint64_t left_;
};

void printSession(const PrintJob &job, uint64_t offset, Entities &entities) {
    constexpr const char *kFlags[] = {"DST_NO_OUTPUT", "DST_NO_INPUT", "DST_ORIG_VLAN",
                                      "DST_ENCAP",     "LEGACY",       "DISABLED"};
    constexpr const char *kWild[] = {"VMM", "PNIC", "COS", "TCPIP", "TEST"};
    const RecordView &record = job.record;
    const auto session = record.at<VSDVS_MirrorSession>(offset);
    const bool typed = job.ctx->newLayout != 0;
    // The wildcard form has no type; its destinations and sources are names.
    const uint32_t type = typed ? session.type : uint32_t{VSDVS_MIRROR_MIXDST};

    job.print<"\t\t\tsid = %s\n">(
        record.text(offset + offsetof(VSDVS_MirrorSession, sessionId), sizeof session.sessionId));
    job.print<"\t\t\tdname = %s\n">(
        record.text(offset + offsetof(VSDVS_MirrorSession, displayName), sizeof session.displayName));
    if (typed) job.print<"\t\t\ttype = %s\n">(typeName(type));
    job.print<"\t\t\tsnapLen = %d\n">(session.snapLength);
    job.print<"\t\t\tflags =">();
    printBits(job, session.flags, kFlags);
    job.print<"\t\t\tencapVlan = %u\n">(session.encapVlan);
    if (typed) {
        job.print<"\t\t\tsamplingRate = %u\n">(session.samplingRate);
        if (type == VSDVS_MIRROR_ERMIRROR_SRC) {
            job.print<"\t\t\tmirrorStack = %s\n">(session.mirrorStack != 0 ? "True" : "False");
        }
    } else {
        job.print<"\t\t\twildIn =">();
        printBits(job, session.wildIn, kWild);
        job.print<"\t\t\twildOut =">();
        printBits(job, session.wildOut, kWild);
    }

    const uint64_t sourcesIn = uint64_t{session.firstEntity} + session.dstEntities;
    const uint64_t sourcesOut = sourcesIn + session.srcInEntities;
    const auto source = [&](uint64_t value) { printSource(job, type, value); };
    job.print<"\t\t\tdstEntities =">();
    entities.printGroup(session.firstEntity, session.dstEntities,
                        [&](uint64_t value) { printDestination(job, type, value); });
    job.print<"\t\t\tsrcInEntities =">();
    entities.printGroup(sourcesIn, session.srcInEntities, source);
    job.print<"\t\t\tsrcOutEntities =">();
    entities.printGroup(sourcesOut, session.srcOutEntities, source);
}

}  // namespace

void printMirrorSessions(const PrintJob &job) {
    const auto header = job.record.at<VSDVS_MirrorHeader>();
    Entities entities(job, header);
    const uint64_t count = job.record.entries(header.sessionCount, kSessions, kSessionSize);
    job.print<"\t\t%s:\n">(job.key);
    for (uint64_t i = 0; i < count; ++i)
        printSession(job, kSessions + kSessionSize * i, entities);
    job.classLine();
}

}  // namespace qvs
