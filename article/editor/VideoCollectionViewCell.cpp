#include "article/editor/VideoCollectionViewCell.h"

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <utility>

namespace ostrel {

namespace {

/// "%.0f": to the nearest whole number, exact halves to the even one.
std::string rounded(float value) {
    char text[64];
    std::snprintf(text, sizeof text, "%.0f", static_cast<double>(value));
    return text;
}

}  // namespace

void VideoCollectionViewCell::initialise() {
    MediaCollectionViewCell::initialise();
    const CGSize picture = img()->frame().size;
    durationLabel_ = make<UILabel>(CGRect(0, picture.height - 14, picture.width - 8, 11));
    durationLabel_->setAutoresizingMask(flexibleWidth | flexibleTopMargin);
    durationLabel_->setBackgroundColor(UIColor::clear());
    durationLabel_->setTextAlignment(NSTextAlignment::center);
    durationLabel_->setTextColor(UIColor::white());
    durationLabel_->setFont(UIFont::fontWithName("PingFangSC-Medium", 10));
    durationLabel_->setText("");
    img()->addSubview(durationLabel_);
}

void VideoCollectionViewCell::setVideoObject(std::shared_ptr<NSArticleVideoObject> item) {
    const bool isAnother = replaceItem(std::move(item));
    const auto& shown = videoObject();
    if (!shown) return;
    if (const Dictionary& record = shown->videoDictionary()) {
        // Kept on purpose: for an existing video the label keeps the length of the item that the tile showed before.
        showExisting(record, isAnother, Spinner::stopsForCachedData);
    } else {
        durationLabel_->setText(durationString(shown->duration()));
        showNew(shown->thumbnail(), shown->text());
    }
}

std::string VideoCollectionViewCell::durationString(float seconds) {
    if (!std::isfinite(seconds) || seconds >= 0x1p63f) return "0:00";
    if (seconds < 10.0f) return "0:0" + rounded(seconds);
    if (seconds < 60.0f) return "0:" + rounded(seconds);
    const auto whole = static_cast<std::int64_t>(seconds);
    if (seconds < 3600.0f) {
        char tail[8];
        std::snprintf(tail, sizeof tail, "%02d", static_cast<int>(whole % 60));
        return rounded(seconds / 60.0f) + ":" + tail;
    }
    return rounded(seconds / 3600.0f) + ":" + durationString(static_cast<float>(whole % 3600));
}

}  // namespace ostrel
