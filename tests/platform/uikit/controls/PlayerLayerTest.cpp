#include "backends/headless/HeadlessPlatform.h"
#include "platform/uikit/controls/AVPlayerLayer.h"
#include "platform/uikit/controls/UIVisualEffectView.h"
#include "tests/support/ScriptedPlayer.h"

#include <gtest/gtest.h>

namespace ostrel {
namespace {

std::shared_ptr<AVPlayerItem> itemAt(const std::string& url) {
    return std::make_shared<AVPlayerItem>(std::make_shared<const AVURLAsset>(url));
}

TEST(AVPlayer, IsMadeByTheInstalledFactoryOnly) {
    EXPECT_EQ(AVPlayer::playerWithPlayerItem(itemAt("file:///a.mp4")), nullptr) << "none is installed";
    ScriptedPlayers players;
    EXPECT_EQ(AVPlayer::playerWithPlayerItem(nullptr), nullptr);
    EXPECT_EQ(AVPlayer::playerWithPlayerItem(std::make_shared<AVPlayerItem>(nullptr)), nullptr);
    players.refuses = true;
    EXPECT_EQ(AVPlayer::playerWithPlayerItem(itemAt("file:///a.mp4")), nullptr);
    players.refuses = false;
    EXPECT_NE(AVPlayer::playerWithPlayerItem(itemAt("file:///b.mp4")), nullptr);
    EXPECT_EQ(players.urls(), (std::vector<std::string>{"file:///a.mp4", "file:///b.mp4"}));
    EXPECT_EQ(players.alive(), 0u) << "a released player frees its decoder";
}

TEST(AVPlayer, KnowsTheDurationOfItsItemAsLongAsItLives) {
    ScriptedPlayers players;
    auto player = AVPlayer::playerWithPlayerItem(itemAt("file:///a.mp4"));
    ASSERT_NE(player, nullptr);
    const auto item = player->currentItem();
    EXPECT_FALSE(item->duration().isKnown());
    player->play();
    EXPECT_EQ(player->timeControlStatus(), AVPlayerTimeControlStatus::waitingToPlayAtSpecifiedRate);
    players.last().becomeReady(CMTimeMake(90, 30));
    EXPECT_EQ(item->duration(), CMTimeMake(90, 30));
    EXPECT_EQ(player->status(), AVPlayerStatus::readyToPlay);
    player->seekToTime(CMTimeMake(45, 30));
    EXPECT_EQ(player->currentTime(), CMTimeMake(45, 30));
    player.reset();
    EXPECT_FALSE(item->duration().isKnown());
}

TEST(AVPlayerLayer, IsMountedWithItsEngineAndKeepsItAlive) {
    HeadlessPlatform platform;
    ScriptedPlayers players;
    auto layer = AVPlayerLayer::playerLayerWithPlayer(AVPlayer::playerWithPlayerItem(itemAt("file:///a.mp4")));
    layer->setFrame({0, 0, 320, 180});
    platform.window().addSubview(layer);
    platform.settle();
    const auto contentOf = [&](const UIView& view) { return platform.backend().node(view.tag())->state->content; };
    EXPECT_EQ(std::get<PlayerContent>(contentOf(*layer)).engine.get(), &players.last());
    EXPECT_NE(platform.window().hitTest({10, 10}), layer.get()) << "it takes no touches";

    const auto empty = AVPlayerLayer::playerLayerWithPlayer(nullptr);
    platform.window().addSubview(empty);
    platform.settle();
    EXPECT_EQ(contentOf(*empty), ViewContent{}) << "without a player there is nothing to show";
}

TEST(UIVisualEffectView, IsMountedAsALightBlurAndTakesNoTouches) {
    HeadlessPlatform platform;
    const auto blur = make<UIVisualEffectView>(CGRect{0, 0, 100, 100}, UIBlurEffectStyle::light);
    platform.window().addSubview(blur);
    platform.settle();
    const auto content = std::get<BlurContent>(platform.backend().node(blur->tag())->state->content);
    EXPECT_GT(content.radius, 0);
    EXPECT_TRUE(content.tint.alpha > 0 && content.tint.alpha < 1) << "the backdrop is lightened, and still seen";
    EXPECT_NE(platform.window().hitTest({10, 10}), blur.get());
}

}  // namespace
}  // namespace ostrel
