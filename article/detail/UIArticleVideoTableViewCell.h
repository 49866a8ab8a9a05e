#pragma once

#include "platform/foundation/runloop/RunLoop.h"
#include "platform/foundation/values/Data.h"
#include "platform/foundation/values/Value.h"
#include "platform/uikit/controls/AVPlayerLayer.h"
#include "platform/uikit/controls/UIActivityIndicatorView.h"
#include "platform/uikit/controls/UIVisualEffectView.h"
#include "platform/uikit/table/UITableViewCell.h"
#include "platform/uikit/text/UITextView.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace ostrel {

/// One video of an article: its thumbnail (a tall one over a blurred copy of itself), a caption, a play symbol and a
/// duration label; plays in place when it is selected. A reused row keeps its player until it plays another video, and
/// goes on playing while it is out of sight.
class UIArticleVideoTableViewCell final : public UITableViewCell {
public:
    UIArticleVideoTableViewCell(UITableViewCellStyle style, std::string reuseIdentifier);
    ~UIArticleVideoTableViewCell() override;
    void initialise();

    const Dictionary& videoDictionary() const { return videoDictionary_; }
    void setVideoDictionary(Dictionary record);
    /// Places everything by the video's shape and the width of the first window.
    void refreshHeight();
    void setFrame(const CGRect& frame) override;
    void loadThumbnail();
    void updateVideoThumbnailWith(const Data& image);

    /// Whether the video at `address` is played from where it is; otherwise it is downloaded first. Never on the Mac
    /// idiom, nor from a server of the local network, whose address begins with "http://192" in any case.
    static bool isStreamsServer(const std::string& address);
    void playOrPause();
    /// Plays a file by its absolute path, or a remote one by its http or https address.
    void playWithURL(const std::string& path);
    void playContinue();
    void pause();
    /// Pauses, and takes back the start of a video that is still being downloaded.
    void stop();

    float ratio() const { return ratio_; }
    float currentHeight() const { return currentHeight_; }
    const std::shared_ptr<UIView>& baseView() const { return baseView_; }
    const std::shared_ptr<UIImageView>& maskImageView() const { return maskImageView_; }
    const std::shared_ptr<UIImageView>& thumbnailImageView() const { return thumbnailImageView_; }
    const std::shared_ptr<UILabel>& durationLabel() const { return durationLabel_; }
    const std::shared_ptr<UIImageView>& stateImageView() const { return stateImageView_; }
    const std::shared_ptr<UIActivityIndicatorView>& actView() const { return actView_; }
    const std::shared_ptr<UITextView>& myTextView() const { return myTextView_; }
    const std::shared_ptr<AVPlayer>& player() const { return player_; }
    const std::shared_ptr<AVPlayerLayer>& playLayer() const { return playLayer_; }

private:
    std::weak_ptr<UIArticleVideoTableViewCell> weakSelf();
    void makeThumbnail();
    void makeCaption();
    void download(const std::string& address);
    void playDownloaded(const Data& video);
    void forgetDownload();
    void showPlayingTime();
    bool isPortrait() const { return videoHeight_ > videoWidth_; }

    Dictionary videoDictionary_;
    float videoWidth_ = 0, videoHeight_ = 0;  ///< pixels
    float ratio_ = 1;
    float currentHeight_ = 0;
    float space_ = 5.0f;
    std::shared_ptr<UIView> baseView_;
    std::shared_ptr<UIImageView> maskImageView_, thumbnailImageView_, stateImageView_;
    std::shared_ptr<UILabel> durationLabel_;
    std::shared_ptr<UIActivityIndicatorView> actView_;
    std::shared_ptr<UITextView> myTextView_;
    std::shared_ptr<AVPlayer> player_;
    std::shared_ptr<AVPlayerLayer> playLayer_;
    std::shared_ptr<NSTimer> playingTimer_;
    Data shownThumbnail_;
    /// The download, by number, that is to be played when it has come; none: no other may begin to play.
    std::optional<std::uint64_t> awaited_;
    std::uint64_t requestCount_ = 0;
};

}  // namespace ostrel
