#include "platform/foundation/runloop/Clock.h"
#include "tests/backends/qt/QtTestWindow.h"

#include <gtest/gtest.h>
#include <QBuffer>
#include <sstream>

namespace ostrel::test {

namespace {

const UIColor red{1, 0, 0, 1}, green{0, 1, 0, 1}, blue{0, 0, 1, 1}, white{1, 1, 1, 1}, clear{};
const QColor qRed(255, 0, 0), qGreen(0, 255, 0), qBlue(0, 0, 255), qWhite(255, 255, 255);

Spec with(Spec spec, const std::function<void(ViewState&)>& change) {
    change(spec.state);
    return spec;
}

std::shared_ptr<const UIImage> picture(int width, int height, const QColor& left, const QColor& right) {
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(left);
    for (int y = 0; y < height; ++y) {
        for (int x = width / 2; x < width; ++x) image.setPixelColor(x, y, right);
    }
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return UIImage::imageWithData(Data::copy(std::string_view(bytes.data(), std::size_t(bytes.size()))));
}

struct Case {
    const char* name;
    Spec root;
    // Points and their colours: "10 20 red, 30 40 white". "pale": blue at half its alpha on white.
    std::string probes;
};

std::vector<Case> cases() {
    const auto root = [](std::vector<Spec> children) { return box({0, 0, 200, 200}, white, std::move(children)); };
    const auto rounded = [](Spec spec, double radius) {
        return with(std::move(spec), [=](ViewState& s) {
            s.cornerRadius = radius;
            s.clipsToBounds = true;
        });
    };
    const auto image = [](CGRect frame, UIViewContentMode mode, std::shared_ptr<const UIImage> shown) {
        return with(box(frame, clear), [&](ViewState& s) {
            s.clipsToBounds = true;
            s.content = ImageContent{std::move(shown), mode, {}};
        });
    };
    const auto wide = picture(40, 20, qRed, qBlue), large = picture(400, 200, qRed, qBlue);

    std::vector<Case> all;
    const auto add = [&all](Case c) { all.push_back(std::move(c)); };
    add({"later views are in front, surfaces and plain views alike",
         root({surface({10, 10, 50, 50}, red), box({40, 10, 50, 50}, blue), surface({80, 10, 20, 20}, green),
               box({90, 20, 30, 20}, red)}),
         "20 20 red, 45 20 blue, 85 15 green, 95 25 red, 125 20 white"});
    add({"children move with the origin of the bounds",
         root({with(box({0, 0, 100, 100}, clear, {box({10, 110, 20, 20}, red), surface({50, 110, 20, 20}, blue)}),
                    [](ViewState& s) {
                        s.boundsOrigin = {0, 100};
                    })}),
         "15 15 red, 55 15 blue, 15 35 white"});
    add({"children are clipped where the parent says so",
         root({with(box({10, 10, 40, 40}, clear, {box({20, 20, 60, 60}, red), surface({0, 20, 60, 10}, blue)}),
                    [](ViewState& s) { s.clipsToBounds = true; }),
               box({110, 10, 40, 40}, clear, {box({20, 20, 60, 60}, green)})}),
         "35 45 red, 60 45 white, 15 35 blue, 55 35 white, 170 70 green"});
    add({"alpha of a plain view fades what is in it as one",
         root({with(box({0, 0, 50, 50}, clear, {surface({0, 0, 50, 50}, red, {box({0, 0, 50, 50}, blue)})}),
                    [](ViewState& s) { s.alpha = 0.5; })}),
         "25 25 pale"});
    add({"alpha within a surface fades what is in it as one",
         root({surface(
             {0, 0, 100, 100}, white,
             {with(box({0, 0, 50, 50}, red, {box({0, 0, 50, 50}, blue)}), [](ViewState& s) { s.alpha = 0.5; })})}),
         "25 25 pale, 75 75 white"});
    add({"hidden and transparent views are not shown, nor what is in them",
         root({with(box({0, 0, 50, 50}, red, {surface({0, 0, 50, 50}, blue)}), [](ViewState& s) { s.hidden = true; }),
               with(surface({50, 0, 50, 50}, red), [](ViewState& s) { s.alpha = 0; }),
               surface({100, 0, 50, 50}, green,
                       {with(box({0, 0, 50, 50}, red), [](ViewState& s) { s.hidden = true; })})}),
         "25 25 white, 75 25 white, 125 25 green"});
    add({"round corners show what is behind",
         box({0, 0, 200, 200}, green,
             {rounded(surface({10, 10, 80, 80}, white, {box({0, 0, 80, 80}, red)}), 20),
              with(box({110, 10, 80, 80}, blue), [](ViewState& s) { s.cornerRadius = 40; })}),
         "11 11 green, 88 88 green, 50 50 red, 50 11 red, 112 12 green, 150 12 blue"});
    add({"corners are rounded above or below only",
         root({with(rounded(surface({0, 0, 60, 60}, red), 20), [](ViewState& s) { s.roundsBottom = false; }),
               with(rounded(surface({100, 0, 60, 60}, red), 20), [](ViewState& s) { s.roundsTop = false; })}),
         "1 1 white, 58 1 white, 1 58 red, 58 58 red, 101 1 red, 101 58 white, 158 58 white"});
    add({"round corners of a view within a surface cut its children",
         root({surface({0, 0, 100, 100}, green,
                       {rounded(box({10, 10, 80, 80}, clear, {box({0, 0, 80, 80}, red)}), 30)})}),
         "12 12 green, 50 50 red, 88 12 green"});
    add({"a rounded surface over other views keeps them in its corners",
         root({box({0, 0, 200, 200}, white,
                   {surface({0, 0, 60, 60}, red), rounded(surface({5, 5, 80, 80}, blue), 30)})}),
         "7 7 red, 83 83 white, 45 45 blue"});
    add({"round corners of a view that clips cut surfaces and plain views below it",
         box({0, 0, 200, 200}, green,
             {rounded(box({10, 10, 80, 80}, clear,
                          {surface({0, 0, 80, 30}, red, {box({0, 0, 10, 10}, blue)}), box({0, 30, 80, 50}, white),
                           surface({20, 60, 40, 20}, red)}),
                      30)}),
         "11 11 green, 88 11 green, 11 88 green, 50 11 red, 11 50 white, 50 88 red"});
    add({"a border runs inside the edge",
         root({with(box({10, 10, 60, 60}, white),
                    [](ViewState& s) {
                        s.borderWidth = 6;
                        s.borderColor = red;
                    })}),
         "12 40 red, 67 40 red, 40 40 white, 8 40 white"});
    add({"a quarter turn about the centre",
         root({with(surface({50, 80, 100, 40}, red),
                    [](ViewState& s) { s.transform = CGAffineTransform::rotation(1.5707963267948966); })}),
         "100 60 red, 100 140 red, 60 100 white, 140 100 white"});
    add({"a surface in a surface is in front of its picture and moves with it",
         root({surface({20, 20, 100, 100}, red, {box({10, 10, 80, 80}, green, {surface({20, 20, 20, 20}, blue)})})}),
         "25 25 red, 35 35 green, 60 60 blue"});
    add({"hairlines take a whole pixel, at the edge too",
         root({surface({0, 0, 100, 50}, white, {box({0, 49.5, 100, 0.5}, red)}), box({100, 49.5, 100, 0.5}, blue)}),
         "50 49.25 red, 150 49.25 blue, 50 48 white, 150 48 white"});
    add({"pictures fit, fill and stretch",
         root({image({0, 0, 40, 40}, UIViewContentMode::scaleAspectFit, wide),
               image({50, 0, 40, 40}, UIViewContentMode::scaleAspectFill, wide),
               image({100, 0, 40, 40}, UIViewContentMode::scaleToFill, wide),
               image({0, 50, 60, 40}, UIViewContentMode::right, wide)}),
         "5 20 red, 35 20 blue, 5 5 white, 55 5 red, 85 35 blue, 105 5 red, 135 35 blue, "
         "10 70 white, 25 70 red, 55 70 blue"});
    add({"a large picture is decoded apart and comes into its round surface",
         root({surface({0, 0, 120, 120}, green,
                       {rounded(image({10, 10, 100, 100}, UIViewContentMode::scaleAspectFill, large), 50)})}),
         "12 12 green, 40 60 red, 90 60 blue"});
    return all;
}

TEST(Pixels, AreAsTheViewsSay) {
    for (const Case& c : cases()) {
        SCOPED_TRACE(c.name);
        QtTestWindow window;
        window.mount(c.root);
        window.grab();
        std::istringstream probes(c.probes);
        std::string color;
        for (double x, y; probes >> x >> y >> color;) {
            if (color.back() == ',') color.pop_back();
            const QColor expected = color == "pale"    ? QColor(128, 128, 255)
                                    : color == "green" ? qGreen
                                                       : QColor(QString::fromStdString(color));
            const QColor found = window.at(x + 0.5 / window.scale(), y + 0.5 / window.scale());
            EXPECT_TRUE(isNear(found, expected))
                << "at " << x << ", " << y << ": " << found.name().toStdString() << " for " << color;
        }
        EXPECT_TRUE(probes.eof());
    }
}

TEST(PixelsOf, ShadowFadesAwayFromTheView) {
    QtTestWindow window;
    window.mount(box({0, 0, 200, 200}, white, {with(surface({60, 60, 80, 80}, white), [](ViewState& s) {
                         s.shadow = {UIColor{0, 0, 0, 0.5f}, 10, {0, 4}};
                     })}));
    window.grab();
    const int near = window.at(100, 145).red(), far = window.at(100, 158).red();
    EXPECT_LT(near, far);
    EXPECT_LT(far, 255);
    EXPECT_EQ(window.at(100, 190), qWhite);
    EXPECT_EQ(window.at(100, 100), qWhite);
    EXPECT_GT(window.at(100, 55).red(), near) << "the offset moves the shadow down";
}

TEST(PixelsOf, TurningSpinnerIsDrawnOverItsSurface) {
    QtTestWindow window;
    Spec wheel = box({40, 40, 40, 40}, clear);
    wheel.state.content = SpinnerContent{red, true, 1};
    window.mount(box({0, 0, 200, 200}, white, {surface({20, 20, 80, 80}, green, {wheel})}));
    const QImage first = window.grab();
    int reddish = 0;
    for (int x = 60; x < 100; ++x) {
        for (int y = 60; y < 100; ++y) reddish += window.at(x, y).red() > 128;
    }
    EXPECT_GT(reddish, 50);
    EXPECT_TRUE(isNear(window.at(80, 80), qGreen)) << "the middle is empty";
    EXPECT_TRUE(waitUntil([&] { return window.window().grabWindow() != first; })) << "it turns";
    EXPECT_TRUE(window.view().isSettled()) << "a turning spinner alone is settled";
}

TEST(PixelsOf, RotationTurnsTheSurfaceWithoutPaintingItAgain) {
    QtTestWindow window;
    const auto turning = [](std::vector<double> angles, double duration) {
        LayerRotation rotation{.angles = std::move(angles), .duration = duration, .repeatCount = 1e30};
        rotation.begin = Clock::shared().monotonicSeconds();
        return std::make_shared<const LayerRotation>(std::move(rotation));
    };
    Spec turned = surface({50, 80, 100, 40}, green, {box({0, 0, 20, 40}, red)});
    turned.state.rotation = turning({1.5707963267948966}, 0);
    const auto tags = window.mount(box({0, 0, 200, 200}, white, {turned}));
    window.grab();
    // A quarter turn clockwise moves the left part to the top.
    EXPECT_TRUE(isNear(window.at(100, 55), qRed));
    EXPECT_TRUE(isNear(window.at(100, 140), qGreen));
    EXPECT_EQ(window.at(60, 100), qWhite);

    turned.state.rotation = turning({-0.5, 0.5, -0.5}, 0.2);
    const auto set = [&] {
        window.mount({Mutation::update(tags[1], std::make_shared<ViewState>(turned.state), changedTransform)});
    };
    set();
    const QImage first = window.grab();
    const auto before = window.view().statistics();
    EXPECT_TRUE(waitUntil([&] { return window.window().grabWindow() != first; })) << "it turns by itself";
    EXPECT_EQ(window.view().statistics().bandsPainted, before.bandsPainted);
    EXPECT_EQ(window.view().statistics().listsTaken, before.listsTaken);
    EXPECT_TRUE(window.view().isSettled());
    turned.state.rotation = nullptr;
    set();
    window.grab();
    EXPECT_TRUE(isNear(window.at(60, 85), qRed)) << "in landscape again";
}

}  // namespace

}  // namespace ostrel::test
