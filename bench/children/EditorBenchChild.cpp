#include "article/editor/UIArticleEditViewController.h"
#include "article/OstrelArticle.h"
#include "backends/qt/QtPlatform.h"
#include "backends/qt/window/QtWindowView.h"
#include "bench/support/BenchChild.h"
#include "bench/support/FrameMeter.h"
#include "bench/support/ProcessMeter.h"
#include "bench/support/SilentServer.h"
#include "platform/foundation/resources/NSBundle.h"
#include "platform/foundation/runloop/Clock.h"
#include "platform/foundation/runloop/RunLoop.h"
#include "platform/uikit/screens/UINavigationController.h"
#include "platform/uikit/view/UIDevice.h"
#include "platform/uikit/view/UIWindow.h"

#include <QCoreApplication>
#include <QDir>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickWindow>

#include <chrono>
#include <cstdio>
#include <thread>

namespace ostrel {

namespace {

constexpr int width = 375, height = 667;
constexpr double pointsPerTurn = 40;
/// 100,000 characters.
constexpr int textLines = 1250, lineLength = 80;
constexpr int keystrokes = 60, warmUp = 15;

/// Answers every request for a thumbnail with the same small picture, in a later turn of the main loop.
class EditorServer final : public SilentServer {
public:
    explicit EditorServer(const std::string& picture) : picture_(Data::mapFile(picture)) {}

    Data request(const std::string&, OstrelRequestManager::Handler handler) override {
        RunLoop::main().perform([this, handler = std::move(handler)] { handler(picture_, true, std::nullopt); });
        return {};
    }

private:
    const Data picture_;
};

Dictionary articleOf(int images) {
    std::string list;
    for (int i = 0; i < images; ++i) {
        list += std::string(i ? "," : "") + R"({"id":)" + std::to_string(i + 1) + R"(,"thumbnail":"/media/)" +
                std::to_string(i) + R"(.jpg","text":"What picture )" + std::to_string(i) + R"( shows"})";
    }
    return Dictionary::parse(R"({"id":1,"title":"Many pictures","text":"All of them.","images":[)" + list +
                             R"(],"videos":[]})");
}

/// A window for the article editor. It is empty until `open` is called.
class EditorWindow final {
public:
    EditorWindow() : root_(make<UIWindow>(CGSize{width, height})) {
        window_.resize(width, height);
        view_ = new QtWindowView(root_);
        view_->setParentItem(window_.contentItem());
        view_->setSize(QSizeF(width, height));
        root_->setRootViewController(make<UIViewController>());
        window_.show();
    }
    ~EditorWindow() {
        root_->setRootViewController(nullptr);
        delete view_;
    }
    bool settle() {
        int quiet = 0;
        return FrameMeter::waitFor([&] { return (quiet = view_->isSettled() ? quiet + 1 : 0) > 20; }, 20);
    }
    /// Milliseconds from making the editor until its visible part has been painted and shown.
    double open(int images) {
        const auto begin = std::chrono::steady_clock::now();
        editor = make<UIArticleEditViewController>();
        editor->setArticleDictionary(articleOf(images));
        root_->setRootViewController(make<UINavigationController>(editor));
        const auto isThere = [&] {
            return editor->imagesCell() && !editor->imagesCell()->collectionView()->visibleCells().empty() &&
                   view_->hasPaintedEverything();
        };
        const auto limit = begin + std::chrono::seconds(20);
        do {
            QCoreApplication::processEvents();
        } while (!isThere() && std::chrono::steady_clock::now() < limit);
        return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - begin).count();
    }
    void close() {
        root_->setRootViewController(make<UIViewController>());
        editor.reset();
        settle();
    }
    /// The longest turn of the main loop that `change` causes, in milliseconds of the main thread's processor time.
    void turn(const std::function<void()>& change, double& longest) {
        const double before = threadSeconds();
        change();
        QCoreApplication::processEvents();
        longest = std::max(longest, (threadSeconds() - before) * 1000);
        std::this_thread::sleep_for(std::chrono::milliseconds(8));
    }
    UIWindow& root() { return *root_; }
    QQuickWindow& window() { return window_; }
    std::shared_ptr<UIArticleEditViewController> editor;

private:
    std::shared_ptr<UIWindow> root_;
    QQuickWindow window_;
    QtWindowView* view_ = nullptr;
};

double scrollThrough(EditorWindow& bench, int images) {
    UITableView& table = *bench.editor->tableView();
    double longest = 0, last = -1;
    for (int i = 0; i < 4000 && table.contentOffset().y > last; ++i) {
        last = table.contentOffset().y;
        const double next = std::min(last + pointsPerTurn, table.maximumOffsetY());
        bench.turn([&] { table.setContentOffset({0, next}); }, longest);
        bench.turn([] {}, longest);
    }
    return last > images * 90 ? longest : -1;
}

double dragThrough(EditorWindow& bench, int images) {
    auto& strip = *bench.editor->imagesCell();
    UITableView& table = *bench.editor->tableView();
    UICollectionView& tiles = *strip.collectionView();
    double longest = 0;
    bench.turn([&] { strip.start_drag(); }, longest);
    for (int i = 0; i < 30; ++i) bench.turn([] {}, longest);
    const CGRect first = tiles.frameForItemAtIndexPath({0, 0});
    UITouch touch;
    touch.location = tiles.convertPointToView({first.midX(), first.midY()}, nullptr);
    const auto send = [&](UITouchPhase phase, CGFloat y) {
        touch.phase = phase;
        touch.location.y = y;
        touch.timestamp = Clock::shared().monotonicSeconds();
        bench.root().sendTouch(touch);
    };
    bench.turn([&] { send(UITouchPhase::began, touch.location.y); }, longest);
    double last = -1;
    for (int i = 0; i < 4000 && table.contentOffset().y > last; ++i) {
        last = table.contentOffset().y;
        bench.turn(
            [&] {
                send(UITouchPhase::moved, 400 + i % 3);
                bench.root().sendScroll({.location = {100, 100}, .dy = -pointsPerTurn, .precise = true});
            },
            longest);
        bench.turn([] {}, longest);
    }
    bench.turn([&] { send(UITouchPhase::ended, 400); }, longest);
    for (int i = 0; i < 60; ++i) bench.turn([] {}, longest);
    const auto& items = *strip.imagesArray();
    const bool isMoved = items.front()->imageDictionary()["id"].integer() != 1;
    return last > images * 90 && isMoved ? longest : -1;
}

std::string sampleText() {
    std::string text;
    for (int line = 0; line < textLines; ++line) {
        std::string words;
        for (int word = line; static_cast<int>(words.size()) < lineLength - 1; ++word)
            words += "word" + std::to_string(word % 89) + " ";
        text += words.substr(0, lineLength - 1) + "\n";
    }
    return text;
}

// The end of the text, where the caret is, is at the lower edge.
constexpr char peerQml[] = R"qml(
import QtQuick
import QtQuick.Controls.Basic
Item {
    clip: true
    property alias text: area.text
    property alias area: area
    TextArea {
        id: area
        width: parent.width
        y: parent.height - height
        wrapMode: TextEdit.Wrap
        textFormat: TextEdit.PlainText
        font { family: "Noto Sans CJK SC"; pixelSize: 14 }
        renderType: Text.NativeRendering
    }
}
)qml";

double typeInto(QQuickWindow& window) {
    FrameMeter meter(window);
    const auto frames = meter.frames(keystrokes, warmUp, [&](int) {
        QKeyEvent press(QEvent::KeyPress, Qt::Key_A, Qt::NoModifier, "a");
        QCoreApplication::sendEvent(&window, &press);
        QKeyEvent release(QEvent::KeyRelease, Qt::Key_A, Qt::NoModifier, "a");
        QCoreApplication::sendEvent(&window, &release);
    });
    return FrameMeter::median(frames) * 1000;
}

double typeOurs() {
    EditorWindow bench;
    const auto text = make<UITextView>(CGRect{0, 60, width, 400});
    text->setFont({"PingFangSC-Regular", 14});
    text->setText(sampleText());
    bench.root().rootViewController()->view()->addSubview(text);
    text->becomeFirstResponder();
    if (!bench.settle()) return -1;
    const std::size_t before = text->text().size();
    const double time = typeInto(bench.window());
    return text->text().size() == before + keystrokes + warmUp ? time : -1;
}

double typePeer() {
    QQmlEngine engine;
    QQmlComponent component(&engine);
    component.setData(peerQml, {});
    const std::unique_ptr<QObject> object(component.create());
    auto* const item = qobject_cast<QQuickItem*>(object.get());
    if (!item) {
        std::fprintf(stderr, "%s\n", qPrintable(component.errorString()));
        return -1;
    }
    QQuickWindow window;
    window.resize(width, height);
    item->setParentItem(window.contentItem());
    item->setPosition({0, 60});
    item->setSize({width, 400});
    item->setProperty("text", QString::fromStdString(sampleText()));
    window.show();
    auto* const area = item->property("area").value<QQuickItem*>();
    area->setProperty("cursorPosition", item->property("text").toString().size());
    area->forceActiveFocus();
    if (!FrameMeter::waitFor([&] { return area->hasActiveFocus(); }, 5)) return -1;
    const qsizetype before = item->property("text").toString().size();
    const double time = typeInto(window);
    item->setParentItem(nullptr);
    return item->property("text").toString().size() == before + keystrokes + warmUp ? time : -1;
}

int report(double milliseconds) {
    if (milliseconds < 0) return 1;
    std::printf("%.9g\n", milliseconds);
    return 0;
}

}  // namespace

int runEditorChild(int argc, char** argv) {
    QGuiApplication application(argc, argv);
    QtPlatform::install({});
    if (argc < 5) return 2;
    const std::string what = argv[3];
    const int images = std::stoi(argv[4]);
    const std::string bundle =
        QDir(QCoreApplication::applicationDirPath() + "/../share/ostrel-article").canonicalPath().toStdString();
    NSBundle::setMainBundlePath(bundle);
    NSBundle::registerBundle(OstrelArticleBundleIdentifier, bundle);
    UIDevice::currentDevice().setUserInterfaceIdiom(UIUserInterfaceIdiom::phone);
    OstrelServerFramework::install(
        std::make_shared<EditorServer>(bundle + "/OstrelArticle.bundle/anonymousAvatar.png"));
    double result = -1;
    {
        EditorWindow bench;
        if (!bench.settle()) return 1;
        // The first opening loads fonts, pictures and code, and does not count.
        bench.open(5);
        bench.close();
        const double opening = bench.open(images);
        if (!bench.settle()) return 1;
        if (what == "open") result = opening;
        if (what == "scroll") result = scrollThrough(bench, images);
        if (what == "drag") result = dragThrough(bench, images);
        bench.close();
    }
    OstrelServerFramework::install(nullptr);
    return report(result);
}

int runTypingChild(int argc, char** argv) {
    QGuiApplication application(argc, argv);
    QtPlatform::install({});
    if (argc < 4) return 2;
    return report(std::string(argv[3]) == "ours" ? typeOurs() : typePeer());
}

}  // namespace ostrel
