// SPDX-License-Identifier: Apache-2.0
// The database behind the model: one SQLite file, one statement per kind of change, transactions.
#pragma once

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

struct sqlite3;
struct sqlite3_stmt;

namespace qvs::kernel {

// A change that could not be written; nothing of it remains.
class StoreError : public std::runtime_error {
  public:
    StoreError(const std::string &message, bool full) : std::runtime_error(message), full_(full) {}
    bool full() const { return full_; }

  private:
    bool full_;
};

// Every statement by name; the text is in store.cpp.
enum class Sql {
    Begin,
    Commit,
    SetNextPort,
    GetNextPort,
    AddNic,
    SetNic,
    AllNics,
    ClearNics,
    AddPortset,
    RemovePortset,
    SetPortsetMtu,
    AllPortsets,
    ClearPortsets,
    AddSwitch,
    SetSwitchPortset,
    RemoveSwitch,
    AllSwitches,
    ClearSwitches,
    SetSwitchProperty,
    RemoveSwitchProperty,
    RemoveSwitchProperties,
    AllSwitchProperties,
    ClearSwitchProperties,
    AddPort,
    SetPortClient,
    RemovePort,
    AllPorts,
    ClearPorts,
    SetPortProperty,
    DropPortProperty,
    RemovePortProperties,
    AllPortProperties,
    ClearPortProperties,
    SetDeviceValue,
    RemoveDeviceValue,
    AllDeviceValues,
    ClearDeviceValues,
    Count,
};

// A column of the current row of a query.
class Row {
  public:
    explicit Row(sqlite3_stmt *statement) : statement_(statement) {}
    bool null(int column) const;
    int64_t integer(int column) const;
    uint32_t u32(int column) const { return static_cast<uint32_t>(integer(column)); }
    // Valid until the next row.
    std::string_view bytes(int column) const;
    std::string text(int column) const { return std::string(bytes(column)); }

  private:
    sqlite3_stmt *statement_;
};

class Store {
  public:
    // Opens the database at `path` and makes a new one where there is none. A file that is not one of ours,
    // or is damaged, is refused with a message and left as it is.
    explicit Store(const std::string &path);
    // Throws what a file gets that cannot be used for that reason, and the way out.
    [[noreturn]] void refuse(std::string_view reason) const;
    Store(const Store &) = delete;
    Store &operator=(const Store &) = delete;

    // Brings everything into the main file; without it the next start does.
    void close();

    // Caps the size of the database; beyond it changes fail as on a full disk. 0: no cap.
    void limitTo(uint32_t mebibytes);
    bool limited() const { return limited_; }

    template <typename... Args>
    void run(Sql sql, const Args &...args) {
        const Use use(*this, sql);
        int index = 0;
        (use.bind(++index, args), ...);
        while (use.step()) {
        }
    }

    template <typename Visitor>
    void each(Sql sql, const Visitor &visitor) {
        const Use use(*this, sql);
        while (use.step())
            visitor(Row(use.statement()));
    }

    // For fault injection: the process dies instead of committing.
    void dieAtCommit(bool armed) { dieAtCommit_ = armed; }

  private:
    friend class Transaction;

    // One execution of a prepared statement; it is reset afterwards, whatever happens.
    class Use {
      public:
        Use(Store &store, Sql sql);
        ~Use();
        Use(const Use &) = delete;
        Use &operator=(const Use &) = delete;
        void bind(int index, int64_t value) const;
        void bind(int index, uint32_t value) const { bind(index, static_cast<int64_t>(value)); }
        void bind(int index, bool value) const { bind(index, static_cast<int64_t>(value)); }
        void bind(int index, std::string_view value) const;
        void bind(int index, std::nullptr_t) const;
        bool step() const;
        sqlite3_stmt *statement() const { return statement_; }

      private:
        Store &store_;
        sqlite3_stmt *statement_;
    };

    void open(const std::string &path);
    void create(const std::string &path);
    void prepare();
    void verify();
    void execute(const std::string &sql);
    void check(int code) const;

    struct Close {
        void operator()(sqlite3 *database) const;
        void operator()(sqlite3_stmt *statement) const;
    };

    std::string path_;
    std::unique_ptr<sqlite3, Close> database_;
    std::vector<std::unique_ptr<sqlite3_stmt, Close>> statements_;
    int depth_ = 0;
    bool limited_ = false;
    bool dieAtCommit_ = false;
};

// A change: rolled back unless committed. One inside another is part of the outer one.
class Transaction {
  public:
    explicit Transaction(Store &store);
    ~Transaction();
    Transaction(const Transaction &) = delete;
    Transaction &operator=(const Transaction &) = delete;
    void commit();

  private:
    Store &store_;
    bool open_ = true;
};

}  // namespace qvs::kernel
