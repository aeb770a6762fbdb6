// SPDX-License-Identifier: Apache-2.0
// `history STATE KILLS`: 16 processes read and write four properties while the daemon of the
// state directory is killed and started again at random. Whatever was acknowledged must be there afterwards,
// and all reads must agree with one order of the writes.
#include <qvs/mesh_public.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <climits>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr int kWriters = 16;
constexpr int kKeys = 4;
constexpr int kMaxOperations = 200000;
constexpr int64_t kNever = INT64_MAX;

struct Operation {
    int64_t begin, end;  // kNever: it was not acknowledged
    uint64_t value;      // 0: nothing was stored
    int key;
    bool isWrite;
};

// Shared by all processes.
struct Record {
    std::atomic<bool> stop;
    std::atomic<int> count[kWriters];
    Operation operations[kWriters][kMaxOperations];
};

int64_t now() {
    return std::chrono::steady_clock::now().time_since_epoch().count();
}

bool read(const std::string &key, uint64_t *stored) {
    void *bytes = nullptr;
    uint32_t length = 0;
    *stored = 0;
    const uint32_t status = DVSHYP_GlobalPropGet("shared", key.c_str(), &bytes, &length);
    if (status == HYP_NOT_FOUND) return true;
    if (status != HYP_OK || length != sizeof *stored) return false;
    *stored = *static_cast<const uint64_t *>(bytes);
    DVSHYP_DataFree(bytes);
    return true;
}

void work(int writer, Record &record) {
    std::mt19937 random(static_cast<unsigned>(writer));
    int count = 0;
    while (!record.stop && count < kMaxOperations) {
        Operation operation = {now(), kNever, 0, static_cast<int>(random() % kKeys), random() % 2 == 0};
        const std::string key = "key" + std::to_string(operation.key);
        bool acknowledged = false;
        if (operation.isWrite) {
            operation.value = static_cast<uint64_t>(writer + 1) << 32 | static_cast<uint64_t>(count);
            acknowledged = DVSHYP_GlobalPropSet("shared", key.c_str(), &operation.value,
                                                sizeof operation.value, DVS_PROP_CONFIG) == HYP_OK;
        } else {
            acknowledged = read(key, &operation.value);
        }
        if (acknowledged) operation.end = now();
        record.operations[writer][count] = operation;
        record.count[writer] = ++count;
        if (!acknowledged) usleep(1000);
    }
}

// Values are written once, so that the reads of a value and its write stand together somewhere in the order.
// The order exists unless a value is read before it is written, two values must both hold at one moment, or
// one must come and go while another must hold.
const char *contradiction(const std::vector<Operation> &operations) {
    struct Span {
        int64_t written = kNever, firstEnd = kNever, lastBegin = INT64_MIN;
        bool isRead = false;
    };
    std::map<uint64_t, Span> spans;
    spans[0] = {INT64_MIN, INT64_MIN, INT64_MIN, true};
    for (const Operation &operation : operations) {
        if (!operation.isWrite && operation.end == kNever) continue;
        Span &span = spans[operation.value];
        if (operation.isWrite) span.written = operation.begin;
        span.isRead = span.isRead || !operation.isWrite || operation.end != kNever;
        span.firstEnd = std::min(span.firstEnd, operation.end);
        span.lastBegin = std::max(span.lastBegin, operation.begin);
    }
    std::vector<Span> holds, moments;
    for (const auto &[value, span] : spans) {
        if (!span.isRead) continue;
        if (span.firstEnd < span.written) return "a value was read before it was written";
        (span.firstEnd < span.lastBegin ? holds : moments).push_back(span);
    }
    std::sort(holds.begin(), holds.end(),
              [](const Span &a, const Span &b) { return a.firstEnd < b.firstEnd; });
    for (size_t i = 1; i < holds.size(); ++i)
        if (holds[i].firstEnd < holds[i - 1].lastBegin) return "a value came back after another one";
    for (const Span &moment : moments) {
        const auto after =
            std::upper_bound(holds.begin(), holds.end(), moment.lastBegin,
                             [](int64_t begin, const Span &hold) { return begin < hold.firstEnd; });
        if (after != holds.begin() && moment.firstEnd < std::prev(after)->lastBegin)
            return "an acknowledged write was never visible";
    }
    return nullptr;
}

// The check itself, with one fault of each kind.
void checkTheCheck() {
    const auto expect = [](bool found, const std::vector<Operation> &operations) {
        if ((contradiction(operations) != nullptr) == found) return;
        fprintf(stderr, "history: the check is wrong\n");
        exit(1);
    };
    expect(false, {{1, 2, 1, 0, true}, {3, 4, 1, 0, false}, {3, 6, 2, 0, true}, {4, 5, 1, 0, false}});
    expect(false, {{1, kNever, 1, 0, true}, {8, 9, 1, 0, false}});  // not acknowledged, and yet carried out
    expect(true, {{1, 2, 1, 0, true}, {3, 4, 0, 0, false}});        // lost
    expect(true, {{1, 2, 1, 0, false}, {3, 4, 1, 0, true}});        // too early
    expect(true, {{1, 2, 1, 0, true}, {3, 4, 2, 0, true}, {5, 6, 1, 0, false}});  // back again
    expect(true, {{1, 2, 1, 0, true},
                  {1, 2, 2, 0, true},
                  {3, 4, 1, 0, false},
                  {5, 6, 2, 0, false},
                  {7, 8, 1, 0, false}});
}

}  // namespace

int main(int argc, char **argv) {
    if (argc != 3) return 2;
    checkTheCheck();
    const std::string state = argv[1], start = "qvs-host start --state " + state + " >/dev/null";
    void *memory = mmap(nullptr, sizeof(Record), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    auto *record = static_cast<Record *>(memory);
    if (DVSHYP_SwitchAdd("shared", "vswitch", 8, 105) != HYP_OK) return 1;
    for (int writer = 0; writer < kWriters; ++writer) {
        if (fork() != 0) continue;
        work(writer, *record);
        _exit(0);
    }
    std::mt19937 random(7);
    for (int kill = 0, pid = 0; kill < atoi(argv[2]); ++kill) {
        usleep(static_cast<useconds_t>(random() % 40000));
        std::ifstream(state + "/lock") >> pid;
        ::kill(pid, SIGKILL);
        if (system(start.c_str()) != 0) return 1;
    }
    usleep(50000);
    record->stop = true;
    while (wait(nullptr) > 0) {
    }

    size_t total = 0;
    for (int key = 0; key < kKeys; ++key) {
        Operation last = {now(), kNever, 0, key, false};
        if (!read("key" + std::to_string(key), &last.value)) return 1;
        last.end = now();
        std::vector<Operation> operations = {last};
        for (int writer = 0; writer < kWriters; ++writer) {
            for (int i = 0; i < record->count[writer]; ++i)
                if (record->operations[writer][i].key == key)
                    operations.push_back(record->operations[writer][i]);
        }
        total += operations.size();
        if (const char *problem = contradiction(operations)) {
            fprintf(stderr, "history: key%d: %s\n", key, problem);
            return 1;
        }
    }
    if (DVSHYP_SwitchRemove("shared") != HYP_OK) return 1;
    printf("%zu operations of %d processes, %s kills\n", total, kWriters, argv[2]);
    return 0;
}
