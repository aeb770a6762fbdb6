// The order of the library's two initialisers.
#pragma once

namespace qvs {

constexpr int kInitSharedObject = 200;
constexpr int kInitLibrary = 201;

}  // namespace qvs
