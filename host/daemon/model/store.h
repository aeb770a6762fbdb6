// SPDX-License-Identifier: Apache-2.0
// The database of the model: one SQLite file.
#pragma once

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <unordered_map>

#include "daemon/model/schema.h"
#include "wire/noncopyable.h"

struct sqlite3;
struct sqlite3_stmt;

namespace qvs::kernel {

// Reports a change that could not be written. The database is unchanged.
class StoreError : public std::runtime_error {
  public:
    StoreError(const std::string &message, bool full) : std::runtime_error(message), full_(full) {}
    bool full() const { return full_; }

  private:
    bool full_;
};

// The columns of the current row of a query.
class Row {
  public:
    explicit Row(sqlite3_stmt *statement) : statement_(statement) {}
    bool null(int column) const;
    int64_t integer(int column) const;
    uint32_t u32(int column) const { return static_cast<uint32_t>(integer(column)); }
    // Returns a view that is valid until the next row.
    std::string_view bytes(int column) const;
    std::string text(int column) const { return std::string(bytes(column)); }

  private:
    sqlite3_stmt *statement_;
};

class Store : private wire::Noncopyable {
  public:
    // Opens the database at `path`, or creates it. Throws for a damaged file or a file of another program and
    // leaves it unchanged.
    explicit Store(const std::string &path);
    // Throws an error that names the file, the reason and the remedy.
    [[noreturn]] void refuse(std::string_view reason) const;

    // Writes everything to the main file and closes it. Without this call, the next start does so.
    void close();

    // Limits the size of the database. Changes beyond the limit fail as on a full disk. 0 means no limit.
    void limitTo(uint32_t mebibytes);
    bool limited() const { return limited_; }

    // Deletes all switches, portsets, ports, NICs, properties and rows of devices.
    void clear();

    // Executes a statement.
    template <typename... Args>
    void run(const Sql &sql, const Args &...args) {
        const Use use(*this, sql);
        int index = 0;
        (use.bind(++index, args), ...);
        while (use.step()) {
        }
    }

    // Executes a statement in a transaction of its own.
    template <typename... Args>
    void change(const Sql &sql, const Args &...args);

    // Calls `visitor` for each row of a query.
    template <typename Visitor>
    void each(const Sql &sql, const Visitor &visitor) {
        const Use use(*this, sql);
        while (use.step())
            visitor(Row(use.statement()));
    }

    // Makes the process kill itself instead of committing (fault injection).
    void dieAtCommit(bool armed) { dieAtCommit_ = armed; }

  private:
    friend class Transaction;

    // One execution of a prepared statement. The destructor resets the statement.
    class Use : private wire::Noncopyable {
      public:
        Use(Store &store, const Sql &sql);
        ~Use();
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
    sqlite3_stmt *prepare(const Sql &sql);
    void verify();
    void execute(const std::string &sql);
    void check(int code) const;

    struct Close {
        void operator()(sqlite3 *database) const;
        void operator()(sqlite3_stmt *statement) const;
    };

    std::string path_;
    std::unique_ptr<sqlite3, Close> database_;
    std::unordered_map<const Sql *, std::unique_ptr<sqlite3_stmt, Close>> statements_;
    int depth_ = 0;
    bool limited_ = false;
    bool dieAtCommit_ = false;
};

// A transaction. It is rolled back unless it is committed. A nested transaction is part of the outer one.
class Transaction : private wire::Noncopyable {
  public:
    explicit Transaction(Store &store);
    ~Transaction();
    void commit();

  private:
    Store &store_;
    bool open_ = true;
};

template <typename... Args>
void Store::change(const Sql &sql, const Args &...args) {
    Transaction transaction(*this);
    run(sql, args...);
    transaction.commit();
}

}  // namespace qvs::kernel
