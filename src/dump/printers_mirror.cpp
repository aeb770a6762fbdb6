// The printer of mirror session lists, in both layouts.
#include "dump/printers.h"

namespace qvs {
namespace {

constexpr uint64_t kSessions = 20;
constexpr uint64_t kSessionSize = 232;
constexpr uint64_t kEntitySize = 52;

enum Type : uint32_t { MixDst, DvPort, RMirrorSrc, RMirrorDst, ERMirrorSrc, LogicalSpan };

const char *typeName(uint32_t type) {
    constexpr const char *kNames[] = {"MIXDST",      "DVPORT",       "RMIRROR_SRC",
                                      "RMIRROR_DST", "ERMIRROR_SRC", "LOGICAL_SPAN"};
    return type < std::size(kNames) ? kNames[type] : "NOT_SUPPORTED_TYPE";
}

// " NAME" for each bit that is set, then the end of the line.
template <size_t N>
void printBits(const PrintJob &job, uint32_t bits, const char *const (&names)[N]) {
    for (size_t i = 0; i < N; ++i) {
        if ((bits >> i & 1) != 0) job.print<" %s">(names[i]);
    }
    job.print<"\n">();
}

// The value of a destination, whose meaning is that of the session's type.
void printDestination(const PrintJob &job, uint32_t type, uint64_t value) {
    switch (type) {
        case RMirrorSrc:
            job.print<" %s">(job.record.text(value, 32));
            return;
        case ERMirrorSrc:
            job.print<" %s">((job.record.u8(value) != 0 ? AddressText::ofIPv6(job.record, value + 4)
                                                        : AddressText::ofIPv4(job.record, value + 4))
                                 .view());
            return;
        case LogicalSpan:
            job.print<" %s">(AddressText::ofMac(job.record, value).view());
            return;
        default:
            job.print<" %s">(job.record.text(value, 48));
    }
}

void printSource(const PrintJob &job, uint32_t type, uint64_t value) {
    if (type == RMirrorDst) {
        job.print<" %u">(job.record.u16(value));
    } else {
        job.print<" %s">(job.record.text(value, 48));
    }
}

// The entities of all sessions, handed out one after the other. No more are printed than the record holds,
// however many sessions lay claim to them.
class Entities {
  public:
    explicit Entities(const PrintJob &job)
        : job_(job),
          start_(kSessions + kSessionSize * job.record.u32(8)),
          left_(job.record.entries(job.record.u32(12), start_, kEntitySize)) {}

    // Prints `count` entities from an index on, each through `print`, and ends the line.
    template <typename Print>
    void printGroup(uint64_t first, uint32_t count, Print print) {
        for (uint64_t i = first; i < first + count && left_ != 0; ++i, --left_) {
            const uint64_t entity = start_ + kEntitySize * i;
            if (entity >= job_.record.length()) break;
            print(entity + 4);
        }
        job_.print<"\n">();
    }

  private:
    const PrintJob &job_;
    uint64_t start_;
    uint64_t left_;
};

void printSession(const PrintJob &job, uint64_t session, Entities &entities) {
    constexpr const char *kFlags[] = {"DST_NO_OUTPUT", "DST_NO_INPUT", "DST_ORIG_VLAN",
                                      "DST_ENCAP",     "LEGACY",       "DISABLED"};
    constexpr const char *kWild[] = {"VMM", "PNIC", "COS", "TCPIP", "TEST"};
    const RecordView &record = job.record;
    const bool typed = job.ctx->newLayout != 0;
    // The wildcard form has no type; its destinations and sources are names.
    const uint32_t type = typed ? record.u32(session + 116) : uint32_t{MixDst};

    job.print<"\t\t\tsid = %s\n">(record.text(session, 32));
    job.print<"\t\t\tdname = %s\n">(record.text(session + 32, 84));
    if (typed) job.print<"\t\t\ttype = %s\n">(typeName(type));
    job.print<"\t\t\tsnapLen = %d\n">(record.at<int32_t>(session + 120));
    job.print<"\t\t\tflags =">();
    printBits(job, record.u32(session + 124), kFlags);
    job.print<"\t\t\tencapVlan = %u\n">(record.u16(session + 128));
    if (typed) {
        job.print<"\t\t\tsamplingRate = %u\n">(record.u32(session + 136));
        if (type == ERMirrorSrc) {
            job.print<"\t\t\tmirrorStack = %s\n">(record.u8(session + 148) != 0 ? "True" : "False");
        }
    } else {
        job.print<"\t\t\twildIn =">();
        printBits(job, record.u16(session + 130), kWild);
        job.print<"\t\t\twildOut =">();
        printBits(job, record.u16(session + 132), kWild);
    }

    const uint32_t destinations = record.u32(session + 216);
    const uint32_t sourcesIn = record.u32(session + 220);
    const uint32_t sourcesOut = record.u32(session + 224);
    const uint64_t first = record.u32(session + 228);
    const auto source = [&](uint64_t value) { printSource(job, type, value); };
    job.print<"\t\t\tdstEntities =">();
    entities.printGroup(first, destinations, [&](uint64_t value) { printDestination(job, type, value); });
    job.print<"\t\t\tsrcInEntities =">();
    entities.printGroup(first + destinations, sourcesIn, source);
    job.print<"\t\t\tsrcOutEntities =">();
    entities.printGroup(first + destinations + sourcesIn, sourcesOut, source);
}

}  // namespace

void printMirrorSessions(const PrintJob &job) {
    Entities entities(job);
    const uint64_t count = job.record.entries(job.record.u32(8), kSessions, kSessionSize);
    job.print<"\t\t%s:\n">(job.key);
    for (uint64_t i = 0; i < count; ++i)
        printSession(job, kSessions + kSessionSize * i, entities);
    job.classLine();
}

}  // namespace qvs
