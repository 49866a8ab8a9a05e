#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <unordered_map>

namespace articleserver {

/// Draws the avatar of a user who uploaded none: the initial of the name, in any script, on a colour that
/// the id decides. Keeps the last few hundred. Any thread may call it; drawing is one at a time.
class AvatarPainter final {
public:
    AvatarPainter();
    AvatarPainter(const AvatarPainter&) = delete;
    AvatarPainter& operator=(const AvatarPainter&) = delete;
    ~AvatarPainter();

    /// PNG, 256 by 256 pixels.
    std::shared_ptr<const std::string> avatar(std::int64_t user, std::string_view name);

private:
    struct FontMap;
    std::string draw(std::int64_t user, const std::string& initial);

    std::mutex mutex_;
    // Guarded by mutex_.
    std::unique_ptr<FontMap> fonts_;
    std::unordered_map<std::string, std::shared_ptr<const std::string>> kept_;
    std::deque<std::string> order_;  ///< keys of kept_, oldest first
};

}  // namespace articleserver
