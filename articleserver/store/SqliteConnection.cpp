#include "articleserver/store/SqliteConnection.h"

#include "articleserver/common/ServerText.h"

namespace articleserver {

namespace {

// Writers of this server wait at a mutex. This timeout is for other programs that open the file.
constexpr int busyMilliseconds = 5000;

}  // namespace

SqliteStatement::~SqliteStatement() {
    if (!statement_) return;
    sqlite3_reset(statement_);
    sqlite3_clear_bindings(statement_);
}

void SqliteStatement::bind(int index, std::int64_t value) {
    if (statement_ && sqlite3_bind_int64(statement_, index, value) != SQLITE_OK) failed_ = true;
}

void SqliteStatement::bind(int index, double value) {
    if (statement_ && sqlite3_bind_double(statement_, index, value) != SQLITE_OK) failed_ = true;
}

void SqliteStatement::bind(int index, std::string_view value) {
    // A null pointer would bind NULL instead of the empty text.
    const char* bytes = value.data() ? value.data() : "";
    if (statement_ &&
        sqlite3_bind_text64(statement_, index, bytes, value.size(), SQLITE_STATIC, SQLITE_UTF8) != SQLITE_OK) {
        failed_ = true;
    }
}

bool SqliteStatement::step() {
    if (failed_) return false;
    int code = sqlite3_step(statement_);
    if (code == SQLITE_ROW) return true;
    if (code != SQLITE_DONE) failed_ = true;
    return false;
}

bool SqliteStatement::run() {
    while (step()) {}
    return !failed_;
}

std::int64_t SqliteStatement::integer(int column) const { return sqlite3_column_int64(statement_, column); }

double SqliteStatement::real(int column) const { return sqlite3_column_double(statement_, column); }

std::string SqliteStatement::text(int column) const {
    const unsigned char* bytes = sqlite3_column_text(statement_, column);
    int length = sqlite3_column_bytes(statement_, column);
    return bytes ? std::string(reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(length)) : std::string();
}

ServerResult<std::unique_ptr<SqliteConnection>> SqliteConnection::open(const std::string& file) {
    sqlite3* database = nullptr;
    int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX;
    int code = sqlite3_open_v2(file.c_str(), &database, flags, nullptr);
    std::unique_ptr<SqliteConnection> connection(new SqliteConnection(database));
    if (code != SQLITE_OK) return connection->failure();
    sqlite3_extended_result_codes(database, 1);
    sqlite3_busy_timeout(database, busyMilliseconds);
    bool isReady = connection->run("PRAGMA journal_mode = WAL; PRAGMA synchronous = FULL;"
                                   "PRAGMA foreign_keys = ON; PRAGMA trusted_schema = OFF;");
    if (!isReady) return connection->failure();
    return connection;
}

SqliteConnection::~SqliteConnection() {
    for (auto& [sql, statement] : statements_) sqlite3_finalize(statement);
    sqlite3_close(database_);
}

bool SqliteConnection::run(const std::string& sql) {
    return sqlite3_exec(database_, sql.c_str(), nullptr, nullptr, nullptr) == SQLITE_OK;
}

ServerFailure SqliteConnection::failure() const {
    int code = database_ ? sqlite3_extended_errcode(database_) : SQLITE_NOMEM;
    std::string reason = database_ ? sqlite3_errmsg(database_) : "out of memory";
    logServerError("database error " + std::to_string(code) + ": " + reason);
    if ((code & 0xFF) == SQLITE_FULL) return {ServerFault::storageFull, "The server's storage is full."};
    if ((code & 0xFF) == SQLITE_BUSY) {
        return {ServerFault::busy, "The server is busy. Try again in a moment."};
    }
    return {ServerFault::internal, "The server's database failed."};
}

sqlite3_stmt* SqliteConnection::cached(const char* sql) {
    sqlite3_stmt*& statement = statements_[sql];
    if (!statement) {
        sqlite3_prepare_v3(database_, sql, -1, SQLITE_PREPARE_PERSISTENT, &statement, nullptr);
    }
    return statement;
}

SqliteTransaction::SqliteTransaction(SqliteConnection& connection, Kind kind)
    : connection_(connection), isOpen_(connection.run(kind == Kind::write ? "BEGIN IMMEDIATE" : "BEGIN")) {}

SqliteTransaction::~SqliteTransaction() {
    if (isOpen_) connection_.run("ROLLBACK");
}

bool SqliteTransaction::commit() {
    if (!connection_.run("COMMIT")) return false;
    isOpen_ = false;
    return true;
}

}  // namespace articleserver
