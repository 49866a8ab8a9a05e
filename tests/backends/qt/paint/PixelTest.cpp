#include "platform/foundation/runloop/Clock.h"
#include "tests/backends/qt/QtTestWindow.h"

#include <gtest/gtest.h>
#include <ostream>
#include <QBuffer>

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

struct Probe {
    double x, y;
    QColor color;
};

struct Case {
    const char* name;
    Spec root;
    std::vector<Probe> probes;
};

void PrintTo(const Case& c, std::ostream* out) { *out << c.name; }

std::vector<Case> cases() {
    const auto root = [](std::vector<Spec> children) {
        return box({0, 0, 200, 200}, white, std::move(children));
    };
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
    all.push_back({"later views are in front",
                   root({box({10, 10, 50, 50}, red), box({40, 10, 50, 50}, blue)}),
                   {{20, 20, qRed}, {45, 20, qBlue}, {95, 20, qWhite}}});
    all.push_back({"later surfaces are in front of plain views and the other way round",
                   root({surface({10, 10, 50, 50}, red), box({40, 10, 50, 50}, blue),
                         surface({80, 10, 20, 20}, green)}),
                   {{20, 20, qRed}, {45, 20, qBlue}, {85, 20, qGreen}}});
    all.push_back({"children move with the origin of the bounds",
                   root({with(box({0, 0, 100, 100}, clear,
                                  {box({10, 110, 20, 20}, red), surface({50, 110, 20, 20}, blue)}),
                              [](ViewState& s) {
                                  s.boundsOrigin = {0, 100};
                              })}),
                   {{15, 15, qRed}, {55, 15, qBlue}, {15, 35, qWhite}}});
    all.push_back({"children are clipped where the parent says so",
                   root({with(box({10, 10, 40, 40}, clear,
                                  {box({20, 20, 60, 60}, red), surface({0, 20, 60, 10}, blue)}),
                              [](ViewState& s) { s.clipsToBounds = true; }),
                         box({110, 10, 40, 40}, clear, {box({20, 20, 60, 60}, green)})}),
                   {{35, 45, qRed}, {60, 45, qWhite}, {15, 35, qBlue}, {55, 35, qWhite}, {170, 70, qGreen}}});
    all.push_back(
        {"alpha of a plain view fades what is in it as one",
         root({with(box({0, 0, 50, 50}, clear, {surface({0, 0, 50, 50}, red, {box({0, 0, 50, 50}, blue)})}),
                    [](ViewState& s) { s.alpha = 0.5; })}),
         {{25, 25, QColor(128, 128, 255)}}});
    all.push_back({"alpha within a surface fades what is in it as one",
                   root({surface({0, 0, 100, 100}, white,
                                 {with(box({0, 0, 50, 50}, red, {box({0, 0, 50, 50}, blue)}),
                                       [](ViewState& s) { s.alpha = 0.5; })})}),
                   {{25, 25, QColor(128, 128, 255)}, {75, 75, qWhite}}});
    all.push_back({"hidden and transparent views are not shown, nor what is in them",
                   root({with(box({0, 0, 50, 50}, red, {surface({0, 0, 50, 50}, blue)}),
                              [](ViewState& s) { s.hidden = true; }),
                         with(surface({50, 0, 50, 50}, red), [](ViewState& s) { s.alpha = 0; }),
                         surface({100, 0, 50, 50}, green,
                                 {with(box({0, 0, 50, 50}, red), [](ViewState& s) { s.hidden = true; })})}),
                   {{25, 25, qWhite}, {75, 25, qWhite}, {125, 25, qGreen}}});
    all.push_back({"round corners show what is behind",
                   box({0, 0, 200, 200}, green,
                       {rounded(surface({10, 10, 80, 80}, white, {box({0, 0, 80, 80}, red)}), 20),
                        with(box({110, 10, 80, 80}, blue), [](ViewState& s) { s.cornerRadius = 40; })}),
                   {{11, 11, qGreen},
                    {88, 88, qGreen},
                    {50, 50, qRed},
                    {50, 11, qRed},
                    {112, 12, qGreen},
                    {150, 12, qBlue}}});
    all.push_back({"corners are rounded above or below only",
                   root({with(surface({0, 0, 60, 60}, red),
                              [](ViewState& s) {
                                  s.cornerRadius = 20;
                                  s.roundsBottom = false;
                              }),
                         with(surface({100, 0, 60, 60}, red),
                              [](ViewState& s) {
                                  s.cornerRadius = 20;
                                  s.roundsTop = false;
                              })}),
                   {{1, 1, qWhite},
                    {58, 1, qWhite},
                    {1, 58, qRed},
                    {58, 58, qRed},
                    {101, 1, qRed},
                    {101, 58, qWhite},
                    {158, 58, qWhite}}});
    all.push_back({"round corners of a view within a surface cut its children",
                   root({surface({0, 0, 100, 100}, green,
                                 {rounded(box({10, 10, 80, 80}, clear, {box({0, 0, 80, 80}, red)}), 30)})}),
                   {{12, 12, qGreen}, {50, 50, qRed}, {88, 12, qGreen}}});
    all.push_back({"a rounded surface over other views keeps them in its corners",
                   root({box({0, 0, 200, 200}, white,
                             {surface({0, 0, 60, 60}, red), rounded(surface({5, 5, 80, 80}, blue), 30)})}),
                   {{7, 7, qRed}, {83, 83, qWhite}, {45, 45, qBlue}}});
    all.push_back({"round corners of a view that clips cut surfaces and plain views below it",
                   box({0, 0, 200, 200}, green,
                       {rounded(box({10, 10, 80, 80}, clear,
                                    {surface({0, 0, 80, 30}, red, {box({0, 0, 10, 10}, blue)}),
                                     box({0, 30, 80, 50}, white), surface({20, 60, 40, 20}, red)}),
                                30)}),
                   {{11, 11, qGreen},
                    {88, 11, qGreen},
                    {11, 88, qGreen},
                    {50, 11, qRed},
                    {11, 50, qWhite},
                    {50, 88, qRed}}});
    all.push_back({"a border runs inside the edge",
                   root({with(box({10, 10, 60, 60}, white),
                              [](ViewState& s) {
                                  s.borderWidth = 6;
                                  s.borderColor = red;
                              })}),
                   {{12, 40, qRed}, {67, 40, qRed}, {40, 40, qWhite}, {8, 40, qWhite}}});
    all.push_back(
        {"a quarter turn about the centre",
         root({with(surface({50, 80, 100, 40}, red),
                    [](ViewState& s) { s.transform = CGAffineTransform::rotation(1.5707963267948966); })}),
         {{100, 60, qRed}, {100, 140, qRed}, {60, 100, qWhite}, {140, 100, qWhite}}});
    all.push_back({"a surface in a surface is in front of its picture and moves with it",
                   root({surface({20, 20, 100, 100}, red,
                                 {box({10, 10, 80, 80}, green, {surface({20, 20, 20, 20}, blue)})})}),
                   {{25, 25, qRed}, {35, 35, qGreen}, {60, 60, qBlue}}});
    all.push_back({"hairlines take a whole pixel, at the edge too",
                   root({surface({0, 0, 100, 50}, white, {box({0, 49.5, 100, 0.5}, red)}),
                         box({100, 49.5, 100, 0.5}, blue)}),
                   {{50, 49.25, qRed}, {150, 49.25, qBlue}, {50, 48, qWhite}, {150, 48, qWhite}}});
    all.push_back({"pictures fit, fill and stretch",
                   root({image({0, 0, 40, 40}, UIViewContentMode::scaleAspectFit, wide),
                         image({50, 0, 40, 40}, UIViewContentMode::scaleAspectFill, wide),
                         image({100, 0, 40, 40}, UIViewContentMode::scaleToFill, wide),
                         image({0, 50, 60, 40}, UIViewContentMode::right, wide)}),
                   {{5, 20, qRed},
                    {35, 20, qBlue},
                    {5, 5, qWhite},
                    {55, 5, qRed},
                    {85, 35, qBlue},
                    {105, 5, qRed},
                    {135, 35, qBlue},
                    {10, 70, qWhite},
                    {25, 70, qRed},
                    {55, 70, qBlue}}});
    all.push_back(
        {"a large picture is decoded apart and comes into its round surface",
         root({surface({0, 0, 120, 120}, green,
                       {rounded(image({10, 10, 100, 100}, UIViewContentMode::scaleAspectFill, large), 50)})}),
         {{12, 12, qGreen}, {40, 60, qRed}, {90, 60, qBlue}}});
    return all;
}

class Pixels : public testing::TestWithParam<Case> {};

TEST_P(Pixels, AreAsTheViewsSay) {
    QtTestWindow window;
    window.mount(GetParam().root);
    window.grab();
    for (const Probe& probe : GetParam().probes) {
        const QColor found = window.at(probe.x + 0.5 / window.scale(), probe.y + 0.5 / window.scale());
        EXPECT_TRUE(isNear(found, probe.color))
            << "at " << probe.x << ", " << probe.y << ": " << found.name().toStdString() << " for "
            << probe.color.name().toStdString();
    }
}

INSTANTIATE_TEST_SUITE_P(All, Pixels, testing::ValuesIn(cases()), [](const auto& instance) {
    std::string name;
    for (const char* c = instance.param.name; *c; ++c)
        name += std::isalnum(static_cast<unsigned char>(*c)) ? *c : '_';
    return name;
});

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

TEST(PixelsOf, TurningWheelIsDrawnOverItsSurface) {
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
    EXPECT_TRUE(window.view().isSettled()) << "a wheel alone keeps nobody waiting";
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
    // A quarter turn clockwise: what was at the left is above.
    EXPECT_TRUE(isNear(window.at(100, 55), qRed));
    EXPECT_TRUE(isNear(window.at(100, 140), qGreen));
    EXPECT_EQ(window.at(60, 100), qWhite);

    turned.state.rotation = turning({-0.5, 0.5, -0.5}, 0.2);
    const auto set = [&] {
        window.mount(
            {Mutation::update(tags[1], std::make_shared<ViewState>(turned.state), changedTransform)});
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
    EXPECT_TRUE(isNear(window.at(60, 85), qRed)) << "it lies as before";
}

}  // namespace

}  // namespace ostrel::test
