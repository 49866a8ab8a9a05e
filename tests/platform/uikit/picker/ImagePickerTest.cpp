#include "tests/platform/uikit/screens/ControllerTestSupport.h"

#include "platform/foundation/runloop/NSProgress.h"
#include "platform/foundation/runloop/NSThread.h"
#include "platform/media/MediaLibrary.h"
#include "platform/uikit/picker/MediaGridCell.h"
#include "platform/uikit/picker/MediaGridView.h"
#include "platform/uikit/picker/UIImagePickerController.h"
#include "tests/support/LogCapture.h"
#include "tests/support/ScriptedMedia.h"
#include "tests/support/TemporaryFolder.h"

#include <chrono>
#include <ranges>
#include <sys/stat.h>

namespace ostrel {
namespace {

Data picture(int width, int height, bool isJpeg = true) {
    const auto image = CGImage::make(width, height);
    for (int y = 0; y < height; ++y) std::fill_n(image->row(y), image->bytesPerRow(), std::uint8_t(200));
    return isJpeg ? image->jpeg(0.8) : image->png();
}

class ImagePickerTest : public ControllerTest, public UIImagePickerControllerDelegate {
protected:
    void SetUp() override {
        MediaLibrary::install(std::make_shared<const MediaLibrary>(
            MediaLibrary::Folders{.pictures = {folder.path()}, .clips = {folder.path()}}));
        MediaBackend::install(media);
    }
    void TearDown() override {
        UIApplication::sharedApplication().chooseFiles = nullptr;
        UIApplication::sharedApplication().readPasteboard = nullptr;
        MediaLibrary::install(nullptr);
        MediaBackend::install(nullptr);
        ControllerTest::TearDown();
    }
    void imagePickerControllerDidFinishPickingMediaWithInfo(UIImagePickerController&,
                                                            const UIImagePickerMediaInfo& info) override {
        picked.push_back(info);
    }
    void imagePickerControllerDidCancel(UIImagePickerController& picker) override {
        ++cancelled;
        UIImagePickerControllerDelegate::imagePickerControllerDidCancel(picker);
    }

    std::string add(const std::string& name, const Data& data, int secondsAgo = 0) {
        const std::string path = folder.write(name, std::string(data.view()));
        std::filesystem::last_write_time(path, start - std::chrono::seconds(secondsAgo));
        return path;
    }
    /// Presents a picker and waits until it has searched the folders and made the visible thumbnails.
    std::shared_ptr<UIImagePickerController> open(std::vector<std::string> types = {"public.image"}) {
        show(screen("A"));
        auto picker = make<UIImagePickerController>();
        picker->setMediaTypes(std::move(types));
        picker->setDelegate(std::shared_ptr<UIImagePickerControllerDelegate>(alive, this));
        window().rootViewController()->presentViewController(picker, true);
        work();
        return picker;
    }
    /// Lets the threads do their work, and shows what came of it.
    void work() {
        settle();
        for (int i = 0; i < 50 && NSThread::runningCount() > 0; ++i) {
            platform_.loop().waitFor([] { return NSThread::runningCount() == 0; });
            settle();
        }
        settle();
    }
    MediaGridView& grid(UIImagePickerController& picker) {
        return dynamic_cast<MediaGridView&>(
            *find(*picker.view(), [](UIView& view) { return dynamic_cast<MediaGridView*>(&view) != nullptr; }));
    }
    /// The accessible names of the visible cells, in reading order.
    std::vector<std::string> labels(UIImagePickerController& picker, bool onlyBusy = false) {
        std::map<std::pair<CGFloat, CGFloat>, std::string> byPlace;
        const auto turns = [](UIView& view) {
            auto* const wheel = dynamic_cast<UIActivityIndicatorView*>(&view);
            return wheel && wheel->isAnimating();
        };
        for (const auto& view : grid(picker).subviews()) {
            if (dynamic_cast<MediaGridCell*>(view.get()) && (!onlyBusy || find(*view, turns)))
                byPlace[{view->frame().minY(), view->frame().minX()}] = view->accessibility().label;
        }
        const auto names = std::views::values(byPlace);
        return {names.begin(), names.end()};
    }
    bool isAlertShown(UIImagePickerController& picker) { return picker.presentedViewController() != nullptr; }
    void closeAlert(UIImagePickerController& picker) {
        key(UIKeyCode::enter);
        work();
        EXPECT_FALSE(isAlertShown(picker));
    }
    void drop(UIImagePickerController& picker, const std::string& path) {
        picked.clear();
        picker.takeDrop({.filePaths = {path}}, {});
        work();
    }

    TemporaryFolder folder;
    const std::filesystem::file_time_type start = std::filesystem::file_time_type::clock::now();
    std::shared_ptr<ScriptedMediaBackend> media = std::make_shared<ScriptedMediaBackend>();
    std::shared_ptr<int> alive = std::make_shared<int>();
    std::vector<UIImagePickerMediaInfo> picked;
    int cancelled = 0;
};

TEST_F(ImagePickerTest, ShowsPicturesNewestFirstAndHandsOutTheOneChosen) {
    add("old.jpg", picture(40, 30), 20);
    const std::string middle = add("mid dle %41.png", picture(50, 20, false), 10);
    add("new.jpg", picture(60, 30), 1);
    add("notes.txt", Data::copy(std::string_view("x")));
    for (const bool byKeys : {true, false}) {
        picked.clear();
        const auto picker = open();
        EXPECT_EQ(labels(*picker), (std::vector<std::string>{"Photo 1 of 3, new.jpg", "Photo 2 of 3, mid dle %41.png",
                                                             "Photo 3 of 3, old.jpg"}));
        if (byKeys) {
            for (const auto code : {UIKeyCode::right, UIKeyCode::right, UIKeyCode::enter}) key(code);
        } else {
            press(button(*picker, "Photo 2 of 3, mid dle %41.png"));
        }
        work();
        ASSERT_EQ(picked.size(), 1u);
        EXPECT_EQ(picked[0].mediaType, "public.image");
        ASSERT_TRUE(picked[0].originalImage);
        EXPECT_EQ(picked[0].originalImage->size(), (CGSize{50, 20}));
        EXPECT_EQ(picked[0].mediaURL->path(), middle);
        EXPECT_TRUE(picker->presentingViewController()) << "the delegate dismisses it";
    }
    // What was picked does not change with its file.
    std::filesystem::resize_file(middle, 0);
    EXPECT_TRUE(picked[0].originalImage->cgImage());
}

TEST_F(ImagePickerTest, FilesThatCannotBeUsedSayWhy) {
    const std::string jpeg(picture(64, 64).view());
    std::string huge(picture(64, 64, false).view());
    huge.replace(16, 8, std::string("\0\0\x4E\x20\0\0\x4E\x20", 8));
    ::mkfifo(folder.path("pipe.jpg").c_str(), 0600);
    struct Case {
        std::string name, bytes, problem;
    };
    const std::string longest = std::string(251, 'n') + ".jpg";
    const Case cases[] = {
        {"empty.jpg", "", "It is no picture in a known format."},
        {"text.png", "hello", "It is no picture in a known format."},
        {"huge.png", huge, "The picture is too large."},
        {"cut.png", huge.substr(0, 40), "The picture is too large."},
        {"dot.png", std::string(picture(1, 1, false).view()), ""},
        {"quote \" % \xF0\x9F\x8E\x88 ..jpg", jpeg, ""},
        {longest, jpeg, ""},
        {"not utf-8 \xFF.jpg", jpeg, ""},
    };
    for (const Case& each : cases) folder.write(each.name, each.bytes);
    const auto picker = open();
    const auto all = labels(*picker);
    const LogCapture quiet;
    for (const Case& each : cases) {
        const bool isMarked = std::ranges::any_of(all, [&](const std::string& label) {
            return label.find(each.name.substr(0, 9)) < label.find(", Cannot be used") &&
                   label.ends_with(", Cannot be used");
        });
        EXPECT_EQ(isMarked, !each.problem.empty()) << each.name;
        drop(*picker, folder.path(each.name));
        EXPECT_EQ(picked.size(), each.problem.empty() ? 1u : 0u) << each.name;
        EXPECT_EQ(isAlertShown(*picker), !each.problem.empty()) << each.name;
        if (!isAlertShown(*picker)) continue;
        EXPECT_TRUE(platform_.sees(each.problem)) << each.name;
        closeAlert(*picker);
    }
    for (const std::string& path : {folder.path("vanished.jpg"), folder.path(), folder.path("pipe.jpg")}) {
        drop(*picker, path);
        EXPECT_TRUE(picked.empty()) << path;
        ASSERT_TRUE(isAlertShown(*picker)) << path;
        closeAlert(*picker);
    }
}

TEST_F(ImagePickerTest, ClipsHaveTheirLengthAndComeByTheirAddress) {
    const std::string path = add("clip 100%.mov", Data::copy(std::string_view("x")), 1);
    add("sound.mp4", Data::copy(std::string_view("x")), 2);
    add("broken.mp4", Data::copy(std::string_view("x")), 3);
    add("picture.jpg", picture(9, 9));
    const auto video = AVAssetTrack{.mediaType = AVMediaType::video, .naturalSize = {32, 16}, .preferredTransform = {}};
    media->clips[path] = {.length = CMTimeMake(125, 2), .trackList = {video}, .frame = CGImage::make(32, 16)};
    media->clips[folder.path("sound.mp4")] = {.length = CMTimeMake(5, 1)};
    const LogCapture quiet;
    const auto picker = open({"public.movie"});
    const auto conversion = NSProgress::progressWithTotalUnitCount(1);
    conversion->publish();
    EXPECT_EQ(labels(*picker),
              (std::vector<std::string>{"Video 1 of 3, clip 100%.mov, 1:03", "Video 2 of 3, sound.mp4, Cannot be used",
                                        "Video 3 of 3, broken.mp4, Cannot be used"}));
    key(UIKeyCode::down);
    key(UIKeyCode::enter);
    key(UIKeyCode::enter);
    work();
    ASSERT_EQ(picked.size(), 1u) << "a second press while it is being opened is none";
    EXPECT_EQ(labels(*picker, true), std::vector<std::string>{"Video 1 of 3, clip 100%.mov, 1:03"});
    conversion->unpublish();
    settle();
    EXPECT_TRUE(labels(*picker, true).empty()) << "the work on the clip has ended";
    EXPECT_EQ(picked[0].mediaType, "public.movie");
    EXPECT_EQ(picked[0].mediaURL->path(), path);
    EXPECT_FALSE(picked[0].originalImage);
    drop(*picker, folder.path("picture.jpg"));
    EXPECT_TRUE(isAlertShown(*picker)) << "a picture is no clip";
}

TEST_F(ImagePickerTest, CancelsByButtonAndEscape) {
    add("a.jpg", picture(9, 9));
    for (const bool hasDelegate : {true, false}) {
        for (const bool byKey : {true, false}) {
            cancelled = 0;
            std::weak_ptr<UIImagePickerController> gone;
            {
                const auto picker = open();
                gone = picker;
                if (!hasDelegate) picker->setDelegate({});
                if (byKey) key(UIKeyCode::escape);
                if (!byKey) press(button(*picker, "Cancel"));
                settle();
            }
            EXPECT_EQ(cancelled, hasDelegate ? 1 : 0);
            EXPECT_TRUE(gone.expired()) << "closed, and nobody holds it";
        }
    }
}

TEST_F(ImagePickerTest, NothingComesOfAClosedPicker) {
    for (int i = 0; i < 60; ++i) add("p" + std::to_string(i) + ".jpg", picture(600, 400));
    show(screen("A"));
    std::weak_ptr<UIImagePickerController> gone;
    {
        const auto picker = make<UIImagePickerController>();
        gone = picker;
        picker->setDelegate(std::shared_ptr<UIImagePickerControllerDelegate>(alive, this));
        window().rootViewController()->presentViewController(picker, false);
        settle();
        picker->takeDrop({.filePaths = {folder.path("p1.jpg"), folder.path("p2.jpg")}}, {});
        picker->dismissViewControllerAnimated(false);
    }
    work();
    EXPECT_TRUE(picked.empty());
    EXPECT_TRUE(gone.expired());
}

TEST_F(ImagePickerTest, ArrowsReachEveryCellAndStayInTheGrid) {
    for (int i = 0; i < 10; ++i) add("p" + std::to_string(i) + ".jpg", picture(8, 8), i);
    const auto picker = open();  // three columns: the last line has one
    const auto focused = [&] {
        const UIView* const view = window().focusedView();
        return view ? view->accessibility().label.substr(6, 2) : std::string();
    };
    const std::pair<UIKeyCode, const char*> steps[] = {
        {UIKeyCode::down, "1 "},  {UIKeyCode::up, "1 "},   {UIKeyCode::left, "1 "}, {UIKeyCode::right, "2 "},
        {UIKeyCode::down, "5 "},  {UIKeyCode::down, "8 "}, {UIKeyCode::down, "10"}, {UIKeyCode::down, "10"},
        {UIKeyCode::right, "10"}, {UIKeyCode::up, "7 "},   {UIKeyCode::left, "6 "}};
    for (const auto& [code, number] : steps) {
        key(code);
        EXPECT_EQ(focused(), number);
    }
}

TEST_F(ImagePickerTest, TakesWhatIsDroppedPastedAndChosenInTheDialog) {
    const std::string path = add("sub/other.jpg", picture(30, 30));
    add("second.png", picture(20, 20, false));
    auto& application = UIApplication::sharedApplication();
    UITransferItems clipboard;
    application.readPasteboard = [&](const std::function<void(UITransferItems)>& handler) { handler(clipboard); };
    UIFileRequest asked;
    application.chooseFiles = [&](UIWindow*, const UIFileRequest& request,
                                  const std::function<void(std::vector<std::string>)>& handler) {
        asked = request;
        handler({path});
    };
    const auto picker = open();
    const CGPoint middle{180, 300};

    press(button(*picker, "Browse…"));
    work();
    ASSERT_EQ(picked.size(), 1u);
    EXPECT_NE(std::ranges::find(asked.extensions, "jpeg"), asked.extensions.end());
    EXPECT_EQ(std::ranges::find(asked.extensions, "mp4"), asked.extensions.end());

    EXPECT_FALSE(window().sendDrag({}, middle)) << "text, say";
    EXPECT_TRUE(window().sendDrag({.filePaths = {path}}, middle));
    EXPECT_TRUE(window().sendDrop({.filePaths = {path, folder.path("second.png")}}, middle));
    work();
    ASSERT_EQ(picked.size(), 3u);
    EXPECT_EQ(picked[2].originalImage->size(), (CGSize{20, 20}));

    clipboard = {.hasPicture = true, .picture = picture(44, 33, false)};
    for (const auto& [characters, modifier] :
         {std::pair{"v", modifierControl}, {"\x16", modifierControl}, {"v", modifierCommand}}) {
        EXPECT_TRUE(key(UIKeyCode::other, modifier, characters));
        work();
        EXPECT_EQ(picked.back().originalImage->size(), (CGSize{44, 33}));
        EXPECT_FALSE(picked.back().mediaURL);
    }
    EXPECT_EQ(picked.size(), 6u);
    clipboard = {};
    key(UIKeyCode::other, modifierControl, "v");
    work();
    EXPECT_TRUE(isAlertShown(*picker)) << "nothing to paste";
}

TEST_F(ImagePickerTest, SaysWhatIsMissingWhereThereIsNothing) {
    const auto picker = open();
    EXPECT_TRUE(platform_.sees("No Photos"));
    add("a.jpg", picture(9, 9));
    const auto second = open();
    EXPECT_FALSE(platform_.sees("No Photos"));
    EXPECT_TRUE(platform_.sees("1 photo"));
    MediaLibrary::install(nullptr);
    const auto clips = open({"public.movie", "public.unknown"});
    EXPECT_EQ(clips->mediaTypes(), std::vector<std::string>{"public.movie"});
    EXPECT_TRUE(platform_.sees("No Videos"));
}

}  // namespace
}  // namespace ostrel
