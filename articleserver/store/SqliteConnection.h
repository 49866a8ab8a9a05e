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

/// One run of a prepared statement, borrowed from its connection's cache and given back when it goes.
/// Parameters are bound in order at construction. Errors are kept: look at failed() after the last step.
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

    /// True when a row is there to be read.
    bool step();
    /// Steps to the end; false on failure.
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
    /// Opens or creates the file: write-ahead log, foreign keys on, every commit on disk.
    static ServerResult<std::unique_ptr<SqliteConnection>> open(const std::string& file);
    SqliteConnection(const SqliteConnection&) = delete;
    SqliteConnection& operator=(const SqliteConnection&) = delete;
    ~SqliteConnection();

    /// `sql` must be a literal: its address is the key of the cache.
    template <typename... Values>
    SqliteStatement prepare(const char* sql, const Values&... values) {
        return SqliteStatement(*this, cached(sql), values...);
    }

    /// Runs statements without results, one after the other.
    bool run(const std::string& sql);

    /// The last error as a refusal: StorageFull when the disk is full, else Internal; logged.
    ServerFailure failure() const;

private:
    explicit SqliteConnection(sqlite3* database) : database_(database) {}
    sqlite3_stmt* cached(const char* sql);

    sqlite3* database_;
    std::unordered_map<const char*, sqlite3_stmt*> statements_;
};

/// A transaction that is undone unless commit() succeeded.
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
