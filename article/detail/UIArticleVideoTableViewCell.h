#pragma once

#include "platform/foundation/runloop/RunLoop.h"
#include "platform/foundation/values/Data.h"
#include "platform/foundation/values/Value.h"
#include "platform/uikit/controls/AVPlayerLayer.h"
#include "platform/uikit/controls/UIActivityIndicatorView.h"
#include "platform/uikit/controls/UIVisualEffectView.h"
#include "platform/uikit/table/UITableViewCell.h"
#include "platform/uikit/text/UITextView.h"

#include <memory>
#include <string>

namespace ostrel {

class VideoDownload;

/// One video of an article: its thumbnail (a portrait one before a blurred copy of itself), a caption, a play
/// symbol and a duration label. The video plays in place when the row is selected. A reused row keeps its
/// player until it plays another video, and continues to play outside the viewport. `VideoRowLayout` places its
/// parts.
class UIArticleVideoTableViewCell final : public UITableViewCell {
public:
    UIArticleVideoTableViewCell(UITableViewCellStyle style, std::string reuseIdentifier);
    ~UIArticleVideoTableViewCell() override;
    void initialise();

    const Dictionary& videoDictionary() const { return videoDictionary_; }
    void setVideoDictionary(Dictionary record);
    /// Places everything by the shape of the video and the width of the application's first window.
    void refreshHeight();
    void setFrame(const CGRect& frame) override;
    void loadThumbnail();
    void updateVideoThumbnailWith(const Data& image);

    /// Whether the player streams the video from `address`; otherwise the video is downloaded before it
    /// plays. A video is never streamed on the Mac idiom, nor from a server of the local network, whose
    /// address begins with "http://192" in upper or lower case.
    static bool isStreamsServer(const std::string& address);
    void playOrPause();
    /// Plays the file at an absolute path, or the video at an http or https address.
    void playWithURL(const std::string& path);
    void playContinue();
    void pause();
    /// Pauses. A video that is still being downloaded will not start.
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
    void centreWheel();
    void download(const std::string& address);
    void forgetDownload();
    void showPlayingTime();

    Dictionary videoDictionary_;
    /// In pixels, as the record states them.
    float videoWidth_ = 0, videoHeight_ = 0;
    float ratio_ = 1;
    float currentHeight_ = 0;
    std::shared_ptr<UIView> baseView_;
    std::shared_ptr<UIImageView> maskImageView_, thumbnailImageView_, stateImageView_;
    std::shared_ptr<UILabel> durationLabel_;
    std::shared_ptr<UIActivityIndicatorView> actView_;
    std::shared_ptr<UITextView> myTextView_;
    std::shared_ptr<AVPlayer> player_;
    std::shared_ptr<AVPlayerLayer> playLayer_;
    std::shared_ptr<NSTimer> playingTimer_;
    Data shownThumbnail_;
    std::shared_ptr<VideoDownload> download_;
};

}  // namespace ostrel
