// SPDX-License-Identifier: Apache-2.0
// Opens endpoints, and what their kinds share.
#include "datapath/process/endpoint.h"

#include <sys/socket.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>

#include <fmt/format.h>

#include "datapath/process/endpoints.h"
#include "wire/stream.h"

namespace qvs::datapath {

std::unique_ptr<Endpoint> openEndpoint(const policy::AttachmentT &attachment, const EndpointContext &context,
                                       EndpointEvents events) {
    using policy::AttachmentKind;
    constexpr struct {
        AttachmentKind kind;
        decltype(&openStream) open;
    } kKinds[] = {
        {AttachmentKind::Namespace, openNamespace},
        {AttachmentKind::Stream, openStream},
        {AttachmentKind::Datagram, openDatagram},
        {AttachmentKind::Capture, openCapture},
        {AttachmentKind::Tap, openTap},
        {AttachmentKind::Host, openHost},
    };
    for (const auto &kind : kKinds) {
        if (kind.kind == attachment.kind) return kind.open(attachment, context, std::move(events));
    }
    return nullptr;
}

std::string pathOf(const std::string &path, const EndpointContext &context, const char *what) {
    if (path.empty()) throw AttachmentError(fmt::format("the attachment names no {}", what));
    return path.front() == '/' ? path : context.directory + '/' + path;
}

std::string tooLong(const std::string &path) {
    return fmt::format("{}: the path is longer than the {} bytes a socket may have; name a shorter one", path,
                       sizeof(sockaddr_un::sun_path) - 1);
}

namespace {

[[noreturn]] void failAt(const std::string &path) {
    if (errno == ENAMETOOLONG) throw AttachmentError(tooLong(path));
    throw AttachmentError(fmt::format("cannot open the socket {}: {}", path, strerror(errno)));
}

}  // namespace

wire::File connectTo(const std::string &path, int type) {
    sockaddr_un address;
    if (!wire::socketAddress(path.c_str(), &address)) return {};
    wire::File connection(socket(AF_UNIX, type | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (connection &&
        connect(connection.get(), reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0)
        connection.reset(-1);
    return connection;
}

wire::File serveAt(const std::string &path, int type) {
    sockaddr_un address;
    if (!wire::socketAddress(path.c_str(), &address)) failAt(path);
    struct stat status {};
    if (lstat(path.c_str(), &status) == 0) {
        if (!S_ISSOCK(status.st_mode))
            throw AttachmentError(
                fmt::format("{} is there and is no socket; remove it, or name another path", path));
        if (connectTo(path, type) || errno == EAGAIN || errno == EPROTOTYPE)
            throw AttachmentError(
                fmt::format("another process serves {}; end it, or name another path", path));
        unlink(path.c_str());
    }
    wire::File listener(socket(AF_UNIX, type | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (!listener || bind(listener.get(), reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0)
        failAt(path);
    if (type != SOCK_DGRAM && listen(listener.get(), SOMAXCONN) != 0) failAt(path);
    return listener;
}

}  // namespace qvs::datapath
