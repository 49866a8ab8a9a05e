#include "article/detail/UIArticleViewController.h"
#include "article/OstrelArticle.h"
#include "backends/qt/QtPlatform.h"
#include "backends/qt/window/QtWindowView.h"
#include "bench/support/BenchChild.h"
#include "bench/support/FrameMeter.h"
#include "bench/support/ProcessMeter.h"
#include "bench/support/SilentServer.h"
#include "platform/foundation/resources/NSBundle.h"
#include "platform/foundation/runloop/RunLoop.h"
#include "platform/uikit/view/UIDevice.h"
#include "platform/uikit/view/UIWindow.h"

#include <QCoreApplication>
#include <QDir>
#include <QGuiApplication>
#include <QQuickWindow>

#include <cstdio>
#include <thread>

namespace ostrel {

namespace {

constexpr int images = 100, files = 8;
constexpr double pointsPerTurn = 40;

/// Answers with one article of 100 images, whose bytes are mapped files, as a cache on the disk would give them.
class DetailServer final : public SilentServer {
public:
    explicit DetailServer(std::string folder) : folder_(std::move(folder)) {}

    void request(const std::string&, AnswerHandler handler) override {
        std::string list;
        for (int i = 0; i < images; ++i) {
            list += std::string(i ? "," : "") + R"({"image":")" + std::to_string(i) +
                    R"(","thumbnail":"","image_width":4000,"image_height":3000,"text":"Picture )" + std::to_string(i) +
                    "\"}";
        }
        const std::string article =
            R"({"id":1,"title":"A hundred pictures","text":"All of them.","images":[)" + list + "]}";
        RunLoop::main().perform([handler = std::move(handler), article] { handler(article, std::nullopt); });
    }
    Data request(const std::string& url, OstrelRequestManager::Handler handler) override {
        RunLoop::main().perform([this, url, handler = std::move(handler)] {
            if (url.empty()) return handler({}, false, "no address");
            ++answered_;
            handler(Data::mapFile(folder_ + "/" + std::to_string(std::stoi(url) % files) + ".jpg"), true, std::nullopt);
        });
        return {};
    }
    int answered() const { return answered_; }

private:
    const std::string folder_;
    int answered_ = 0;
};

}  // namespace

int runDetailChild(int argc, char** argv) {
    QGuiApplication application(argc, argv);
    QtPlatform::install({});
    if (argc < 5) return 2;
    const std::string what = argv[3];
    const std::string bundle =
        QDir(QCoreApplication::applicationDirPath() + "/../share/ostrel-article").canonicalPath().toStdString();
    NSBundle::setMainBundlePath(bundle);
    NSBundle::registerBundle(OstrelArticleBundleIdentifier, bundle);
    auto server = std::make_shared<DetailServer>(argv[4]);
    OstrelServerFramework::install(server);
    UIDevice::currentDevice().setUserInterfaceIdiom(UIUserInterfaceIdiom::phone);
    auto root = make<UIWindow>(CGSize{375, 667});
    QQuickWindow window;
    window.resize(375, 667);
    auto* view = new QtWindowView(root);
    view->setParentItem(window.contentItem());
    view->setSize(QSizeF(375, 667));
    root->setRootViewController(make<UIViewController>());
    window.show();
    const auto settle = [&] {
        int quiet = 0;
        return FrameMeter::waitFor([&] { return (quiet = view->isSettled() ? quiet + 1 : 0) > 20; }, 20);
    };
    if (!settle()) return 1;
    forgetPeak();
    const double empty = residentBytes();

    double longest = 0;
    const auto turn = [&](const std::function<void()>& change) {
        const double before = threadSeconds();
        change();
        QCoreApplication::processEvents();
        longest = std::max(longest, threadSeconds() - before);
        std::this_thread::sleep_for(std::chrono::milliseconds(8));
    };
    auto article = make<UIArticleViewController>();
    article->setArticleDictionary(Dictionary::parse(R"({"id":1})"));
    turn([&] { root->setRootViewController(article); });
    for (int i = 0; i < 200; ++i) turn([] {});
    if (article->imagesArray().size() != images) return 1;
    UITableView& table = *article->myTableView();
    double last = -1;
    for (int i = 0; i < 4000 && table.contentOffset().y > last; ++i) {
        last = table.contentOffset().y;
        const double next = std::min(last + pointsPerTurn, table.maximumOffsetY());
        turn([&] { table.setContentOffset({0, next}); });
        turn([] {});
    }
    const bool isAtEnd = last > images * 200 && server->answered() >= images;
    const bool hasSettled = settle();
    const double most = peakBytes() - empty;
    root->setRootViewController(nullptr);
    delete view;
    OstrelServerFramework::install(nullptr);
    if (!isAtEnd || !hasSettled) return 1;
    std::printf("%.9g\n", what == "memory" ? most : longest * 1000);
    return 0;
}

}  // namespace ostrel
