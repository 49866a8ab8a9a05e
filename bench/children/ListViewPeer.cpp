#include "bench/support/BenchChild.h"
#include "bench/support/FrameMeter.h"
#include "bench/support/SampleRecords.h"
#include "platform/foundation/values/Value.h"

#include <QAbstractListModel>
#include <QDir>
#include <QGuiApplication>
#include <QQmlComponent>
#include <QQmlContext>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickWindow>
#include <QUrl>

#include <cstdio>
#include <memory>

namespace ostrel {

namespace {

// The same row as in the article list, written in the usual way of QML.
constexpr char listQml[] = R"qml(
import QtQuick
ListView {
    id: list
    width: 375; height: 667
    reuseItems: true
    model: articles
    delegate: Item {
        required property string authName
        required property string body
        required property string age
        required property string liked
        required property string comments
        width: list.width
        height: card.height + 9
        Rectangle {
            id: card
            x: 16; y: 8; width: parent.width - 32; height: text.height + 67
            radius: 10; color: "white"
            Image { x: 20; y: 12; width: 56; height: 56; source: images + "OstrelArticle.bundle/anonymousAvatar.png"; fillMode: Image.PreserveAspectFit }
            Text { id: name; x: 84; y: 12; height: 18; text: authName; font { family: "Noto Sans CJK SC"; weight: Font.Medium; pixelSize: 16 } verticalAlignment: Text.AlignVCenter }
            Text { x: name.x + name.width + 5; y: 12; height: 18; text: age; color: "#576173"; font { family: "Noto Sans CJK SC"; pixelSize: 14 } verticalAlignment: Text.AlignVCenter }
            Text { id: text; x: 84; y: 32; width: card.width - 106; height: Math.max(24, Math.min(120, implicitHeight)); text: body; wrapMode: Text.Wrap; elide: Text.ElideRight; maximumLineCount: 6; font { family: "Noto Sans CJK SC"; weight: Font.Thin; pixelSize: 12 } }
            Image { x: 84; y: card.height - 29; width: 18; height: 18; source: images + "Article.bundle/like.png" }
            Text { x: 106; y: card.height - 28; text: liked; font { family: "Noto Sans CJK SC"; weight: Font.Light; pixelSize: 12 } }
            Image { x: 84 + (card.width - 76) * 0.28; y: card.height - 29; width: 18; height: 18; source: images + "Article.bundle/comment.png" }
            Text { x: 106 + (card.width - 76) * 0.28; y: card.height - 28; text: comments; font { family: "Noto Sans CJK SC"; weight: Font.Light; pixelSize: 12 } }
            Image { x: 84 + (card.width - 76) * 0.56; y: card.height - 29; width: 18; height: 18; source: images + "Article.bundle/share.png" }
        }
    }
}
)qml";

class ArticleModel final : public QAbstractListModel {
public:
    explicit ArticleModel(std::size_t count) {
        for (const Value& record : Value::parse(samplePage(count, 0))["results"].elements()) {
            const auto text = [&](const char* key) { return QString::fromStdString(record[key].text().value_or("")); };
            QString body = text("text");
            if (!text("title").isEmpty()) body = text("title") + "\n" + body.replace("\r\n", " ").replace('\n', ' ');
            rows_.push_back({text("auth_name"), body, "3/4/26, 5:06 AM", text("liked"), text("comment")});
        }
    }
    int rowCount(const QModelIndex&) const override { return static_cast<int>(rows_.size()); }
    QVariant data(const QModelIndex& index, int role) const override {
        return rows_[static_cast<std::size_t>(index.row())][static_cast<std::size_t>(role - Qt::UserRole)];
    }
    QHash<int, QByteArray> roleNames() const override {
        return {{Qt::UserRole, "authName"},
                {Qt::UserRole + 1, "body"},
                {Qt::UserRole + 2, "age"},
                {Qt::UserRole + 3, "liked"},
                {Qt::UserRole + 4, "comments"}};
    }

private:
    std::vector<std::array<QString, 5>> rows_;
};

/// A bare Qt Quick window with a ListView in it.
class ListViewWindow final {
public:
    explicit ListViewWindow(std::size_t count) : model_(count) {
        const QString images =
            QDir(QCoreApplication::applicationDirPath() + "/../share/ostrel-article").canonicalPath();
        engine_.rootContext()->setContextProperty("articles", &model_);
        engine_.rootContext()->setContextProperty("images", QUrl::fromLocalFile(images + "/").toString());
        QQmlComponent component(&engine_);
        component.setData(listQml, QUrl());
        list_.reset(qobject_cast<QQuickItem*>(component.create()));
        if (!list_) {
            std::fprintf(stderr, "%s\n", qPrintable(component.errorString()));
            return;
        }
        window_.setColor(QColor(0xF2, 0xF3, 0xF7));
        window_.resize(375, 667);
        list_->setParentItem(window_.contentItem());
    }
    bool isGood() const { return list_ != nullptr; }
    QQuickWindow& window() { return window_; }
    QQuickItem& list() { return *list_; }

private:
    ArticleModel model_;
    QQmlEngine engine_;
    QQuickWindow window_;
    std::unique_ptr<QQuickItem> list_;
};

}  // namespace

int runListViewChild(int argc, char** argv) {
    QGuiApplication application(argc, argv);
    if (argc < 4) return 2;
    ListViewWindow bench(10000);
    if (!bench.isGood()) return 1;
    bench.window().show();
    FrameMeter::waitFor([] { return false; }, 0.5);
    const std::string step = argv[3];
    const double points = step == "still" ? 0 : std::stod(step);
    double offset = 5000;
    bench.list().setProperty("contentY", offset);
    FrameMeter::waitFor([] { return false; }, 0.5);
    FrameMeter meter(bench.window());
    const auto frames = meter.frames(200, 30, [&](int frame) {
        offset += points > 0 ? points : frame % 2 ? -1 : 1;
        bench.list().setProperty("contentY", offset);
    });
    std::printf("%.9g\n", FrameMeter::median(frames) * 1000);
    return 0;
}

int runStartPeerChild(int argc, char** argv) {
    QGuiApplication application(argc, argv);
    ListViewWindow bench(20);
    if (!bench.isGood()) return 1;
    bool painted = false;
    QObject::connect(&bench.window(), &QQuickWindow::frameSwapped, [&] { painted = true; });
    bench.window().show();
    if (!FrameMeter::waitFor([&] { return painted; }, 20)) return 1;
    std::printf("first list painted\n");
    std::fflush(stdout);
    // The measured start ends here; the destructors are not part of it.
    std::_Exit(0);
}

}  // namespace ostrel
