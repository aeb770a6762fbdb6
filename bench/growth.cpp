// SPDX-License-Identifier: Apache-2.0
// How creating, loading, dumping and listing grow with the number of ports of a switch.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <malloc.h>
#include <qvs/qvs.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

namespace {

constexpr char kAlias[] = "big";
constexpr uint32_t kVersion = 105;

void require(HYP_ReturnStatus status, const char *what) {
    if (status == HYP_OK) return;
    fprintf(stderr, "growth: %s: %s (0x%x)\n", what, ReturnStatusToString(status), status);
    exit(1);
}

void create(uint32_t ports) {
    require(VSDVS_CreateVSwitch(kAlias, nullptr, nullptr, kVersion, 0, ports, 0, ports + 1), "create");
}

void destroy() {
    require(DVSLoadConfig(), "load");
    require(VSDVS_DestroyVSwitch(kAlias), "destroy");
}

// The one switch of the host, with this many ports, freshly loaded. Cases of one size run one after another
// and share it.
void hold(uint32_t ports) {
    static uint32_t held = 0;
    if (held == ports) return;
    if (held != 0) destroy();
    if (ports != 0) create(ports);
    require(DVSLoadConfig(), "load");
    held = ports;
}

uint32_t portsOf(const benchmark::State &state) {
    return static_cast<uint32_t>(state.range(0));
}

void createSwitch(benchmark::State &state) {
    hold(0);
    for (auto _ : state) {
        create(portsOf(state));
        state.PauseTiming();
        destroy();
        state.ResumeTiming();
    }
}

// The kernel keeps its snapshot until something changes. A port that is added before each load is the largest
// of the frequent changes.
void loadSnapshot(benchmark::State &state) {
    constexpr char kAdded[] = "added";
    hold(portsOf(state));
    bool exists = false;
    for (auto _ : state) {
        state.PauseTiming();
        require(exists ? VSDVS_RemoveDVPort(kAlias, kAdded) : VSDVS_AddDVPort(kAlias, kAdded, 1), "change");
        exists = !exists;
        malloc_trim(0);
        state.ResumeTiming();
        require(DVSLoadConfig(), "load");
    }
    if (exists) require(VSDVS_RemoveDVPort(kAlias, kAdded), "remove");
}

// Small texts would find the memory of the one before, large ones never do; a program dumps once.
void dumpSwitch(benchmark::State &state) {
    hold(portsOf(state));
    for (auto _ : state) {
        state.PauseTiming();
        malloc_trim(0);
        state.ResumeTiming();
        char *text = nullptr;
        require(NetDVS_Dump(kAlias, &text), "dump");
        NetDVS_FreeMemory(text);
    }
}

// A whole process of the tool, from its start to its end.
void listPorts(benchmark::State &state) {
    hold(portsOf(state));
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    for (auto _ : state) {
        const char *const words[] = {"qvs", "port", "list", kAlias, nullptr};
        pid_t child = 0;
        int result =
            posix_spawnp(&child, "qvs", &actions, nullptr, const_cast<char *const *>(words), environ);
        if (result != 0 || waitpid(child, &result, 0) != child || result != 0) {
            state.SkipWithError("qvs port list failed");
            break;
        }
    }
    posix_spawn_file_actions_destroy(&actions);
}

// Fastest repetitions can be compared only if there are equally many.
void addCase(const char *name, void (*function)(benchmark::State &), int ports) {
    constexpr int kRepetitions = 15;
    benchmark::RegisterBenchmark(name, function)
        ->Arg(ports)
        ->Unit(benchmark::kMillisecond)
        ->UseRealTime()
        ->Iterations(1)
        ->Repetitions(kRepetitions);
}

}  // namespace

int main(int argc, char **argv) {
    // Else malloc keeps what small texts and snapshots were in, and gives back what large ones were in.
    mallopt(M_MMAP_THRESHOLD, 128 << 10);
    benchmark::Initialize(&argc, argv);
    for (const int ports : {1000, 10000, 100000}) {
        addCase("growth/create", createSwitch, ports);
        addCase("growth/load", loadSnapshot, ports);
        addCase("growth/dump", dumpSwitch, ports);
        if (ports == 10000) addCase("growth/qvs port list", listPorts, ports);
    }
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
