#include "tour/guide/TourDatabase.h"

#include <sqlite3.h>

namespace ostrel {

TourDatabase::TourDatabase(const std::string& file) {
    if (sqlite3_open_v2(file.c_str(), &database_, SQLITE_OPEN_READONLY, nullptr) != SQLITE_OK) {
        sqlite3_close(database_);
        database_ = nullptr;
        return;
    }
    sqlite3_busy_timeout(database_, 2000);
}

TourDatabase::~TourDatabase() { sqlite3_close(database_); }

std::vector<std::string> TourDatabase::texts(const std::string& sql, const std::vector<std::string>& values) {
    std::vector<std::string> rows;
    sqlite3_stmt* statement = nullptr;
    if (!database_ || sqlite3_prepare_v2(database_, sql.c_str(), -1, &statement, nullptr) != SQLITE_OK) return rows;
    for (std::size_t i = 0; i < values.size(); ++i) {
        sqlite3_bind_text(statement, static_cast<int>(i + 1), values[i].c_str(), -1, SQLITE_TRANSIENT);
    }
    while (sqlite3_step(statement) == SQLITE_ROW) {
        const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement, 0));
        rows.emplace_back(text ? text : "");
    }
    sqlite3_finalize(statement);
    return rows;
}

std::int64_t TourDatabase::number(const std::string& sql, const std::vector<std::string>& values) {
    const auto rows = texts(sql, values);
    return rows.empty() ? -1 : std::strtoll(rows.front().c_str(), nullptr, 10);
}

}  // namespace ostrel
