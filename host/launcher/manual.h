// SPDX-License-Identifier: Apache-2.0
// The text of the manual of qvs-host, except the commands.
#pragma once

#include "tool/program.h"

namespace qvs::launcher {

inline constexpr cli::Passage kDescription[] = {
    {"qvs-host gives a program the host that libqvs(7) expects: the kernel's character devices, the state "
     "library libmeshPublic.so and the shell /bin/treesh. Programs run unchanged: an interposer directs "
     "their open(2), ioctl(2) and execve(2) of those names to a daemon, which is the kernel."},
    {"The commands that speak to a running host find it through --state or, inside of run and shell, by "
     "themselves."},
    {"Every change is on disk before it is acknowledged. A change that would exceed --max-state-mib is "
     "refused as on a full disk."},
};

inline constexpr cli::Passage kTraces[] = {
    {"A line is the request and, behind \" -> \", its result. The first one is shown in two here:"},
    {.text = "device ioctl \"/dev/vswitch\" 0x100b GetUplinks in=268 out=8\n"
             "    input=[0:737731] -> 0\n"
             "state PortAdd switch=\"73 77 31\" port=\"port0\" length=420 -> 0xbad0005\n"
             "shell treesh -e set /net/create sw1 \"128\\n\" vswitch -> exit 0",
     .asIs = true},
    {"Lines hold no times, so that traces can be compared. Lines that find no room are dropped and counted."},
};

inline constexpr cli::Passage kExitStatus[] = {
    {"run and shell exit with the status of the command."},
    {.text = "the command was ended by signal N", .term = "128+N"},
    {.text = "the command was not found", .term = "127"},
    {.text = "the command could not be executed", .term = "126"},
    {.text = "qvs-host itself failed", .term = "125"},
    {.text = "wrong usage", .term = "2"},
    {"A host that does not answer within 10 seconds, or the number of seconds in QVS_HOST_TIMEOUT, is named "
     "with its process number. A signal ends each of these waits at once."},
};

inline constexpr cli::Passage kEnvironment[] = {
    {"The command finds QVS_HOST_SOCKET and QVS_HOST_STATE set to the host's socket and directory, "
     "LD_PRELOAD, LD_LIBRARY_PATH and PATH with the host's parts in front, and ASAN_OPTIONS with "
     "verify_asan_link_order=0 behind. Programs with privileges of their own ignore the first two."},
    {.text = "the layout file of this kernel's records, by which qvs shows their fields; a value that is "
             "already set is kept, an empty one has qvs show bytes",
     .term = "QVS_LAYOUT"},
    {.text = "how many seconds programs on the host wait for an answer; may have a fraction (10)",
     .term = "QVS_HOST_TIMEOUT"},
    {.text = "is set where a program was started without the variables above", .term = "QVS_HOST_LOST"},
};

inline constexpr cli::Passage kFiles[] = {
    {"In the directory of a host:"},
    {.text = "the state, an SQLite database", .term = "hypercore.db"},
    {.text = "what programs connect to; programs of this user and of root alone", .term = "socket"},
    {.text = "what programs that exchange frames connect to, and qvs-host enter, send and expect",
     .term = "frames"},
    {.text = "the end of a wire to a NIC of another host", .term = "wire-NIC"},
    {.text = "held by the daemon; its process id is inside", .term = "lock"},
    {.text = "held by each run of qvs(1) that changes something, one part of it for each switch",
     .term = "qvs.lock"},
    {.text = "what undoes a change that qvs(1) apply or batch is at, or that waits to be confirmed",
     .term = "qvs.journal"},
    {.text = "the daemon's log", .term = "log"},
    {"The directory must belong to the user who starts the host, and no other user may be able to write to "
     "it. Files in it that are symbolic links are refused."},
};

inline constexpr cli::Passage kSeeAlso[] = {{"qvs(1), libqvs(7)"}};

inline constexpr cli::Section kSections[] = {
    {"Traces", kTraces}, {"Exit status", kExitStatus}, {"Environment", kEnvironment},
    {"Files", kFiles},   {"See also", kSeeAlso},
};

}  // namespace qvs::launcher
