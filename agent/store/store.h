// SPDX-License-Identifier: Apache-2.0
// The distributed store of a fleet: keys with values and revisions, transactions, leases and watches. This
// one is etcd, by its JSON gateway, version 3.4 or later.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "agent/store/http.h"

namespace qvs::fleet {

// Keys and values are bytes. Revisions count the changes of the whole store.
struct Entry {
    std::string key;
    std::string value;
    uint64_t created = 0;   // the revision that created the key; 0 of a key that does not exist
    uint64_t modified = 0;  // the revision of the value
    uint64_t lease = 0;     // the key ends with it; 0: it stays
};

// A key, or all keys with a prefix.
struct Keys {
    std::string key;
    bool prefix = false;
};

struct Found {
    std::vector<Entry> entries;  // by key
    uint64_t revision = 0;       // of the store at that moment

    const Entry *find(std::string_view key) const;
};

// Holds when the key has this revision; 0 when it does not exist.
struct Comparison {
    enum class What { Created, Modified };
    std::string key;
    What what = What::Modified;
    uint64_t revision = 0;
};

struct Put {
    std::string key;
    std::string value;
    uint64_t lease = 0;
};

// Either all comparisons hold and all operations are carried out, or none is.
struct Transaction {
    std::vector<Comparison> comparisons;
    std::vector<Put> puts;
    std::vector<Keys> removals;
};
// The limits of the store for the operations of a transaction, and for the length of a request.
inline constexpr size_t kMostOperations = 128;
inline constexpr size_t kMostRequestBytes = size_t{1} << 20;

struct Event {
    bool removed = false;
    Entry entry;  // without a value when it was removed
};

// All functions throw Failure: NoAnswer if no endpoint answers within the time limit, so that a retry can
// succeed; Failed or Usage if the store refuses the request. An interrupted request is sent again to the next
// endpoint, although it may have been carried out. If a comparison fails, the caller therefore reads the key,
// which may contain what it wrote itself.
class Store {
  public:
    explicit Store(Access access);
    ~Store();
    Store(const Store &) = delete;
    Store &operator=(const Store &) = delete;

    Found range(const Keys &keys);
    // Whether the comparisons hold.
    [[nodiscard]] bool commit(const Transaction &transaction);
    // The revision of the last successful transaction, which is that of the keys that it wrote.
    uint64_t committed() const { return committed_; }
    uint64_t grant(uint32_t seconds);
    // Whether the lease still exists.
    [[nodiscard]] bool keepAlive(uint64_t lease);
    void revoke(uint64_t lease);

    // The endpoint of the next request. After a failure, the next endpoint is used.
    const std::string &endpoint() const;
    // The number of requests so far.
    uint64_t requests() const { return requests_; }

  private:
    friend class Watch;
    struct Impl;
    std::string call(const char *path, const std::string &body);
    const std::string &token();
    void authenticate();

    std::unique_ptr<Impl> impl_;
    uint64_t requests_ = 0;
    uint64_t committed_ = 0;
};

// Follows the changes of keys after a revision. When the watch ends (the connection broke, the endpoint
// changed, the store was compacted), the caller reads the keys again and starts a new watch.
class Watch {
  public:
    explicit Watch(Store &store);
    ~Watch();
    void follow(const Keys &keys, uint64_t from);

    // Waits for events, for one of the descriptors, or until the time limit.
    struct News {
        std::vector<Event> events;
        std::string ended;  // why the watch is over
    };
    News wait(std::span<pollfd> others, std::chrono::milliseconds most);

  private:
    Store &store_;
    Streams streams_;
    std::string endpoint_;
};

}  // namespace qvs::fleet
