#include "backends/qt/paint/BackdropBlur.h"
#include "tests/backends/qt/QtTestWindow.h"

#include <cmath>
#include <gtest/gtest.h>

namespace ostrel::test {

namespace {

const UIColor red{1, 0, 0, 1}, green{0, 1, 0, 1}, blue{0, 0, 1, 1}, white{1, 1, 1, 1}, clear{};

Spec blur(CGRect frame, double radius, UIColor colour = {}) {
    Spec spec = box(frame, clear);
    spec.state.content = BlurContent{radius, colour};
    return spec;
}

TEST(BlurOfPictures, SpreadsAnEdgeAsAGaussianDoes) {
    QImage image(400, 60, QImage::Format_RGB32);
    image.fill(Qt::black);
    for (int y = 0; y < 60; ++y) {
        for (int x = 200; x < 400; ++x) image.setPixelColor(x, y, Qt::white);
    }
    for (const double sigma : {3.0, 7.0, 15.0, 30.0}) {
        const QImage small = blurredBackdrop(image, sigma);
        EXPECT_LE(small.width(), 400);
        const QImage shown = small.scaled(image.size(), Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
        for (const double distance : {-2.0, -1.0, -0.5, 0.0, 0.5, 1.0, 2.0}) {
            const auto x = static_cast<int>(200 + distance * sigma);
            // The value at the middle of the pixel.
            const double expected = 255 * 0.5 * (1 + std::erf((x + 0.5 - 200) / (sigma * std::sqrt(2.0))));
            EXPECT_NEAR(shown.pixelColor(x, 30).red(), expected, 14) << sigma << ", " << distance;
        }
        EXPECT_EQ(shown.pixelColor(0, 30), QColor(Qt::black)) << "edges go on as they are";
        EXPECT_EQ(shown.pixelColor(399, 0), QColor(Qt::white));
    }
}

TEST(Blur, WithinASurfaceShowsWhatIsPaintedBeneath) {
    QtTestWindow window;
    Spec behind = box({0, 0, 100, 100}, red, {box({50, 0, 50, 100}, blue), blur({0, 0, 100, 50}, 8)});
    window.mount(
        box({0, 0, 200, 200}, white, {surface({20, 20, 160, 160}, green, {behind, box({40, 10, 20, 10}, white)})}));
    window.grab();
    const QColor edge = window.at(20 + 50, 20 + 40);
    EXPECT_NEAR(edge.red(), 128, 20);
    EXPECT_NEAR(edge.blue(), 128, 20);
    EXPECT_LT(edge.green(), 10) << "not what is behind its superview";
    EXPECT_TRUE(isNear(window.at(20 + 5, 20 + 25), QColor(255, 0, 0), 12));
    EXPECT_EQ(window.at(20 + 45, 20 + 75), QColor(255, 0, 0)) << "sharp below the blur";
    EXPECT_EQ(window.at(20 + 55, 20 + 75), QColor(0, 0, 255));
    EXPECT_EQ(window.at(20 + 50, 20 + 15), QColor(255, 255, 255)) << "what is in front is sharp";
    EXPECT_EQ(window.at(20 + 120, 20 + 25), QColor(0, 255, 0));
}

TEST(Blur, ItsColourIsLaidOverItWithinRoundCorners) {
    QtTestWindow window;
    Spec round = box({0, 0, 100, 100}, red, {blur({0, 0, 100, 100}, 8, white.withAlpha(0.5f))});
    round.state.clipsToBounds = true;
    round.state.cornerRadius = 40;
    window.mount(box({0, 0, 200, 200}, white, {surface({20, 20, 160, 160}, green, {round})}));
    window.grab();
    EXPECT_TRUE(isNear(window.at(20 + 50, 20 + 50), QColor(255, 128, 128)));
    EXPECT_EQ(window.at(20 + 3, 20 + 3), QColor(0, 255, 0));
}

TEST(Blur, OutsideOfSurfacesFollowsWhatChangesBeneath) {
    QtTestWindow window;
    const Spec under = surface({0, 0, 100, 200}, red, {box({0, 0, 10, 10}, white)});
    const Spec root =
        box({0, 0, 200, 200}, blue, {under, blur({50, 50, 100, 100}, 8, {}), surface({90, 60, 20, 20}, white)});
    const auto tags = window.mount(root);
    window.grab();
    const QColor middle = window.at(100, 120);
    EXPECT_NEAR(middle.red(), 128, 20);
    EXPECT_NEAR(middle.blue(), 128, 20);
    EXPECT_EQ(window.at(100, 70), QColor(255, 255, 255)) << "what is in front is not blurred";
    EXPECT_EQ(window.at(99, 20), QColor(255, 0, 0)) << "sharp outside";

    ViewState state = under.state;
    state.backgroundColor = green;
    window.mount({Mutation::update(tags[1], std::make_shared<ViewState>(state), changedLayer)});
    window.grab();
    EXPECT_NEAR(window.at(100, 120).green(), 128, 20) << "another colour beneath";
    state.frame.origin.x = -50;
    window.mount({Mutation::update(tags[1], std::make_shared<ViewState>(state), changedFrameOrigin)});
    window.grab();
    EXPECT_TRUE(isNear(window.at(100, 120), QColor(0, 0, 255), 12)) << "it has moved away";
    const auto painted = window.view().statistics().bandsPainted;
    ViewState front = root.children[2].state;
    front.accessibility.label = "in front";
    window.mount({Mutation::update(tags[4], std::make_shared<ViewState>(front), changedAccessibility)});
    window.grab();
    EXPECT_EQ(window.view().statistics().bandsPainted, painted);
}

}  // namespace

}  // namespace ostrel::test
