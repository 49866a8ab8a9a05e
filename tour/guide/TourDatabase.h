#pragma once

#include <cstdint>
#include <string>
#include <vector>

struct sqlite3;

namespace ostrel {

/// Reads the database of the running server, so that the tour compares it with the window. Main thread.
class TourDatabase final {
public:
    /// `file`: the server's SQLite file.
    explicit TourDatabase(const std::string& file);
    ~TourDatabase();
    TourDatabase(const TourDatabase&) = delete;
    TourDatabase& operator=(const TourDatabase&) = delete;

    bool isOpen() const { return database_ != nullptr; }
    /// The first column of the first row as a number; -1 when there is no row. `values` are bound to the "?" of `sql`.
    std::int64_t number(const std::string& sql, const std::vector<std::string>& values = {});
    /// The first column of all rows.
    std::vector<std::string> texts(const std::string& sql, const std::vector<std::string>& values = {});

private:
    sqlite3* database_ = nullptr;
};

}  // namespace ostrel
