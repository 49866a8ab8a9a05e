#pragma once

#include <cstdint>
#include <string>
#include <vector>

struct sqlite3;

namespace ostrel {

/// Reads the server's database beside the running server, to compare it with the window.
class TourDatabase final {
public:
    /// `file`: the server's SQLite file.
    explicit TourDatabase(const std::string& file);
    ~TourDatabase();
    TourDatabase(const TourDatabase&) = delete;
    TourDatabase& operator=(const TourDatabase&) = delete;

    bool isOpen() const { return database_ != nullptr; }
    /// The first column of the first row; -1 when there is none.
    std::int64_t number(const std::string& sql, const std::vector<std::string>& values = {});
    std::vector<std::string> texts(const std::string& sql, const std::vector<std::string>& values = {});

private:
    sqlite3* database_ = nullptr;
};

}  // namespace ostrel
