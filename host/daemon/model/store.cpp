// SPDX-License-Identifier: Apache-2.0
// Opens, checks, changes and closes the database.
#include "daemon/model/store.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>

#include <fmt/format.h>
#include <sqlite3.h>

#include "daemon/model/state_directory.h"

namespace qvs::kernel {

namespace {

constexpr uint32_t kApplicationId = 0x71767331;  // "qvs1" in the file's header
constexpr uint32_t kPagesPerMebibyte = 256;

// Refuses files that are not ours. It reads the header itself, because SQLite could change a file when it
// opens it.
void refuseForeign(const std::string &path) {
    char header[100] = {};
    std::ifstream file(path, std::ios::binary);
    file.read(header, sizeof header);
    if (file.gcount() != sizeof header ||
        std::string_view(header, 16) != std::string_view("SQLite format 3\0", 16)) {
        throw StoreError("it is not a database, or its header is damaged", false);
    }
    const auto bigEndian = [&](size_t offset) {
        uint32_t value = 0;
        for (size_t i = 0; i < 4; ++i)
            value = value << 8 | static_cast<uint8_t>(header[offset + i]);
        return value;
    };
    if (bigEndian(68) != kApplicationId) {
        throw StoreError("it is a database of another program", false);
    }
    if (bigEndian(60) != kSchemaVersion) {
        throw StoreError(fmt::format("it was written by {} version of this program",
                                     bigEndian(60) > kSchemaVersion ? "a newer" : "another"),
                         false);
    }
}

}  // namespace

bool Row::null(int column) const {
    return sqlite3_column_type(statement_, column) == SQLITE_NULL;
}

int64_t Row::integer(int column) const {
    return sqlite3_column_int64(statement_, column);
}

std::string_view Row::bytes(int column) const {
    const void *data = sqlite3_column_blob(statement_, column);
    const int size = sqlite3_column_bytes(statement_, column);
    return {static_cast<const char *>(data), static_cast<size_t>(size)};
}

Store::Store(const std::string &path) : path_(path) {
    for (const char *end : {"", "-wal", "-shm", "-journal"})
        requireOwnFile(path + end);
    if (!std::filesystem::exists(path)) create(path);
    if (access(path.c_str(), R_OK | W_OK) != 0)
        throw StoreError(fmt::format("cannot read and write {}: {}", path, std::strerror(errno)), false);
    try {
        refuseForeign(path);
        open(path);
        // Closing must not write to a damaged file.
        sqlite3_db_config(database_.get(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
        execute(
            "PRAGMA locking_mode = EXCLUSIVE; PRAGMA synchronous = NORMAL; PRAGMA wal_autocheckpoint = 4000");
        verify();
    } catch (const std::exception &error) {
        refuse(error.what());
    }
}

void Store::refuse(std::string_view reason) const {
    // SQLite would apply the log of one database to another one beside it.
    throw StoreError(
        fmt::format("cannot use {0}: {1}; restore a copy and remove {0}-wal, or move both files away "
                    "to start with an empty host",
                    path_, reason),
        false);
}

void Store::Close::operator()(sqlite3 *database) const {
    sqlite3_close(database);
}

void Store::Close::operator()(sqlite3_stmt *statement) const {
    sqlite3_finalize(statement);
}

void Store::open(const std::string &path) {
    sqlite3 *database = nullptr;
    const int code = sqlite3_open_v2(
        path.c_str(), &database, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX, nullptr);
    database_.reset(database);
    check(code);
}

void Store::create(const std::string &path) try {
    // The file is created under another name and then moved, so that a file of this name always has its
    // header.
    const std::string fresh = path + ".new";
    std::filesystem::remove(fresh);
    open(fresh);
    execute("PRAGMA locking_mode = EXCLUSIVE; PRAGMA journal_mode = WAL");
    execute(
        fmt::format("PRAGMA application_id = {}; PRAGMA user_version = {}", kApplicationId, kSchemaVersion));
    execute(kSchema);
    database_.reset();
    std::filesystem::rename(fresh, path);
} catch (const std::exception &error) {
    throw StoreError(fmt::format("cannot create {}: {}", path, error.what()), false);
}

// A statement that cannot be prepared shows that the tables are not ours.
sqlite3_stmt *Store::prepare(const Sql &sql) {
    auto &prepared = statements_[&sql];
    if (prepared != nullptr) return prepared.get();
    sqlite3_stmt *statement = nullptr;
    const int code =
        sqlite3_prepare_v3(database_.get(), sql.text, -1, SQLITE_PREPARE_PERSISTENT, &statement, nullptr);
    if (code != SQLITE_OK) refuse(sqlite3_errmsg(database_.get()));
    prepared.reset(statement);
    return statement;
}

void Store::clear() {
    execute(kClearAll);
}

void Store::verify() {
    std::string verdict;
    const auto keep = [](void *context, int, char **columns, char **) {
        *static_cast<std::string *>(context) = columns[0];
        return 0;
    };
    check(sqlite3_exec(database_.get(), "PRAGMA quick_check(1)", keep, &verdict, nullptr));
    std::replace(verdict.begin(), verdict.end(), '\n', ' ');
    if (verdict != "ok") throw StoreError("the file is damaged: " + verdict, false);
}

void Store::close() {
    sqlite3_db_config(database_.get(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 0, nullptr);
    statements_.clear();
    database_.reset();
}

void Store::execute(const std::string &sql) {
    check(sqlite3_exec(database_.get(), sql.c_str(), nullptr, nullptr, nullptr));
}

void Store::check(int code) const {
    if (code == SQLITE_OK || code == SQLITE_ROW || code == SQLITE_DONE) return;
    throw StoreError(sqlite3_errmsg(database_.get()), (code & 0xff) == SQLITE_FULL);
}

void Store::limitTo(uint32_t mebibytes) {
    limited_ = mebibytes != 0;
    if (!limited_) return;
    execute(fmt::format("PRAGMA max_page_count = {}", uint64_t{mebibytes} * kPagesPerMebibyte));
}

Store::Use::Use(Store &store, const Sql &sql) : store_(store), statement_(store.prepare(sql)) {}

Store::Use::~Use() {
    sqlite3_reset(statement_);
    sqlite3_clear_bindings(statement_);
}

void Store::Use::bind(int index, int64_t value) const {
    store_.check(sqlite3_bind_int64(statement_, index, value));
}

void Store::Use::bind(int index, std::string_view value) const {
    // An empty view can contain a null pointer, which SQLite would store as NULL.
    const char *data = value.empty() ? "" : value.data();
    store_.check(sqlite3_bind_blob64(statement_, index, data, value.size(), SQLITE_STATIC));
}

void Store::Use::bind(int index, std::nullptr_t) const {
    store_.check(sqlite3_bind_null(statement_, index));
}

bool Store::Use::step() const {
    const int code = sqlite3_step(statement_);
    store_.check(code);
    return code == SQLITE_ROW;
}

Transaction::Transaction(Store &store) : store_(store) {
    if (store_.depth_ == 0) store_.run(kBegin);
    ++store_.depth_;
}

Transaction::~Transaction() {
    if (!open_) return;
    // A failed statement may have rolled back already. If an inner transaction is not committed, the outer
    // one fails too and reports the failure.
    if (--store_.depth_ == 0 && sqlite3_get_autocommit(store_.database_.get()) == 0) {
        sqlite3_exec(store_.database_.get(), "ROLLBACK", nullptr, nullptr, nullptr);
    }
}

void Transaction::commit() {
    if (store_.depth_ == 1) {
        if (store_.dieAtCommit_) raise(SIGKILL);
        store_.run(kCommit);
    }
    --store_.depth_;
    open_ = false;
}

}  // namespace qvs::kernel
