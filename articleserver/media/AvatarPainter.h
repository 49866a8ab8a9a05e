#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <unordered_map>

namespace articleserver {

/// Draws the avatar of a user who has not uploaded one: the initial of the name, in any script, on a colour
/// that follows from the user's id. Caches the last few hundred avatars. Any thread may call it; a mutex lets
/// one thread draw at a time.
class AvatarPainter final {
public:
    AvatarPainter();
    AvatarPainter(const AvatarPainter&) = delete;
    AvatarPainter& operator=(const AvatarPainter&) = delete;
    ~AvatarPainter();

    /// A PNG file of 256 by 256 pixels.
    std::shared_ptr<const std::string> avatar(std::int64_t user, std::string_view name);

private:
    struct FontMap;
    std::string draw(std::int64_t user, const std::string& initial);

    std::mutex mutex_;
    // Guarded by mutex_.
    std::unique_ptr<FontMap> fonts_;
    std::unordered_map<std::string, std::shared_ptr<const std::string>> kept_;
    /// The keys of kept_, oldest first.
    std::deque<std::string> order_;
};

}  // namespace articleserver
