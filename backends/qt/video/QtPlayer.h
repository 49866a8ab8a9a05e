#pragma once

#include "backends/qt/video/VideoPicture.h"
#include "platform/media/PlayerEngine.h"

#include <memory>
#include <string>

namespace ostrel {

/// One media file played by a QMediaPlayer of Qt's FFmpeg backend, with sound where there is a device for it. The player
/// lives on a thread of its own, for it opens files and connections without going on meanwhile; commands reach it in
/// order, and what it reports is read under a lock. Times are in milliseconds (time scale 1,000).
///
/// Letting it go returns at once; its thread ends when the player has closed the file. Main thread.
class QtPlayer final : public PlayerEngine {
public:
    /// `url`: absolute. What cannot be opened fails later.
    explicit QtPlayer(const std::string& url);
    ~QtPlayer() override;
    QtPlayer(const QtPlayer&) = delete;
    QtPlayer& operator=(const QtPlayer&) = delete;

    void play() override;
    void pause() override;
    void seekToTime(CMTime time) override;
    AVPlayerStatus status() const override;
    AVPlayerTimeControlStatus timeControlStatus() const override;
    CMTime duration() const override;
    CMTime currentTime() const override;

    /// What it shows; the same one for life.
    const std::shared_ptr<VideoPicture>& picture() const { return picture_; }

    /// Seconds that the end of the application waits for players that are still closing.
    static constexpr double longestFarewell = 2;
    /// Seconds that are spent on finding out how the frames of a file lie.
    static constexpr double longestLook = 5;

private:
    struct Report;
    class Worker;
    std::uint64_t issue();

    std::shared_ptr<VideoPicture> picture_;
    std::shared_ptr<Report> report_;
    Worker* worker_ = nullptr;  // on its own thread, which deletes it
};

/// Makes players of files ("file", "http" and "https"); null for other addresses.
class QtPlayerFactory final : public PlayerFactory {
public:
    std::shared_ptr<PlayerEngine> makePlayer(const std::string& url) override;
};

}  // namespace ostrel
