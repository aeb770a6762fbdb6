// SPDX-License-Identifier: Apache-2.0
// The files of a state directory, which the daemon creates and the launcher uses.
#pragma once

#include <sys/un.h>

#include <fstream>
#include <optional>
#include <sstream>
#include <string>

namespace qvs::wire {

// The exit code of a daemon whose directory another daemon serves.
constexpr int kServedAlready = 3;

inline std::string socketFile(const std::string &directory) {
    return directory + "/socket";
}
inline std::string logFile(const std::string &directory) {
    return directory + "/log";
}

// Describes the error of a socket whose path does not fit into an address.
inline std::string pathTooLong(const std::string &socket) {
    return socket + ": the path is longer than the " + std::to_string(sizeof(sockaddr_un::sun_path) - 1) +
           " bytes a socket may have; use a shorter state directory";
}

// Returns the contents of a file. Leaves the reason in errno if the file cannot be read.
inline std::optional<std::string> readFile(const std::string &path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) return std::nullopt;
    std::stringstream text;
    text << file.rdbuf();
    return text.str();
}

}  // namespace qvs::wire
