// SPDX-License-Identifier: Apache-2.0
// Checks the owner and the permissions of the state directory and its files.
#pragma once

#include <string>

namespace qvs::kernel {

// Creates the directory if it does not exist. Throws unless it belongs to this user and no other user can
// write to it, because others could place files there that the daemon opens.
void prepareDirectory(const std::string &directory);

// Returns the path of the directory without links, which tells hosts apart.
std::string identityOf(const std::string &directory);

// Opens or creates a file in the directory. Throws unless it is a regular file of this user. Symbolic links
// are refused.
int openOwnFile(const std::string &path, int flags);

// Throws if the path exists and is not a regular file of this user. Use it for files that a library opens.
void requireOwnFile(const std::string &path);

}  // namespace qvs::kernel
