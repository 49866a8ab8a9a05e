#include "backends/qt/window/QtTransfer.h"
#include "platform/foundation/runloop/NSThread.h"
#include "platform/graphics/ImageThumbnail.h"
#include "platform/graphics/UIImage.h"
#include "platform/media/MediaLibrary.h"
#include "platform/uikit/picker/UIImagePickerController.h"
#include "platform/uikit/view/UIDevice.h"
#include "tests/backends/qt/QtTestWindow.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <QBuffer>
#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>
#include <qpa/qplatformdrag.h>
#include <qpa/qwindowsysteminterface.h>
#include <QUrl>

namespace ostrel::test {

namespace {

QImage picture(QColor color, QSize size = {60, 40}) {
    QImage image(size, QImage::Format_RGB32);
    image.fill(color);
    return image;
}

Data encoded(const QImage& image, const char* format) {
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    return image.save(&buffer, format) ? Data::take(bytes.toStdString()) : Data();
}

/// Takes files, and pictures only when `takesPictures`.
class Target final : public UIView, public UIDropTarget {
public:
    using UIView::UIView;
    bool canTakeDrop(const UITransferItems& items, CGPoint) override {
        return !items.filePaths.empty() || (takesPictures && items.hasPicture);
    }
    void dropHoverDidChange(bool isInside) override { hovers.push_back(isInside); }
    void takeDrop(const UITransferItems& items, CGPoint location) override {
        taken.push_back(items);
        place = location;
    }
    bool takesPictures = false;
    std::vector<bool> hovers;
    std::vector<UITransferItems> taken;
    CGPoint place;
};

TEST(Transfer, WhatIsDraggedReachesTheViewUnderIt) {
    const auto uiWindow = make<UIWindow>(CGSize{200, 200});
    const auto target = make<Target>(CGRect{100, 0, 100, 200});
    uiWindow->addSubview(target);
    QtTestWindow window(uiWindow);
    window.grab();
    QMimeData files, image, text;
    files.setUrls({QUrl::fromLocalFile("/tmp/a b%20\u00e9.jpg"), QUrl("https://example.org/b.jpg")});
    image.setImageData(picture(Qt::red));
    text.setText("text");
    struct Case {
        const QMimeData& data;
        QPoint point;
        bool takesPictures, isTaken;
    };
    const Case cases[] = {{files, {150, 50}, false, true},
                          {files, {50, 50}, false, false},
                          {image, {150, 50}, false, false},
                          {image, {150, 50}, true, true},
                          {text, {150, 50}, true, false}};
    for (const Case& each : cases) {
        target->hovers.clear();
        target->taken.clear();
        target->takesPictures = each.takesPictures;
        // The calls of the platform plugin.
        const auto actions = Qt::CopyAction | Qt::MoveAction;
        const auto drag = QWindowSystemInterface::handleDrag(&window.window(), &each.data, each.point * window.scale(),
                                                             actions, Qt::LeftButton, {});
        EXPECT_EQ(drag.isAccepted(), each.isTaken);
        EXPECT_EQ(target->hovers, (each.isTaken ? std::vector{true} : std::vector<bool>{}));
        const auto drop = QWindowSystemInterface::handleDrop(&window.window(), &each.data, each.point * window.scale(),
                                                             actions, Qt::LeftButton, {});
        EXPECT_EQ(drop.isAccepted(), each.isTaken);
        if (!each.isTaken) continue;
        EXPECT_EQ(drop.acceptedAction(), Qt::CopyAction) << "the other program must not delete its file";
        ASSERT_TRUE(waitUntil([&] { return !target->taken.empty(); }));
        EXPECT_EQ(target->hovers.back(), false);
        EXPECT_EQ(target->place, (CGPoint{150, 50}));
    }
    EXPECT_EQ(transferItems(&files).filePaths, std::vector<std::string>{"/tmp/a b%20\u00e9.jpg"})
        << "addresses elsewhere are no files";
}

TEST(Transfer, APictureOnTheClipboardArrivesEncoded) {
    QClipboard& clipboard = *QGuiApplication::clipboard();
    const Data png = encoded(picture(Qt::green, {31, 17}), "PNG");
    for (const bool isEncodedAlready : {false, true}) {
        auto* const data = new QMimeData;
        data->setImageData(picture(Qt::green, {31, 17}));
        if (isEncodedAlready) data->setData("image/png", QByteArray::fromStdString(std::string(png.view())));
        clipboard.setMimeData(data);
        std::optional<UITransferItems> read;
        UIApplication::sharedApplication().readPasteboard([&](const UITransferItems& items) { read = items; });
        EXPECT_FALSE(read) << "in a later turn";
        ASSERT_TRUE(waitUntil([&] { return read.has_value(); }));
        EXPECT_TRUE(read->hasPicture);
        const auto image = UIImage::imageWithData(read->picture);
        ASSERT_TRUE(image);
        EXPECT_EQ(image->size(), (CGSize{31, 17}));
        EXPECT_TRUE(!isEncodedAlready || read->picture.view() == png.view()) << "not encoded again";
    }
    clipboard.clear();
}

TEST(Transfer, GifIsDecodedAndACutOneIsNot) {
    const Data gif =
        Data::copy(std::string_view("GIF89a\1\0\1\0\x80\0\0\xFF\0\0\0\0\0!\xF9\4\0\0\0\0\0,\0\0\0\0\1\0\1\0\0"
                                    "\2\2D\1\0;",
                                    43));
    const auto small = squareThumbnail(gif, 20);
    ASSERT_TRUE(small);
    EXPECT_GT(small->row(0)[0], 230);
    EXPECT_LT(small->row(0)[1], 40);
    EXPECT_FALSE(squareThumbnail(gif.slice(0, 20), 20));
}

TEST(ImagePickerPixels, ThumbnailsComeOnScreen) {
    TemporaryFolder folder;
    const std::pair<const char*, QColor> pictures[] = {{"a.png", Qt::red}, {"b.jpg", Qt::blue}, {"c.webp", Qt::green}};
    int age = 0;
    for (const auto& [name, color] : pictures) {
        const std::string path = folder.path(name);
        picture(color, {400, 300}).save(QString::fromStdString(path));
        std::filesystem::last_write_time(path,
                                         std::filesystem::file_time_type::clock::now() - std::chrono::seconds(++age));
    }
    MediaLibrary::install(
        std::make_shared<const MediaLibrary>(MediaLibrary::Folders{.pictures = {folder.path()}, .clips = {}}));
    const auto uiWindow = make<UIWindow>(CGSize{200, 200});
    uiWindow->setRootViewController(make<UIViewController>());
    QtTestWindow window(uiWindow);
    auto picker = make<UIImagePickerController>();
    uiWindow->rootViewController()->presentViewController(picker, false);
    const auto isNearEverywhere = [&] {
        const CGFloat y = UINavigationBar::barHeight() + 30;
        window.grab();
        return isNear(window.at(30, y), Qt::red, 12) && isNear(window.at(100, y), Qt::blue, 12) &&
               isNear(window.at(170, y), Qt::green, 12);
    };
    EXPECT_TRUE(waitUntil(isNearEverywhere));
    uiWindow->setRootViewController(nullptr);
    picker.reset();
    EXPECT_TRUE(NSThread::waitForAll(10));
    MediaLibrary::install(nullptr);
}

}  // namespace

}  // namespace ostrel::test
