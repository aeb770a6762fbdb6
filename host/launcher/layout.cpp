// SPDX-License-Identifier: Apache-2.0
// Finds the parts of the emulated host.
#include "launcher/layout.h"

#include <algorithm>
#include <filesystem>

#include "launcher/error.h"

namespace qvs::launcher {

namespace fs = std::filesystem;

namespace {

// Returns the prefix of the installation. The launcher is in QVS_BINDIR below it.
fs::path findPrefix() {
    std::error_code error;
    fs::path prefix = fs::read_symlink("/proc/self/exe", error).parent_path();
    if (error) throw Error("cannot read /proc/self/exe: " + error.message());
    for ([[maybe_unused]] const auto &step : fs::path(QVS_BINDIR))
        prefix = prefix.parent_path();
    return prefix;
}

}  // namespace

Layout findLayout() {
    const fs::path prefix = findPrefix();
    Layout layout;
    layout.bin = prefix / QVS_BINDIR;
    layout.lib = prefix / QVS_LIBDIR;
    layout.toolPath = prefix / QVS_LIBEXECDIR / "bin";
    layout.daemon = prefix / QVS_LIBEXECDIR / "qvs-hostd";
    layout.treesh = layout.toolPath + "/treesh";
    layout.preload = layout.lib + "/qvs/libqvs-host-preload.so";
    layout.records = prefix / QVS_DATADIR / "qvs/layouts/emulated.json";
    for (const std::string &part : {layout.daemon, layout.treesh, layout.preload}) {
        if (!fs::exists(part))
            throw Error(part + " is missing; install or build the emulated host completely");
    }
    // The lists of the dynamic linker are separated by these characters, which cannot be quoted.
    if (layout.lib.find_first_of(":;") != std::string::npos) {
        throw Error(layout.lib +
                    ": libraries cannot be found by a path with a colon or a semicolon; move the "
                    "installation");
    }
    // LD_PRELOAD is also separated by blanks. A name without a path is searched like any library.
    if (layout.preload.find(' ') != std::string::npos) {
        layout.lib += ':' + fs::path(layout.preload).parent_path().string();
        layout.preload = fs::path(layout.preload).filename();
    }
    return layout;
}

std::vector<Lab> findLabs() {
    std::vector<Lab> labs;
    std::error_code error;
    for (const auto &entry : fs::directory_iterator(findPrefix() / QVS_DATADIR / "qvs/labs", error)) {
        if (entry.path().extension() == ".json") labs.push_back({entry.path().stem(), entry.path()});
    }
    std::sort(labs.begin(), labs.end(), [](const Lab &a, const Lab &b) { return a.name < b.name; });
    return labs;
}

std::string findLab(const std::string &name) {
    std::error_code error;
    if (name.find('/') != std::string::npos || fs::is_regular_file(name, error)) return name;
    std::string names;
    for (const Lab &lab : findLabs()) {
        if (lab.name == name) return lab.file;
        names += (names.empty() ? "" : ", ") + lab.name;
    }
    throw Error(name + ": no such file, and not an installed lab (" +
                (names.empty() ? "there are none" : names) + ")");
}

}  // namespace qvs::launcher
