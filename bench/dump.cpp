// SPDX-License-Identifier: Apache-2.0
// NetDVS_Dump beside the least that its text costs: every line by snprintf into a growing buffer, and a plain
// copy of the text. The ports have the properties of ports in use; no host takes part, the snapshot is made
// here.
#include <benchmark/benchmark.h>
#include <malloc.h>
#include <qvs/mesh_public.h>
#include <qvs/qvs.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <random>
#include <string>

#include "state_library/snapshot_writer.h"

namespace {

constexpr uint32_t kPolicy = 8, kConfig = 16, kRuntime = 32, kVolatile = 4;

constexpr char kAlias[] = "com.quillon.common.port.alias";
constexpr char kBlock[] = "com.quillon.common.port.block";
constexpr char kConnection[] = "com.quillon.common.port.connectid";
constexpr char kVlan[] = "com.quillon.vswitch.port.vlan";
constexpr char kSecurity[] = "com.quillon.vswitch.port.security";
constexpr char kMacManagement[] = "com.quillon.vswitch.port.macManagement";
constexpr char kStatus[] = "com.quillon.common.port.volatile.status";
constexpr char kStatistics[] = "com.quillon.common.port.statistics";

template <typename... T>
std::string record(const T &...numbers) {
    std::string bytes;
    (bytes.append(reinterpret_cast<const char *>(&numbers), sizeof numbers), ...);
    return bytes;
}

template <typename T>
T numberAt(const char *bytes) {
    T number;
    memcpy(&number, bytes, sizeof number);
    return number;
}

// Loads a snapshot of one switch. One port in eight is free; counters have up to forty bits.
void load(uint32_t ports) {
    std::mt19937_64 random(ports);
    qvs::mesh::SnapshotWriter writer;
    writer.addSwitch("bench", "vswitch", ports, 105, {}, {});
    for (uint32_t i = 0; i < ports; ++i) {
        const std::string alias = "vm" + std::to_string(i / 2) + "-nic" + std::to_string(i % 2);
        const uint64_t flags = i % 8 != 7 ? 3 : 0;
        const auto vlan = static_cast<uint16_t>(random() % 4095);
        const uint8_t yes = 1;
        std::string counters;
        for (int counter = 0; counter < 16; ++counter)
            counters += record(random() >> (24 + random() % 40));
        const uint32_t properties[] = {
            writer.property(kAlias, alias + '\0', kConfig),
            writer.property(kBlock, {"false", sizeof "false"}, kConfig),
            writer.property(kConnection, record(static_cast<uint32_t>(random())), kConfig),
            writer.property(kVlan, record(uint16_t{0}, vlan, uint32_t{0}), kPolicy),
            writer.property(kSecurity, record(static_cast<uint32_t>(random() % 8)), kConfig),
            writer.property(kMacManagement, record(yes, yes, yes, 4096u, 0u), kConfig),
            writer.property(kStatus, record(flags, uint64_t{0}, 0x4000000 + i) + alias + ".eth0" + '\0',
                            kVolatile),
            writer.property(kStatistics, counters, kRuntime),
        };
        writer.addPort(std::to_string(i), DVS_PORT_LIVE, properties);
    }
    const auto blob = writer.finish();
    if (DVSState_ConfigDeserialize(blob.data(), static_cast<uint32_t>(blob.size())) != HYP_OK) abort();
}

using Text = std::unique_ptr<char, void (*)(void *)>;

Text dumpWithLibrary() {
    char *text = nullptr;
    if (NetDVS_Dump(nullptr, &text) != HYP_OK) abort();
    return {text, NetDVS_FreeMemory};
}

// A buffer that doubles when a line does not fit.
class GrowingBuffer {
  public:
    __attribute__((format(printf, 2, 3))) void print(const char *format, ...) {
        for (;;) {
            va_list arguments;
            va_start(arguments, format);
            const auto size =
                static_cast<size_t>(vsnprintf(text_ + length_, capacity_ - length_, format, arguments));
            va_end(arguments);
            if (size < capacity_ - length_) {
                length_ += size;
                return;
            }
            capacity_ *= 2;
            text_ = static_cast<char *>(realloc(text_, capacity_));
        }
    }
    Text take() { return {text_, free}; }

  private:
    size_t length_ = 0;
    size_t capacity_ = 4096;
    char *text_ = static_cast<char *>(malloc(capacity_));
};

// One property as the library would print it with snprintf. The records are whole: the snapshot is ours.
int printProperty(DVSData *data, void *context) {
    auto &out = *static_cast<GrowingBuffer *>(context);
    const char *key = DVSData_Name(data);
    const void *value = nullptr;
    DVSData_Data(data, &value);
    const auto *bytes = static_cast<const char *>(value);
    const auto is = [key](const char *other) { return strcmp(key, other) == 0; };

    if (is(kAlias) || is(kBlock)) {
        out.print("\t\t%s = %s , \tpropType = %s\n", key, bytes, "CONFIG ");
    } else if (is(kConnection)) {
        out.print("\t\t%s = %d , \tpropType = %s\n", key, numberAt<int>(bytes), "CONFIG ");
    } else if (is(kVlan)) {
        if (const auto vlan = numberAt<uint16_t>(bytes + 2); vlan != 0) {
            out.print("\t\t%s = VLAN %d\n", key, vlan);
        } else {
            out.print("\t\t%s = No VLAN\n", key);
        }
        out.print("\t\t\tpropType = %s\n", "POLICY ");
    } else if (is(kSecurity)) {
        const auto mask = numberAt<uint32_t>(bytes);
        const auto word = [mask](uint32_t bit) { return (mask & bit) != 0 ? "deny" : "allow"; };
        out.print("\t\t%s = %s promiscuous; %s mac change; %s forged frames\n", key, word(1), word(2),
                  word(4));
        out.print("\t\t\tpropType = %s\n", "CONFIG ");
    } else if (is(kMacManagement)) {
        out.print("\t\t%s:\n", key);
        out.print("\t\t\tmac change = %s\n", bytes[0] != 0 ? "allow" : "deny");
        out.print("\t\t\tlearning = %s\n", bytes[1] != 0 ? "enabled" : "disabled");
        out.print("\t\t\tflooding = %s\n", bytes[2] != 0 ? "enabled" : "disabled");
        out.print("\t\t\tmacLimit = %u\n", numberAt<uint32_t>(bytes + 3));
        out.print("\t\t\tmacLimitPolicy = %s\n", numberAt<uint32_t>(bytes + 7) == 0 ? "allow" : "not allow");
        out.print("\t\t\tpropType = %s\n", "CONFIG ");
    } else if (is(kStatus)) {
        out.print("\t\t%s =", key);
        if ((bytes[0] & 1) != 0) {
            out.print(" inUse");
            if ((bytes[0] & 2) != 0) out.print(" linkUp");
            out.print(" portID=%u %s", numberAt<uint32_t>(bytes + 16), bytes + 20);
            out.print(" propType = %s\n", "VOLATILE ");
        } else {
            out.print(" free\n");
        }
    } else {
        const auto counter = [bytes](size_t i) { return numberAt<uint64_t>(bytes + 8 * i); };
        out.print("\t\t%s:\n", key);
        out.print("\t\t\tpktsInUnicast = %lu\n", counter(0));
        out.print("\t\t\tbytesInUnicast = %lu\n", counter(1));
        out.print("\t\t\tpktsInMulticast = %lu\n", counter(2));
        out.print("\t\t\tbytesInMulticast = %lu\n", counter(3));
        out.print("\t\t\tpktsInBroadcast = %lu\n", counter(4));
        out.print("\t\t\tbytesInBroadcast = %lu\n", counter(5));
        out.print("\t\t\tpktsOutUnicast = %lu\n", counter(6));
        out.print("\t\t\tbytesOutUnicast = %lu\n", counter(7));
        out.print("\t\t\tpktsOutMulticast = %lu\n", counter(8));
        out.print("\t\t\tbytesOutMulticast = %lu\n", counter(9));
        out.print("\t\t\tpktsOutBroadcast = %lu\n", counter(10));
        out.print("\t\t\tbytesOutBroadcast = %lu\n", counter(11));
        out.print("\t\t\tpktsInDropped = %lu\n", counter(12));
        out.print("\t\t\tpktsOutDropped = %lu\n", counter(13));
        out.print("\t\t\tpktsInException = %lu\n", counter(14));
        out.print("\t\t\tpktsOutException = %lu\n", counter(15));
        out.print("\t\t\tpropType = %s\n", "RUNTIME ");
    }
    return 0;
}

int printPort(DVSPort *port, void *context) {
    static_cast<GrowingBuffer *>(context)->print("\tport %s%s:\n", DVS_PortId(port), "");
    DVSState_PortDataForEach(port, printProperty, context);
    return 0;
}

int printSwitch(DVSSwitch *sw, void *context) {
    auto &out = *static_cast<GrowingBuffer *>(context);
    out.print("switch %s (%s)\n", DVS_SwitchId(sw), DVS_ClassName(sw));
    out.print("\tmax ports: %d\n", static_cast<int>(DVS_GetMaxPorts(sw)));
    out.print("\tglobal properties:\n");
    out.print("\thost properties:\n");
    DVSState_PortForEach(sw, printPort, context);
    return 0;
}

Text dumpWithSnprintf() {
    GrowingBuffer out;
    DVSState_SwitchForEach(printSwitch, &out);
    return out.take();
}

// A line of /proc/self/status in KiB, such as "VmHWM:".
long statusLine(const char *name) {
    long kibibytes = -1;
    FILE *file = fopen("/proc/self/status", "re");
    for (char line[256]; file != nullptr && fgets(line, sizeof line, file) != nullptr;) {
        if (strncmp(line, name, strlen(name)) == 0) kibibytes = atol(line + strlen(name));
    }
    if (file != nullptr) fclose(file);
    return kibibytes;
}

// The most memory that a dump takes at any time, in KiB. The peak of a new process starts where it is.
long peakOfDump() {
    int pipe[2];
    long peak = -1;
    if (::pipe(pipe) != 0) abort();
    const pid_t child = fork();
    if (child == 0) {
        malloc_trim(0);
        const long before = statusLine("VmRSS:");
        const Text text = dumpWithLibrary();
        peak = statusLine("VmHWM:") - before;
        _exit(write(pipe[1], &peak, sizeof peak) == sizeof peak ? 0 : 1);
    }
    int status = 0;
    if (waitpid(child, &status, 0) != child || status != 0) abort();
    if (read(pipe[0], &peak, sizeof peak) != sizeof peak) abort();
    close(pipe[0]);
    close(pipe[1]);
    return peak;
}

// Loads the snapshot of a case. Cases of one size run one after another and share it, and the text.
const std::string &textOf(const benchmark::State &state) {
    static std::string text;
    static uint32_t loaded = 0;
    const auto ports = static_cast<uint32_t>(state.range(0));
    if (loaded != ports) {
        load(ports);
        loaded = ports;
        text = dumpWithLibrary().get();
        if (text != dumpWithSnprintf().get()) {
            fprintf(stderr, "dump: the texts differ\n");
            exit(1);
        }
    }
    return text;
}

// Every text begins without memory, as in a program that dumps once; giving it back is not measured. (main
// keeps malloc from learning how large the texts are.)
template <typename Make>
void measure(benchmark::State &state, const Make &make) {
    Text text(nullptr, free);
    malloc_trim(0);
    for (auto _ : state)
        text = make();
}

void library(benchmark::State &state) {
    const auto size = static_cast<double>(textOf(state).size());
    measure(state, dumpWithLibrary);
    state.counters["textBytes"] = size;
    state.counters["peakOfText"] = static_cast<double>(peakOfDump()) * 1024 / size;
}

void snprintfLines(benchmark::State &state) {
    textOf(state);
    measure(state, dumpWithSnprintf);
}

// Into memory of the size and with the pages of the dump's.
void copy(benchmark::State &state) {
    const std::string &text = textOf(state);
    measure(state, [&] {
        size_t size = 4096;
        while (size <= text.size())
            size *= 2;
        auto *memory = static_cast<char *>(malloc(size));
        const auto page = static_cast<uintptr_t>(sysconf(_SC_PAGESIZE));
        const uintptr_t offset = reinterpret_cast<uintptr_t>(memory) & (page - 1);
        if (size >= size_t{4} << 20) madvise(memory - offset, size + offset, MADV_HUGEPAGE);
        return Text(static_cast<char *>(memcpy(memory, text.c_str(), text.size() + 1)), free);
    });
}

}  // namespace

int main(int argc, char **argv) {
    // Else the first text that is released moves the threshold, and later ones grow elsewhere than the first
    // one of a program does.
    mallopt(M_MMAP_THRESHOLD, 128 << 10);
    benchmark::Initialize(&argc, argv);
    for (const int ports : {1000, 10000, 100000}) {
        const auto add = [ports](const char *name, void (*function)(benchmark::State &)) {
            benchmark::RegisterBenchmark(name, function)
                ->Arg(ports)
                ->Unit(benchmark::kMillisecond)
                ->UseRealTime()
                ->Iterations(1)
                ->Repetitions(30);
        };
        add("dump/library", library);
        add("dump/snprintf", snprintfLines);
        add("dump/memcpy", copy);
    }
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
