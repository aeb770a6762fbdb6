// SPDX-License-Identifier: Apache-2.0
// Checks whether a program can use a host. Only the dynamic loader of the C library of this machine loads the
// interposer.
#include "launcher/program.h"

#include <elf.h>
#include <link.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>

#include <fmt/format.h>

namespace qvs::launcher {

namespace {

// The limits of the kernel for nested scripts and for the first line of a script.
constexpr int kMaxScripts = 5;
constexpr size_t kMaxLine = 256;

// Returns the file that the first word of a command names.
std::optional<std::string> findProgram(const std::string &word) {
    if (word.empty()) return std::nullopt;
    if (word.find('/') != std::string::npos) return word;
    const char *path = getenv("PATH");
    std::istringstream directories(path == nullptr ? "/bin:/usr/bin" : path);
    for (std::string directory; std::getline(directories, directory, ':');) {
        std::string candidate = (directory.empty() ? "." : directory) + '/' + word;
        if (access(candidate.c_str(), X_OK) == 0 && std::filesystem::is_regular_file(candidate)) {
            return candidate;
        }
    }
    return std::nullopt;
}

// Returns the interpreter in a line that starts with "#!", or the program that env searches.
std::optional<std::string> interpreterOf(std::string_view line) {
    std::istringstream words(std::string(line.substr(2, line.find('\n') - 2)));
    std::string word;
    if (!(words >> word)) return std::nullopt;
    if (std::filesystem::path(word).filename() != "env") return word;
    const std::string env = word;
    while (words >> word) {
        // Skips the options and variables of env.
        if (!word.starts_with('-') && word.find('=') == std::string::npos) return findProgram(word);
    }
    return env;
}

struct Image {
    bool foreign = false;  // for another kind of machine
    std::string loader;    // empty if there is none
};

// Returns how an ELF file is loaded. Returns nothing for any other file.
std::optional<Image> readImage(std::ifstream &file) {
    using Header = ElfW(Ehdr);
    using Segment = ElfW(Phdr);
    constexpr unsigned char kOwnClass = sizeof(void *) == 8 ? ELFCLASS64 : ELFCLASS32;
    constexpr size_t kMaxLoader = 4096;
    Header header{};
    file.seekg(0);
    if (!file.read(reinterpret_cast<char *>(&header), sizeof header)) return std::nullopt;
    if (memcmp(header.e_ident, ELFMAG, SELFMAG) != 0) return std::nullopt;
    if (header.e_ident[EI_CLASS] != kOwnClass) return Image{true, {}};
    if (header.e_phentsize != sizeof(Segment)) return std::nullopt;
    for (unsigned i = 0; i < header.e_phnum; ++i) {
        Segment segment{};
        file.seekg(static_cast<std::streamoff>(header.e_phoff + i * sizeof segment));
        if (!file.read(reinterpret_cast<char *>(&segment), sizeof segment)) return std::nullopt;
        if (segment.p_type != PT_INTERP) continue;
        std::string loader(std::min<size_t>(segment.p_filesz, kMaxLoader), '\0');
        file.seekg(static_cast<std::streamoff>(segment.p_offset));
        if (!file.read(loader.data(), static_cast<std::streamsize>(loader.size()))) return std::nullopt;
        loader.resize(strlen(loader.c_str()));
        return Image{false, loader};
    }
    return Image{};
}

std::string nameOf(const std::string &path) {
    return std::filesystem::path(path).filename();
}

std::string ownLoader() {
    std::ifstream self("/proc/self/exe", std::ios::binary);
    const auto image = readImage(self);
    return image ? image->loader : std::string();
}

// Tells whether a program gets the rights of the owner of its file. Its loader then ignores LD_PRELOAD.
bool changesRights(const std::string &path) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) return false;
    return ((status.st_mode & S_ISUID) != 0 && status.st_uid != getuid()) ||
           ((status.st_mode & S_ISGID) != 0 && status.st_gid != getgid());
}

std::string whyNot(const std::string &path) {
    std::ifstream file(path, std::ios::binary);
    const auto image = readImage(file);
    if (!image) return {};
    if (image->foreign) return "is built for another kind of machine; build it for this one";
    if (image->loader.empty()) return "is statically linked; link it dynamically";
    if (nameOf(image->loader) != nameOf(ownLoader())) {
        return fmt::format("uses another C library, whose loader is {}; build it with the one of this system",
                           image->loader);
    }
    if (changesRights(path)) return "is set-user-ID or set-group-ID; run it as the owner of the file";
    return {};
}

}  // namespace

std::string whyNotOnHost(const std::string &command, const Layout &layout) {
    auto path = findProgram(command);
    std::error_code ignored;
    for (int scripts = 0; path && scripts < kMaxScripts; ++scripts) {
        // Opening a pipe would block. The kernel refuses to execute it.
        if (!std::filesystem::is_regular_file(*path, ignored)) return {};
        std::ifstream file(*path, std::ios::binary);
        char line[kMaxLine] = {};
        file.read(line, sizeof line - 1);
        if (std::string_view(line).starts_with("#!")) {
            path = interpreterOf(line);
            continue;
        }
        if (std::filesystem::equivalent(*path, layout.treesh, ignored)) return {};
        const std::string why = whyNot(*path);
        if (why.empty()) return {};
        return fmt::format("{} sees neither the devices of the host nor its /bin/treesh: it {}", *path, why);
    }
    return {};
}

}  // namespace qvs::launcher
