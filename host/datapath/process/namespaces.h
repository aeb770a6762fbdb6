// SPDX-License-Identifier: Apache-2.0
// The network namespaces of clients. One user namespace owns them, so that no privilege is needed. A worker
// process makes them, because entering a user namespace cannot be undone and because it takes milliseconds.
#pragma once

#include <deque>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "datapath/process/endpoint.h"
#include "datapath/process/namespace_worker.h"
#include "wire/file.h"

namespace qvs::datapath {

class Loop;

// The interface of a client and its sockets, or the reason why there is none.
struct OpenedNamespace {
    std::string problem;
    wire::File frames;  // AF_PACKET socket on the switch's end
    wire::File links;   // notifications of the client's interface
    NamespaceAnswer client;
};

class Namespaces : private wire::Noncopyable {
  public:
    // `keep` hands a descriptor to the kernel under a name; -1 makes the kernel forget it.
    Namespaces(Loop &loop, std::function<void(const std::string &name, int file)> keep);
    ~Namespaces();

    // Takes a descriptor that the kernel kept of an earlier data path.
    void restore(const std::string &name, wire::File file);

    using Opened = std::function<void(OpenedNamespace opened)>;
    // Connects the namespace of a client to a port. Creates the namespace if there is none. Throws
    // AttachmentError.
    void open(const std::string &client, const NamespaceRequest &request, Opened opened);
    // Removes the interface of a port. An answer to `open` that is under way is not delivered.
    void close(uint32_t port);
    // Forgets the namespaces of other clients. They last as long as processes are in them.
    void retain(const std::vector<std::string> &clients);

    std::vector<std::string> names() const;
    // Returns the descriptors with which a process enters the namespace of a client: that of the user
    // namespace, if there is one, and that of the network namespace. Empty if there is no such client.
    std::vector<int> descriptors(const std::string &client) const;

  private:
    struct Pending {
        NamespaceRequest request;
        std::string client;
        Opened opened;
    };

    struct Client {
        wire::File file;
        bool restored = false;  // by the kernel, from an earlier data path
    };

    void start();
    void removeClosed();
    void ended(const std::string &problem);
    void send(Pending pending);
    void sendNext();
    void receive();
    void learnBase(std::vector<wire::File> &files);
    void answer(const NamespaceAnswer &head, const std::string &problem, std::vector<wire::File> &files);

    Loop &loop_;
    std::function<void(const std::string &name, int file)> keep_;
    wire::File worker_;
    int process_ = 0;
    bool based_ = false;  // the worker has told of its own namespaces
    wire::File user_;
    wire::File base_;
    std::map<std::string, Client> clients_;
    std::map<uint32_t, std::string> ports_;    // clients by port
    std::map<uint32_t, std::string> closing_;  // those whose interfaces are removed at the end of the turn
    std::deque<Pending> waiting_;
    std::deque<Pending> pending_;  // what the worker is at
};

}  // namespace qvs::datapath
