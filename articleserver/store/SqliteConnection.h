#pragma once

#include "articleserver/common/ServerResult.h"

#include <sqlite3.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>

namespace articleserver {

class SqliteConnection;

/// One run of a prepared statement of the connection's cache; the destructor makes the statement free again.
/// The constructor binds the parameters in order. Errors show in failed(), which callers read after the last
/// step.
class SqliteStatement final {
public:
    template <typename... Values>
    SqliteStatement(SqliteConnection& connection, sqlite3_stmt* statement, const Values&... values)
        : connection_(connection), statement_(statement), failed_(statement == nullptr) {
        int index = 0;
        (bind(++index, values), ...);
    }
    SqliteStatement(const SqliteStatement&) = delete;
    SqliteStatement& operator=(const SqliteStatement&) = delete;
    ~SqliteStatement();

    void bind(int index, std::int64_t value);
    void bind(int index, int value) { bind(index, static_cast<std::int64_t>(value)); }
    void bind(int index, bool value) { bind(index, static_cast<std::int64_t>(value)); }
    void bind(int index, double value);
    void bind(int index, const std::string& value) { bind(index, std::string_view(value)); }
    /// The text must outlive the statement.
    void bind(int index, std::string_view value);

    /// Goes to the next row; false after the last row and on failure.
    bool step();
    /// Steps through all rows; false on failure.
    bool run();
    bool failed() const { return failed_; }

    std::int64_t integer(int column) const;
    double real(int column) const;
    std::string text(int column) const;

private:
    SqliteConnection& connection_;
    sqlite3_stmt* statement_;
    bool failed_ = false;
};

/// One SQLite connection with its prepared statements. Used by one thread at a time.
class SqliteConnection final {
public:
    /// Opens or creates the file, with a write-ahead log, with foreign keys enforced, and with an fsync at
    /// each commit.
    static ServerResult<std::unique_ptr<SqliteConnection>> open(const std::string& file);
    SqliteConnection(const SqliteConnection&) = delete;
    SqliteConnection& operator=(const SqliteConnection&) = delete;
    ~SqliteConnection();

    /// `sql` must be a string literal, because its address is the key in the cache.
    template <typename... Values>
    SqliteStatement prepare(const char* sql, const Values&... values) {
        return SqliteStatement(*this, cached(sql), values...);
    }

    /// Runs statements that have no results, one after the other.
    bool run(const std::string& sql);

    /// Logs the last error and returns it: `storageFull` when the disk is full, `busy` when another program
    /// locks the file, else `internal`.
    ServerFailure failure() const;

private:
    explicit SqliteConnection(sqlite3* database) : database_(database) {}
    sqlite3_stmt* cached(const char* sql);

    sqlite3* database_;
    std::unordered_map<const char*, sqlite3_stmt*> statements_;
};

/// A transaction. The destructor rolls it back unless commit() succeeded.
class SqliteTransaction final {
public:
    enum class Kind { read, write };

    SqliteTransaction(SqliteConnection& connection, Kind kind);
    SqliteTransaction(const SqliteTransaction&) = delete;
    SqliteTransaction& operator=(const SqliteTransaction&) = delete;
    ~SqliteTransaction();

    bool isOpen() const { return isOpen_; }
    bool commit();

private:
    SqliteConnection& connection_;
    bool isOpen_;
};

}  // namespace articleserver
