#pragma once

#include "backends/qt/video/VideoPicture.h"
#include "platform/media/PlayerEngine.h"

#include <memory>
#include <string>

namespace ostrel {

/// One media file played by a QMediaPlayer of Qt's FFmpeg backend, with sound when there is an audio device. The
/// QMediaPlayer lives on a thread of its own, because it blocks while it opens files and connections. Commands reach
/// the thread in order, and its reports are read under a lock. Times are in milliseconds (time scale 1,000).
///
/// The destructor does not block; the thread ends when the player has closed the file. Main thread.
class QtPlayer final : public PlayerEngine {
public:
    /// `url`: absolute. A file that cannot be opened sets the status `failed` later.
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

    /// The picture that the player's frames go to; the same object for the player's whole life.
    const std::shared_ptr<VideoPicture>& picture() const { return picture_; }

    /// Seconds for which the end of the application waits for players that are still closing.
    static constexpr double longestFarewell = 2;
    /// Seconds after which reading the orientation of a file's frames is given up.
    static constexpr double longestLook = 5;

private:
    struct Report;
    class Worker;
    std::uint64_t issue();

    std::shared_ptr<VideoPicture> picture_;
    std::shared_ptr<Report> report_;
    // Lives on the player's thread, which deletes it.
    Worker* worker_ = nullptr;
};

/// Makes players of files ("file", "http" and "https"); null for other addresses.
class QtPlayerFactory final : public PlayerFactory {
public:
    std::shared_ptr<PlayerEngine> makePlayer(const std::string& url) override;
};

}  // namespace ostrel
